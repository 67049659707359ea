#include "message_loop.h"

#include <windows.h>

namespace program {

namespace {

/// Often enough that a session's lines seem to be on time, seldom enough to cost nothing at rest.
constexpr UINT kWakeMilliseconds = 20;

} // namespace

void runMessageLoop(const std::function<void()>& handOver, const std::function<bool()>& step) {
  // Without a procedure: the message alone is what wakes the loop.
  const UINT_PTR timer = SetTimer(nullptr, 0, kWakeMilliseconds, nullptr);
  MSG message{};
  do {
    if (GetMessageW(&message, nullptr, 0, 0) <= 0)
      break;
    TranslateMessage(&message);
    handOver();
    DispatchMessageW(&message);
  } while (step());
  KillTimer(nullptr, timer);
}

} // namespace program
