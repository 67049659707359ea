#include "program.h"

#include "arxHeaders.h"
#include "arx_module.h"
#include "controls.h"
#include "dxf_reader.h"
#include "host_player.h"
#include "message_loop.h"
#include "output.h"
#include "pass_check.h"
#include "recorder.h"
#ifdef _WIN32
#include "recorded_imports.h"
#endif

#include <atomic>
#include <csignal>
#include <filesystem>
#include <iostream>

namespace program {

namespace {

namespace fs = std::filesystem;

/// Lines of the log that go into the report.
constexpr std::size_t kLogLines = 20000;

/// Set by Ctrl-C, or when the program is asked to end: the session ends early, but in order.
std::atomic<bool> gIsToStop{false};

extern "C" void onStop(int signal) {
  gIsToStop = true;
  std::signal(signal, SIG_DFL); // a second one ends the program at once
}

/// The plug-in's life, from its load message to its unloading.
class PlugIn {
public:
  PlugIn(const std::string& path, [[maybe_unused]] bool isRecorded) : mModule(path) {
#ifdef _WIN32
    if (isRecorded)
      recordImports(mModule.handle());
#endif
    if (!mModule.send(AcRx::kInitAppMsg))
      throw Error("plug-in " + path + " refused to be loaded");
    mModule.send(AcRx::kLoadDwgMsg);
  }
  /// True if the plug-in and the system both agreed.
  bool unload() {
    mModule.send(AcRx::kUnloadDwgMsg);
    const bool isTaken = mModule.send(AcRx::kUnloadAppMsg);
    host::runQueue(); // what it sent last must not run after it is gone
    return mModule.unload() && isTaken;
  }

private:
  ArxModule mModule;
};

void playSession(HostPlayer& player, Recorder& recorder, Controls& controls, const Options& options) {
  const auto step = [&] {
    const double seconds = unixNow() - recorder.start();
    recorder.typing(true);
    host::runQueue(); // what the plug-in typed
    player.play(seconds);
    recorder.typing(false);
    host::showPending();
    recorder.look();
    controls.refresh();
    const bool isOver = !options.mSession.empty() && seconds >= player.end() + options.mHold;
    return !isOver && !gIsToStop;
  };
  runMessageLoop([&recorder] { recorder.handOver(); }, step);
}

bool tookEvents(const std::vector<DeviceEvent>& events, const Options& options, const Recorder& recorder) {
  // Without a record the frames tell: only a sample of the cap makes one.
  if (options.mDeviceRecord.empty())
    return recorder.capFrames() > 0;
  for (const DeviceEvent& event : events) {
    if (event.mKind == DeviceEvent::Kind::motion || event.mKind == DeviceEvent::Kind::event)
      return true;
  }
  return false;
}

int runSession(const Options& options, const session::Session& session) {
  const Folders folders = Folders::make(options.mOut, options.mHome);
  fitFirstView();
  host::setClock(unixNow);
  host::setRefreshRate(options.mRefresh);
  const std::unique_ptr<Controls> controlsP = makeControls();
  controlsP->point(session::Pointer::view);

  SessionInput input;
  Recorder recorder(*controlsP);
  const std::unique_ptr<PassCheck> checkP =
      options.mIsToCheck ? std::make_unique<PassCheck>(folders.mHome,
                                                       [&input](std::size_t frame, const auto& sample) {
                                                         input.mSamples[frame] = sample;
                                                       })
                         : nullptr;
  if (checkP)
    recorder.onShown([&checkP](std::size_t number) { checkP->frameShown(number); });
  PlugIn plugIn(options.mModule, options.mIsToCheck);
  recorder.begin();
  input.mOutcome.mIsLoaded = true;
  std::cout << (options.mSession.empty() ? "Plug-in loaded; Ctrl-C ends the host"
                                         : "Plug-in loaded, playing " + options.mSession)
            << '\n'
            << std::flush;
  HostPlayer player(session, *controlsP, recorder, std::cout);
  std::signal(SIGINT, onStop);
  std::signal(SIGTERM, onStop);
  playSession(player, recorder, *controlsP, options);
  input.mEnd = unixNow();
  std::cout << "Unloading the plug-in\n" << std::flush;
  input.mOutcome.mIsUnloaded = plugIn.unload();
  if (checkP) {
    input.mOutcome.mCheckP = &checkP->finish();
    input.mCounted = checkP->countedSession();
  }

  input.mDrawingName = fs::u8path(options.mDrawing).filename().u8string();
  input.mSessionName = fs::u8path(options.mSession).filename().u8string();
  if (!options.mDeviceRecord.empty())
    input.mEvents = readDeviceRecord(options.mDeviceRecord);
  input.mDeviceActions = session.actionsOf(session::Who::device);
  input.mHistory = host::history();
  input.mLog = lastLines(folders.log().u8string(), kLogLines);
  input.mControls = controlsP->infos();
  input.mOutcome.mTookEvents = tookEvents(input.mEvents, options, recorder);
  input.mOutcome.mMovedView = recorder.hasViewMoved();
  writeOutputs(folders, recorder, input);
  printSummary(std::cout, folders, recorder, input);
  // A user's own session fails only if the plug-in can't be unloaded.
  const bool isGood = options.mSession.empty() ? input.mOutcome.mIsUnloaded : input.mOutcome.isGood();
  return isGood && !input.mOutcome.isContradicted() ? kExitGood : kExitFailed;
}

} // namespace

int run(const Options& options) {
  const session::Session session =
      options.mSession.empty() ? session::Session() : session::read(options.mSession);
  for (const std::string& error : session.mErrors)
    std::cerr << error << '\n';
  if (!session.isGood())
    return kExitUnusable;
  host::reset();
  if (!options.mDrawing.empty()) {
    const dxf::Result drawing = dxf::load(options.mDrawing);
    if (!drawing.isLoaded()) {
      std::cerr << drawing.error << '\n';
      return kExitUnusable;
    }
    std::cout << options.mDrawing << ": " << drawing.summary() << '\n' << std::flush;
  }
  if (options.mIsDryRun)
    return kExitGood;
  return runSession(options, session);
}

} // namespace program
