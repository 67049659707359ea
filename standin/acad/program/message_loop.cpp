#include "message_loop.h"

#include <windows.h>

namespace program {

namespace {

/// Often enough that a session's lines seem to be on time, seldom enough to cost nothing at rest.
constexpr UINT kBeatMilliseconds = 20;

class Beat {
public:
  // Without a procedure: the message alone is what wakes the loop.
  Beat() : mId(SetTimer(nullptr, 0, kBeatMilliseconds, nullptr)) {}
  ~Beat() { KillTimer(nullptr, mId); }
  Beat(const Beat&) = delete;
  Beat& operator=(const Beat&) = delete;

private:
  UINT_PTR mId;
};

} // namespace

void runMessageLoop(const std::function<void()>& handOver, const std::function<bool()>& step) {
  const Beat beat;
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
