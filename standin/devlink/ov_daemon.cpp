// The device and its daemon as a program: plays a session, or lines from standard input or a page.

#include "daemon.h"
#include "live_door.h"

#include <CLI/CLI.hpp>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <memory>
#include <system_error>
#include <thread>

namespace {

constexpr const char* kOnConnect = "on-connect";
constexpr const char* kNow = "now";

struct Arguments {
  std::string mSession;
  std::string mPortFile;
  std::string mRecordFile;
  std::string mPanelFile;
  std::string mStart = kOnConnect;
  bool mIsLive = false;
  std::string mLiveFile;
  web::ServerOptions mLive;
};

void declare(CLI::App& app, Arguments& arguments, devlink::DaemonOptions& options) {
  app.add_option(
      "session", arguments.mSession,
      "Session file whose device lines are played. Without one, the same verbs are taken from standard "
      "input, a line each and without time: motion x y z a b c, view NAME, zoom, key N, "
      "rotation CODE [zoomall], mode, event CODE, away SECONDS");
  app.add_option("--port", options.mPort, "TCP port on this machine; 0 takes any free one and prints it")
      ->envname(devlink::kPortVariable)
      ->capture_default_str();
  app.add_option("--port-file", arguments.mPortFile, "Write the port there once clients can connect");
  app.add_option("--record", arguments.mRecordFile, "Write there what is delivered, a line each");
  app.add_option(
      "--panel", arguments.mPanelFile,
      "The device's panel: a file of lines that are also verbs of a session: gain AXIS FACTOR (below "
      "0 inverts), deadzone AXIS COUNTS, swap AXIS AXIS, dominant on|off, rotation CODE [zoomall]; "
      "axes are x y z a b c");
  app.add_option("--start", arguments.mStart, "When the session's clock starts: on-connect, now")
      ->check(CLI::IsMember({kOnConnect, kNow}))
      ->capture_default_str();
  CLI::Option* const liveP = app.add_flag(
      "--live", arguments.mIsLive,
      "Let a page in a browser drive, through a WebSocket on this machine that takes the same lines; "
      "standard input isn't read then, and the daemon ends when its clients have left");
  app.add_option("--live-port", arguments.mLive.mPort, "Port for pages; 0 takes any free one")
      ->needs(liveP)
      ->capture_default_str();
  app.add_option("--live-file", arguments.mLiveFile, "Write the WebSocket's address there")->needs(liveP);
  app.add_option("--live-silence", arguments.mLive.mSilence,
                 "Milliseconds of a silent page after which the cap is released; 0 for never")
      ->check(CLI::Range(0, 86400000))
      ->needs(liveP)
      ->capture_default_str();
  app.add_option("--token", arguments.mLive.mToken, "What a page has to know (default: 128 random bits)")
      ->envname("OV_LIVE_TOKEN");
  app.add_flag("--linger", options.mLingers, "Stay after the last line, when no client is left");
  app.add_flag("--verbose", options.mIsVerbose, "Print each event and why connections end");
}

/// Replaces characters outside ASCII: texts of clients may have any code page.
std::string printable(std::string text) {
  for (char& c : text)
    if (static_cast<unsigned char>(c) > 0x7E)
      c = '?';
  return text;
}

/// Writes a file that appears complete or not at all, since others wait for it and read it at once.
bool writeWhole(const std::string& path, const std::string& line) {
  const std::string temporary = path + ".new";
  {
    std::ofstream file(temporary);
    file << line << '\n';
    if (!file.flush())
      return false;
  }
  std::error_code failure;
  std::filesystem::rename(temporary, path, failure);
  return !failure;
}

/// Plays standard input, and reports invalid lines.
void playInput(devlink::Daemon& daemon) {
  std::string line;
  for (int number = 1; std::getline(std::cin, line); ++number) {
    session::Action action;
    std::string reason;
    if (session::parseDeviceLine(line, action, reason)) {
      if (!daemon.play(action))
        return;
    } else if (!reason.empty()) {
      std::cerr << "standard input:" << number << ": " << reason << std::endl;
    }
  }
  daemon.endOfInput();
}

/// Reads the panel's file. Returns false if it is invalid, and prints why.
bool readPanel(const std::string& path, std::vector<session::Action>& panel) {
  std::ifstream file(path);
  std::string line;
  for (int number = 1; std::getline(file, line); ++number) {
    session::Action action;
    std::string reason;
    const bool isLine = session::parseDeviceLine(line, action, reason);
    if (isLine && action.mVerb != session::Verb::rotation && !devlink::Panel().take(action))
      reason = "doesn't belong to the panel: " + action.mSource;
    if (!reason.empty()) {
      std::cerr << path << ':' << number << ": " << reason << std::endl;
      return false;
    }
    if (isLine)
      panel.push_back(action);
  }
  if (!file.eof())
    std::cerr << path << ": can't be read" << std::endl;
  return file.eof();
}

int complain(const std::string& text) {
  std::cerr << "ov_daemon: " << text << std::endl;
  return EXIT_FAILURE;
}

int serve(const Arguments& arguments, std::ofstream& recordFile, devlink::DaemonOptions options) {
  std::unique_ptr<devlink::LiveDoor> liveP;
  options.mStartsOnConnect = arguments.mStart == kOnConnect;
  options.mStopsAtSignals = true;
  options.mSay = [&](const std::string& text) {
    std::cout << printable(text) << std::endl;
    if (liveP)
      liveP->said(text);
  };
  options.mRecord = [&](const std::string& text) {
    if (recordFile.is_open())
      recordFile << text << std::endl;
    if (liveP)
      liveP->recorded(text);
  };

  std::shared_ptr<devlink::Daemon> daemon;
  std::string port = std::to_string(options.mPort);
  try {
    daemon = std::make_shared<devlink::Daemon>(options);
    port = std::to_string(arguments.mLive.mPort);
    if (arguments.mIsLive)
      liveP = std::make_unique<devlink::LiveDoor>(arguments.mLive, *daemon);
  } catch (const std::system_error& error) {
    return complain("can't listen on port " + port + ": " + error.code().message());
  }
  std::cout << "Listening on port " << daemon->port() << std::endl;
  if (!arguments.mPortFile.empty() && !writeWhole(arguments.mPortFile, std::to_string(daemon->port())))
    return complain("can't write " + arguments.mPortFile);
  if (!arguments.mLiveFile.empty() && !writeWhole(arguments.mLiveFile, liveP->address()))
    return complain("can't write " + arguments.mLiveFile);

  // Nothing ends a thread that waits for input, so it is detached, with a share of the daemon.
  if (!options.mHasSession)
    std::thread([daemon] { playInput(*daemon); }).detach();
  daemon->run();
  liveP.reset();
  if (recordFile.is_open() && !recordFile)
    return complain("can't write " + arguments.mRecordFile);
  return EXIT_SUCCESS;
}

int runProgram(int argc, char** argv) {
  CLI::App app("The device daemon: serves a six-axis hand controller that a session plays.", "ov_daemon");
  app.allow_windows_style_options(false); // a path may begin with a slash there too
  Arguments arguments;
  devlink::DaemonOptions options;
  declare(app, arguments, options);
  CLI11_PARSE(app, argc, argv);

  if (!arguments.mSession.empty()) {
    const session::Session session = session::read(arguments.mSession);
    for (const std::string& error : session.mErrors)
      std::cerr << error << std::endl;
    if (!session.isGood())
      return EXIT_FAILURE;
    if (session.isCounted())
      return complain(arguments.mSession +
                      ": counts passes, which acad alone sees; it plays the device's lines then");
    options.mHasSession = true;
    options.mActions = session.actionsOf(session::Who::device);
  }
  if (!arguments.mPanelFile.empty() && !readPanel(arguments.mPanelFile, options.mPanel))
    return EXIT_FAILURE;
  if (arguments.mIsLive)
    options.mHasSession = true; // one without lines, if there is no other
  std::ofstream recordFile;
  if (!arguments.mRecordFile.empty()) {
    recordFile.open(arguments.mRecordFile);
    if (!recordFile)
      return complain("can't write " + arguments.mRecordFile);
  }
  return serve(arguments, recordFile, std::move(options));
}

} // namespace

int main(int argc, char** argv) {
  int status = EXIT_FAILURE;
  try {
    status = runProgram(argc, argv);
  } catch (const std::exception& error) {
    complain(error.what());
  }
  // Without the clean-up at exit: the thread that waits for input may be using what that would destroy.
  std::cout.flush();
  std::_Exit(status);
}
