#ifndef CALLS_H
#define CALLS_H

#include <atomic>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <vector>

/// The journal of calls into the stand-ins, and the faults that tests order there.
///
/// Each operation of a stand-in reports itself with enter() before it does anything. At rest, with no recording
/// and no order, that costs one relaxed load. Everything here may be called from any thread.
namespace calls {

/// What an operation throws when it was told to throw.
class InjectedFault : public std::runtime_error {
public:
  using std::runtime_error::runtime_error;
};

namespace detail {
extern std::atomic<bool> gIsActive;
bool enterActive(const char* operation, const std::string& arguments);
} // namespace detail

/// True while calls are written down; lets a caller skip the making of its argument text.
bool isRecording();

/// Reports one call. Gives true if this call was told to fail: the operation then does nothing and gives back its
/// failure value, where it has one. Throws InjectedFault if it was told to throw.
/// operation  name of the operation, as in "acedSSGet"
/// arguments  what the journal shows behind the name; make it only if isRecording()
inline bool enter(const char* operation, const std::string& arguments = {}) {
  return detail::gIsActive.load(std::memory_order_relaxed) && detail::enterActive(operation, arguments);
}

/// Starts a new, empty journal.
void startRecording();
/// Ends the journal and gives its lines, each "operation arguments".
std::vector<std::string> stopRecording();
/// The lines up to now; the recording goes on.
std::vector<std::string> recorded();

/// The n-th call of that operation from now on (1 is the next one) fails or throws, and the next times - 1 after it.
void failAt(const std::string& operation, int nth, int times = 1);
void throwAt(const std::string& operation, int nth, int times = 1);
/// The n-th call of any operation from now on fails or throws.
void failAny(std::int64_t nth);
void throwAny(std::int64_t nth);
/// Counts the calls from now on, with no fault ordered; count() tells how many there were.
void startCounting();
std::int64_t count();
/// Name of the operation at which the last fault struck; empty if none has since the last clear().
std::string lastFault();

/// Takes back all orders and ends recording and counting.
void clear();

} // namespace calls

#endif
