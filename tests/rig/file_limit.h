#ifndef FILE_LIMIT_H
#define FILE_LIMIT_H

#include <csignal>

#include <sys/resource.h>

/// Limits the size of the files that this process writes while the object lives, as a full disk does.
class FileLimit {
public:
  explicit FileLimit(rlim_t bytes) {
    std::signal(SIGXFSZ, SIG_IGN);
    getrlimit(RLIMIT_FSIZE, &mBefore);
    const rlimit limit = {bytes, mBefore.rlim_max};
    setrlimit(RLIMIT_FSIZE, &limit);
  }
  ~FileLimit() { setrlimit(RLIMIT_FSIZE, &mBefore); }
  FileLimit(const FileLimit&) = delete;
  FileLimit& operator=(const FileLimit&) = delete;

private:
  rlimit mBefore{};
};

#endif
