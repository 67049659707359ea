#include "plugged_in.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <thread>

#include <fcntl.h>
#include <malloc.h>
#include <sys/stat.h>
#include <unistd.h>

#include "call_log.h"
#include "command_table.h"
#include "desktop.h"
#include "fixture.h"
#include "host.h"
#include "logging.h"
#include "quiet_port.h"

namespace {

constexpr DWORD kTickDistance = 100; // milliseconds, the longest between two ticks

std::ptrdiff_t entriesOf(const char* folder) {
  return std::distance(std::filesystem::directory_iterator(folder), {});
}

/// Memory of this process, bytes; 0 where a sanitizer keeps freed memory.
long residentBytes() {
  long pages = 0;
#if defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
  return pages;
#endif
#endif
  std::ifstream("/proc/self/statm") >> pages >> pages;
  return pages * 4096;
}

std::string menuText(int keys) {
  std::string text = "[Modes]\nStart\nLayout\nModel\n\n[MenuBar]\n";
  for (int key = 0; key < keys; ++key)
    text += "Key" + std::to_string(key) + " = Keys}KEY" + std::to_string(key) + "|types its name\n";
  return text;
}

} // namespace

DaemonProcess::DaemonProcess(const rig::TempFolder& home, std::uint16_t port) {
  const std::string input = home.native("daemon input");
  std::filesystem::remove(input);
  if (mkfifo(input.c_str(), 0600) != 0)
    throw std::runtime_error("can't make " + input);
  mInput = open(input.c_str(), O_RDWR | O_CLOEXEC); // open for reading, too: waits for nobody
  mProcessP =
      std::make_unique<Process>("/bin/sh",
                                std::vector<std::string>{"-c", "exec \"$0\" --port \"$1\" --linger <\"$2\"",
                                                         OV_DAEMON, std::to_string(port), input},
                                home.native("daemon.txt"));
}

DaemonProcess::~DaemonProcess() {
  mProcessP.reset();
  close(mInput);
}

void DaemonProcess::tell(const std::string& line) const {
  const std::string text = line + '\n';
  if (write(mInput, text.data(), text.size()) != static_cast<ssize_t>(text.size()))
    throw std::runtime_error("the daemon's input is full");
}

PluggedIn::PluggedIn() : mPort(rig::quietPort()) {
  call_log::clear();
  host::reset();
  desktop::reset();
  desktop::holdClock();
  desktop::setTickStep(1);
  usePort(std::to_string(mPort));
  setenv("USERPROFILE", mHome.native().c_str(), 1);
  mHome.makeFolder("Orvaner/Applications");
  mHome.write("Orvaner/Applications/autocad.mnu", menuText(kKeys));
  Settings settings;
  settings.mLogPars.mMaxSize = 100;
}

PluggedIn::~PluggedIn() {
  if (mApp.mOvAutoCadP)
    mApp.On_kUnloadAppMsg(nullptr);
  EXPECT_TRUE(desktop::activeTimers().empty());
  LogPars off;
  off.mIsLogToFile = off.mIsCreation = off.mIsInfo = false;
  gLogging.init(off);
}

void PluggedIn::load() {
  ASSERT_EQ(mApp.On_kInitAppMsg(nullptr), AcRx::kRetOK);
  ASSERT_TRUE(pumpUntil([this] { return proxy().mMenuIsLoaded.load(); }));
}

void PluggedIn::newDocument() {
  host::reset();
  addCommands(nullptr);
  desktop::holdClock();
  mHistoryRead = 0;
}

std::int64_t PluggedIn::tick() {
  desktop::advanceClock(kTickDistance);
  const DWORD before = GetTickCount();
  desktop::runMessages();
  const DWORD passes = GetTickCount() - before - 2; // one step is ours, one that of the pump's start
  host::runQueue();
  return passes;
}

std::string PluggedIn::typedKeys() {
  std::string keys;
  for (; mHistoryRead < host::history().size(); ++mHistoryRead) {
    const host::HistoryLine& line = host::history()[mHistoryRead];
    if (line.isTyped && line.text.compare(0, 3, L"KEY") == 0)
      keys += std::string(line.text.begin(), line.text.end() - 1) + ' '; // without its Enter
  }
  return keys;
}

bool PluggedIn::pumpUntil(const std::function<bool()>& holds, double seconds) {
  const auto end = std::chrono::steady_clock::now() + std::chrono::duration<double>(seconds);
  while (!holds()) {
    if (std::chrono::steady_clock::now() > end)
      return false;
    tick();
    std::this_thread::yield();
  }
  return true;
}

bool PluggedIn::pumpUntilSample(short x) {
  return pumpUntil([this, x] { return plugin().mCapX == x; });
}

bool PluggedIn::isBalanced() {
  const host::Held held = host::held();
  return held.selectionSets == 0 && held.openForRead == 0 && held.openForWrite == 0 &&
         desktop::activeTimers().size() == 1 && host::viewCounts().nonFiniteCalls == 0;
}

Usage PluggedIn::usage() {
  Usage now;
  now.threads = entriesOf("/proc/self/task");
  now.descriptors = entriesOf("/proc/self/fd");
  now.resident = residentBytes();
  now.heap = now.resident != 0 ? static_cast<std::int64_t>(mallinfo2().uordblks + mallinfo2().hblkhd) : 0;
  now.timers = desktop::activeTimers().size();
  return now;
}

bool PluggedIn::isBackTo(const Usage& before) {
  // What a queue or a buffer keeps ready; anything that is lost at each pass or connection comes to more.
  constexpr std::int64_t kHeapRoom = 256 * 1024;
  Usage now;
  const bool isBack = pumpUntil(
      [&] {
        now = usage();
        return now.threads == before.threads && now.descriptors <= before.descriptors &&
               now.timers == before.timers && now.heap <= before.heap + kHeapRoom;
      },
      5);
  EXPECT_TRUE(isBack) << "threads " << before.threads << " -> " << now.threads << ", descriptors "
                      << before.descriptors << " -> " << now.descriptors << ", heap " << before.heap << " -> "
                      << now.heap << ", timers " << before.timers << " -> " << now.timers;
  return isBack;
}
