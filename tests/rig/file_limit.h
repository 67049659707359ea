#ifndef FILE_LIMIT_H
#define FILE_LIMIT_H

#include <csignal>

#include <sys/resource.h>

/// The largest file that this process may write, as a disk that fills up and gets room again.
class FileLimit {
public:
  explicit FileLimit(rlim_t bytes) : mHandler(std::signal(SIGXFSZ, SIG_IGN)) {
    getrlimit(RLIMIT_FSIZE, &mBefore);
    const rlimit limit = {bytes, mBefore.rlim_max};
    setrlimit(RLIMIT_FSIZE, &limit);
  }
  ~FileLimit() {
    setrlimit(RLIMIT_FSIZE, &mBefore);
    std::signal(SIGXFSZ, mHandler);
  }
  FileLimit(const FileLimit&) = delete;
  FileLimit& operator=(const FileLimit&) = delete;

private:
  rlimit mBefore{};
  void (*mHandler)(int);
};

#endif
