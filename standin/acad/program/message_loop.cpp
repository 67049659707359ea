#include "message_loop.h"

#include <windows.h>

namespace program {

namespace {

/// Often enough that a session's lines seem to be on time, seldom enough to cost nothing at rest.
constexpr UINT kWakeMilliseconds = 20;

class WakeTimer {
public:
  // Without a procedure: the message alone is what wakes the loop.
  WakeTimer() : mId(SetTimer(nullptr, 0, kWakeMilliseconds, nullptr)) {}
  ~WakeTimer() { KillTimer(nullptr, mId); }
  WakeTimer(const WakeTimer&) = delete;
  WakeTimer& operator=(const WakeTimer&) = delete;

private:
  UINT_PTR mId;
};

} // namespace

void runMessageLoop(const std::function<void()>& handOver, const std::function<bool()>& step) {
  const WakeTimer wakeTimer;
  MSG message{};
  while (GetMessageW(&message, nullptr, 0, 0) > 0) {
    TranslateMessage(&message);
    handOver();
    DispatchMessageW(&message);
    if (!step())
      return;
  }
}

} // namespace program
