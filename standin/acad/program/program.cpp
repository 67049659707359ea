#include "program.h"

#include "arxHeaders.h"
#include "arx_module.h"
#include "client.h"
#include "controls.h"
#include "host_player.h"
#include "live.h"
#include "message_loop.h"
#include "output.h"
#include "pass_check.h"
#include "pass_gate.h"
#include "recorder.h"
#include "session_settings.h"
#include "util.h"
#include "wide_text.h"
#ifdef _WIN32
#include "recorded_imports.h"
#else
#include "desktop.h"
#endif

#include <atomic>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <mutex>
#include <system_error>

namespace program {

namespace {

namespace fs = std::filesystem;

/// Lines of the log that go into the report.
constexpr std::size_t kLogLines = 20000;
/// Latest frames that a page gets when it comes later: those that its strips show.
constexpr std::size_t kLiveFrames = 2400;

/// Set by Ctrl-C, or when the program is asked to end: the session ends early, but in order.
std::atomic<bool> gIsToStop{false};

extern "C" void onStop(int signal) {
  gIsToStop = true;
  std::signal(signal, SIG_DFL); // a second one ends the program at once
}

/// Returns a file's text, empty if it can't be read.
std::string readFile(const std::string& path) {
  std::ifstream file(fs::u8path(path), std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

/// The plug-in's life, from its load message to its unloading.
class PlugIn {
public:
  /// tickSource  returns what GetTickCount returns to it; empty: the system's count
  PlugIn(const std::string& path, [[maybe_unused]] bool isRecorded, std::function<DWORD()> tickSource)
      : mModule(path) {
#ifdef _WIN32
    if (isRecorded)
      recordImports(mModule.handle(), std::move(tickSource));
#else
    desktop::setTickSource(std::move(tickSource));
    // Nobody is there to click.
    desktop::setMessageBoxAnswer([](const desktop::MessageBox& box) {
      std::cout << "Dialog \"" << narrowed(box.caption) << "\": " << narrowed(box.text) << '\n' << std::flush;
      return IDOK;
    });
#endif
    if (!mModule.send(AcRx::kInitAppMsg))
      throw Error("plug-in " + path + " refused to be loaded");
    mModule.send(AcRx::kLoadDwgMsg);
  }
  /// Returns true if plug-in and system both accepted.
  bool unload() {
    mModule.send(AcRx::kUnloadDwgMsg);
    const bool isTaken = mModule.send(AcRx::kUnloadAppMsg);
    host::runQueue(); // what it sent last must not run after it is gone
    return mModule.unload() && isTaken;
  }

private:
  ArxModule mModule;
};

/// Plays the session, or lets the user act, to the end.
/// gateP  null: the session's time is in seconds
/// liveP  null: there is no page
void playSession(HostPlayer& player, PassGate* gateP, Live* liveP, Recorder& recorder, Controls& controls,
                 const Options& options) {
  const auto step = [&] {
    const double seconds = unixNow() - recorder.start();
    recorder.typing(true);
    host::runQueue(); // what the plug-in typed
    player.play(seconds, gateP ? gateP->next() : 0);
    if (liveP)
      liveP->doLines(player);
    recorder.typing(false);
    host::showPending();
    recorder.look();
    controls.refresh();
    if (liveP)
      liveP->look();
    if (gateP)
      gateP->betweenTicks();
    const bool isOver =
        gateP ? gateP->isOver() : !options.mSession.empty() && seconds >= player.end() + options.mHold;
    return !isOver && !gIsToStop;
  };
  runMessageLoop([&recorder] { recorder.handOver(); }, step);
}

/// Connects to the daemon's door. Returns a function that sends a line of the device there.
std::function<bool(const std::string&)> deviceAt(const std::string& address) {
  try {
    const auto clientP = std::make_shared<web::Client>(address);
    return [clientP](const std::string& line) { return clientP->send(line); };
  } catch (const std::exception& error) {
    throw std::runtime_error(address + ": " + error.what());
  }
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

/// Collects what was recorded up to now.
void gather(SessionInput& input, const Recorder& recorder, const Folders& folders, const Options& options) {
  input.mEnd = unixNow();
  if (!options.mDeviceRecord.empty())
    input.mEvents = readDeviceRecord(options.mDeviceRecord);
  input.mHistory = host::history();
  input.mLog = lastLines(folders.log().u8string(), kLogLines);
  input.mOutcome.mTookEvents = tookEvents(input.mEvents, options, recorder);
  input.mOutcome.mMovedView = recorder.hasViewMoved();
  input.mOutcome.mMovedObjects = recorder.haveObjectsMoved();
  input.mOutcome.mScrolled = recorder.scrolls().size() > 1;
  input.mOutcome.mTyped = host::sentTexts() > input.mSentAtStart;
}

/// Opens the door for pages and says where it is.
std::unique_ptr<Live> openDoor(const Options& options, LiveSources sources, Recorder& recorder,
                               const Controls& controls) {
  std::unique_ptr<Live> liveP;
  try {
    liveP = std::make_unique<Live>(options.mLive, std::move(sources), recorder, controls);
  } catch (const std::system_error& error) {
    throw Error("can't listen on port " + std::to_string(options.mLive.mPort) + ": " +
                error.code().message());
  }
  if (!options.mLiveFile.empty())
    writeFile(fs::u8path(options.mLiveFile), liveP->address() + "\n");
  std::cout << "Open in a browser: " << liveP->address() << '\n' << std::flush;
  return liveP;
}

/// Makes a drawing the host's only one; an empty path stands for an empty drawing. Returns false, and prints why,
/// if it can't be read.
bool openAlone(const std::string& path) {
  host::reset();
  const dxf::Result drawing = path.empty() ? dxf::Result() : loadDrawing(path);
  if (!drawing.isLoaded())
    std::cerr << drawing.error << '\n';
  else if (!path.empty())
    std::cout << path << ": " << drawing.summary() << '\n' << std::flush;
  return drawing.isLoaded();
}

int runSession(const Options& options, const session::Session& session) {
  const Folders folders = Folders::make(options.mOut, options.mHome);
  writeSettings(session);
  host::setRefreshRate(options.mRefresh);
  const std::unique_ptr<Controls> controlsP = makeControls();
  controlsP->point(session::Pointer::view);

  SessionInput input;
  input.mSessionName = fs::u8path(options.mSession).filename().u8string();
  input.mDeviceActions = session.actionsOf(session::Who::device);
  input.mControls = controlsP->infos();
  Recorder recorder(*controlsP);
  std::mutex mutex; // of input.mSamples and hearerP, which the trace's thread uses
  Live* hearerP = nullptr;
  const auto onExplained = [&](std::size_t frame, const std::array<short, 6>& sample) {
    const std::lock_guard<std::mutex> lock(mutex);
    input.mSamples[frame] = sample;
    if (hearerP)
      hearerP->explained(frame, sample);
  };
  const std::unique_ptr<PassGate> gateP =
      session.isCounted() ? std::make_unique<PassGate>(session, recorder, deviceAt(options.mDevice))
                          : nullptr;
  const auto hear = [&gateP](const call_log::Record& record) {
    if (gateP)
      gateP->hear(record);
  };
  const std::unique_ptr<PassCheck> checkP =
      options.mIsToCheck ? std::make_unique<PassCheck>(folders.mHome, onExplained, hear) : nullptr;
  recorder.onShown([&](std::size_t number) {
    if (checkP)
      checkP->frameShown(number);
    if (hearerP)
      hearerP->frameShown(number);
  });
  PlugIn plugIn(options.mModule, options.mIsToCheck,
                gateP ? [&gateP] { return gateP->tickCount(); } : std::function<DWORD()>());
  recorder.begin();
  input.mSentAtStart = host::sentTexts();
  input.mOutcome.mIsLoaded = true;
  std::cout << (options.mSession.empty() ? "Plug-in loaded; Ctrl-C ends the host"
                                         : "Plug-in loaded, playing " + options.mSession)
            << '\n'
            << std::flush;
  HostPlayer player(session, *controlsP, recorder, std::cout);
  std::signal(SIGINT, onStop);
  std::signal(SIGTERM, onStop);
  std::unique_ptr<Live> liveP;
  const auto setHearer = [&](Live* newP) {
    const std::lock_guard<std::mutex> lock(mutex);
    hearerP = newP;
  };
  if (options.mIsLive) {
    LiveSources sources;
    sources.mDevice = options.mDevice;
    sources.mLog = folders.log();
    sources.mMenu = Util::getHomeDir() + "\\Orvaner\\Applications\\autocad.mnu";
    sources.mSoFar = [&](bool isReport, MovedWriter& moved) {
      if (isReport) {
        gather(input, recorder, folders, options);
      } else { // the rest takes too long
        input.mEnd = unixNow();
        input.mHistory = host::history();
        input.mEvents.clear();
        input.mLog.clear();
      }
      const std::size_t count = recorder.frames().size();
      input.mFirstFrame = isReport || count < kLiveFrames ? 0 : count - kLiveFrames;
      const std::lock_guard<std::mutex> lock(mutex);
      return sessionData(recorder, input, moved);
    };
    sources.mSavedSession = [&] { return checkP->countedSession(); };
    liveP = openDoor(options, std::move(sources), recorder, *controlsP);
    recorder.onScrolled([&](const auto& states) { liveP->scrolled(states); });
    setHearer(liveP.get());
  }
  playSession(player, gateP.get(), liveP.get(), recorder, *controlsP, options);
  std::cout << "Unloading the plug-in\n" << std::flush;
  input.mOutcome.mIsUnloaded = plugIn.unload();
  recorder.onScrolled(nullptr);
  setHearer(nullptr);
  liveP.reset();
  if (checkP) {
    input.mOutcome.mCheckP = &checkP->finish();
    input.mCounted = checkP->countedSession();
  }
  gather(input, recorder, folders, options);
  input.mFirstFrame = 0;
  if (gateP)
    input.mDeviceActions = gateP->played();
  writeOutputs(folders, recorder, input);
  printSummary(std::cout, folders, recorder, input);
  // A user's own session fails only if the plug-in can't be unloaded.
  const bool isGood = options.mSession.empty() ? input.mOutcome.mIsUnloaded : input.mOutcome.isGood();
  const bool hasPlayed = !gateP || !gateP->hasFailed();
  return isGood && hasPlayed && !input.mOutcome.isContradicted() ? kExitGood : kExitFailed;
}

} // namespace

int run(const Options& options) {
  const session::Session session =
      options.mSession.empty() ? session::Session() : session::read(options.mSession);
  for (const std::string& error : session.mErrors)
    std::cerr << error << '\n';
  if (!session.isGood())
    return kExitUnusable;
  if (session.isCounted() && !options.mIsDryRun && (options.mDevice.empty() || !options.mIsToCheck)) {
    std::cerr << options.mSession << ": counts passes, so it is played with --device and --check\n";
    return kExitUnusable;
  }
  // Those that the session opens are tried before anything is played.
  for (const session::Action& action : session.mActions)
    if (action.mVerb == session::Verb::open && !openAlone(action.mText))
      return kExitUnusable;
  if (!openAlone(options.mDrawing))
    return kExitUnusable;
  if (!options.mMenu.empty()) {
    const std::string menu = readFile(options.mMenu);
    if (menu.empty()) {
      std::cerr << options.mMenu << ": is empty or can't be read\n";
      return kExitUnusable;
    }
    host::setMenuText(menu);
  }
  if (options.mIsDryRun)
    return kExitGood;
  return runSession(options, session);
}

} // namespace program
