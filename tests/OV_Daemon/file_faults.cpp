#include "file_faults.h"

#include <cerrno>
#include <utility>

namespace {

int gRenameError = 0;
std::function<void()> gAfterRename;

} // namespace

void file_faults::failRename(int error) {
  gRenameError = error;
}

void file_faults::afterRename(std::function<void()> action) {
  gAfterRename = std::move(action);
}

extern "C" {
int __real_rename(const char* from, const char* to);
int __wrap_rename(const char* from, const char* to);

int __wrap_rename(const char* from, const char* to) {
  if (gRenameError != 0) {
    errno = std::exchange(gRenameError, 0);
    return -1;
  }
  const int result = __real_rename(from, to);
  if (const auto action = std::exchange(gAfterRename, nullptr))
    action();
  return result;
}
}
