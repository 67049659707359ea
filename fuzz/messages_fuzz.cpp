// The module's entry points under any order of messages, ticks and the device's events; messages also from inside a
// tick. The engine and its commands are there from the load message to the unload message and at no other time. Load
// and unload messages inside a tick are refused. Nothing is left at the end.
//
// Input: steps, each a byte; for a tick another one, with the code of the message inside it.

#include <chrono>
#include <functional>
#include <thread>

#include "auto_cad_proxy.h"
#include "fake_devlink.h"
#include "hosted_module.h"
#include "input.h"
#include "require.h"

using fuzz::require;

extern "C" AcRx::AppRetCode acrxEntryPoint(int code, void* data);
extern "C" int acrxGetApiVersion();

namespace {

constexpr int kInit = 1, kUnload = 2, kInvoke = 5;

/// Returns whether a command of the plug-in is known.
bool hasCommand() {
  const std::size_t before = host::printed().size();
  host::type(L"OV_Toggle_Scroll_Mode\n");
  host::runQueue();
  return host::printed().find(L"Unknown command", before) == std::wstring::npos;
}

std::ptrdiff_t threads() {
  return std::distance(std::filesystem::directory_iterator("/proc/self/task"), {});
}

struct Messages {
  void send(int code) {
    const bool isRefused = code == kInvoke || (mIsInTick && (code == kInit || code == kUnload));
    const AcRx::AppRetCode answer = acrxEntryPoint(code, nullptr);
    require(answer == (isRefused ? AcRx::kRetError : AcRx::kRetOK), "taken, or refused inside of a tick");
    if (!isRefused && (code == kInit || code == kUnload))
      mIsLoaded = code == kInit;
  }
  void tick(const std::function<void()>& inside) {
    host::setFrameSink([&](const host::Frame&) {
      mIsInTick = true;
      inside();
      mIsInTick = false;
    });
    desktop::runTimers(100);
    host::setFrameSink(nullptr);
    host::runQueue();
  }

  bool mIsLoaded = false, mIsInTick = false;
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const rig::TempFolder home;
  fuzz::Input input(data, size);
  rig::freshHost(home);
  desktop::holdClock();
  desktop::setTickStep(20);
  fake_devlink::reset();
  host::add(std::make_unique<AcDbCircle>(AcGePoint3d(5, 5, 0), AcGeVector3d(0, 0, 1), 2.0));
  Messages messages;
  static const std::ptrdiff_t before =
      [&messages] { // a sanitizer's own thread starts with the first other one
        messages.send(kInit);
        messages.send(kUnload);
        std::this_thread::sleep_for(std::chrono::milliseconds(200));
        return threads();
      }();
  for (int step = 0; step < 40 && !input.isAtEnd(); ++step) {
    const auto code = static_cast<signed char>(input.byte());
    if (code >= -16 && code <= 16)
      messages.send(code);
    else if (code % 4 == 0)
      fake_devlink::pushMotion({code, 0, 0, 0, static_cast<short>(code & 64), 0});
    else if (code % 4 == 1)
      fake_devlink::pushEvent(0x20000 + code);
    else if (code % 4 == 2)
      fake_devlink::state()->isPresent = (code & 8) != 0;
    else
      messages.tick([&] { messages.send(static_cast<signed char>(input.byte()) % 8); });
    require((gAutoCadProxyP != nullptr) == messages.mIsLoaded, "an engine while it is loaded");
  }
  require(hasCommand() == messages.mIsLoaded, "commands while it is loaded");
  require(acrxGetApiVersion() == 0x170000, "the host's version");
  messages.send(kUnload);
  for (int ms = 0; ms < 5000 && threads() != before; ++ms) // one that has ended is listed for a moment
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  require(threads() == before && desktop::activeTimers().empty() && host::held().locks == 0,
          "nothing is left");
  return 0;
}
