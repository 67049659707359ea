#ifndef ACAD_LIVE_H
#define ACAD_LIVE_H

#include "host_player.h"
#include "server.h"
#include "session_data.h"

#include <nlohmann/json.hpp>

#include <array>
#include <filesystem>
#include <functional>
#include <mutex>
#include <string>
#include <vector>

namespace program {

/// What the host's door needs from the program. Called on the main thread.
struct LiveSources {
  /// Address of the daemon's door for pages; empty: there is none.
  std::string mDevice;
  /// The plug-in's log file.
  std::filesystem::path mLog;
  /// Path of the menu file, as the plug-in has it.
  std::string mMenu;
  /// The session so far, for the report or, with the latest frames only, for a page that comes.
  /// For a page the log is left out.
  std::function<nlohmann::json(bool isReport, MovedWriter& moved)> mSoFar;
  std::function<std::string()> mSavedSession;
};

/// The host's door for pages: serves the page, sends what there is to see as it happens, and does the host lines of
/// the page that drives. The main thread makes messages and never waits for a page. Belongs to the main thread, but
/// for what says otherwise.
class Live : private web::Door {
public:
  /// Opens the port. Throws std::system_error if it can't be had.
  Live(web::ServerOptions options, LiveSources sources, Recorder& recorder, const Controls& controls);
  /// Says that the host has ended.
  ~Live() override;

  std::string address() const { return mServer.pageAddress(); }

  /// Does what the pages asked for. Between two ticks.
  void doLines(HostPlayer& player);
  /// Sends what has changed.
  void look();
  /// A frame has been shown, or one joined to it.
  void frameShown(std::size_t number);
  /// The sample that explains a frame is known. Any thread.
  void explained(std::size_t number, const std::array<short, 6>& sample);
  /// A control has been scrolled; all positions. Any thread.
  void scrolled(const std::vector<ScrollState>& states);

private:
  /// What a page wants done on the main thread.
  using Asked = std::function<void(HostPlayer& player)>;

  void onOpened(web::ClientId client, bool isDriver) override;
  void onDriver(web::ClientId client) override;
  std::string onLine(web::ClientId client, bool isDriver, const std::string& line) override;
  std::string page(const std::string& authority) override;

  std::string put(Asked asked);
  void sayHello(web::ClientId client, bool isDriver);
  void sendLists();
  void sendNewObjects();
  void lookAtHistory();
  void lookAtLog();
  void send(const char* key, nlohmann::json value, web::ClientId to = web::kEveryone);

  const LiveSources mSources;
  Recorder& mRecorder;
  const std::vector<ControlInfo> mControls;

  // What the pages know.
  MovedWriter mMoved;
  std::size_t mLists = 0;
  std::size_t mHistory = 0;
  /// Number of objects by drawing.
  std::vector<std::size_t> mObjects;
  std::vector<AcDbObjectId> mSelected;
  /// The last lines of the plug-in's log.
  std::vector<std::string> mLog;
  /// Bytes of the log file that have been read, whole lines.
  std::uintmax_t mLogRead = 0;
  /// When the log is looked at next, unix seconds.
  double mNextLook = 0;

  std::mutex mMutex; // of what follows
  std::vector<Asked> mInbox;
  nlohmann::json mExplained = nlohmann::json::array();
  /// The last sample that is known.
  std::array<short, 6> mSample{};

  web::Server mServer; // last: its thread uses what is above
};

} // namespace program

#endif
