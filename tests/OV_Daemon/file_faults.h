#ifndef FILE_FAULTS_H
#define FILE_FAULTS_H

#include <functional>

/// What becomes of rename() on order. Without an order it reaches the system.
namespace file_faults {

/// The next rename does nothing, and gives -1 with this error number.
void failRename(int error);
/// Runs behind the next rename that the system has done.
void afterRename(std::function<void()> action);

} // namespace file_faults

#endif
