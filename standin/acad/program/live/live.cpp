#include "live.h"

#include "live_messages.h"
#include "report_page.h"

#include <algorithm>
#include <fstream>

namespace program {

namespace {

using nlohmann::json;

/// A line may select all objects of a large drawing by their numbers.
constexpr std::size_t kMaxLineBytes = 1 << 20;
/// More lines than this don't wait for the main thread.
constexpr std::size_t kMaxAsked = 1000;
/// How often the log is looked at, seconds; lines that a page gets at first.
constexpr double kLogInterval = 0.1;
constexpr std::size_t kLogLines = 1000;

web::ServerOptions forHost(web::ServerOptions options) {
  options.mPath = "/host";
  options.mMaxLineBytes = kMaxLineBytes;
  return options;
}

json numbersOf(const std::vector<AcDbObjectId>& ids) {
  json numbers = json::array();
  for (const AcDbObjectId& id : ids)
    numbers.push_back(host::entityNumber(id));
  return numbers;
}

} // namespace

Live::Live(web::ServerOptions options, LiveSources sources, Recorder& recorder, const Controls& controls)
    : mSources(std::move(sources)), mRecorder(recorder), mControls(controls.infos()),
      mServer(forHost(std::move(options)), *this) {
  for (const DrawingData& drawing : recorder.drawings()) // a page that comes is told of these
    mObjects.push_back(drawing.objects().size());
}

Live::~Live() {
  send("end", true);
}

void Live::send(const char* key, json value, web::ClientId to) {
  mServer.send(web::message([data = json{{key, std::move(value)}}] { return jsonText(data); }), to);
}

// On the server's thread.

void Live::onOpened(web::ClientId client, bool isDriver) {
  put([this, client, isDriver](HostPlayer&) { sayHello(client, isDriver); });
}

void Live::onDriver(web::ClientId client) {
  put([this, client](HostPlayer&) { send("driver", true, client); });
}

std::string Live::onLine(web::ClientId client, bool isDriver, const std::string& line) {
  if (line == "save session")
    return put([this, client](HostPlayer&) {
      send("file", json{{"name", "saved.session"}, {"text", mSources.mSavedSession()}}, client);
    });
  if (line == "save report")
    return put([this, client](HostPlayer&) {
      MovedWriter moved;
      auto text = [session = mSources.mSoFar(true, moved)] {
        return jsonText({{"file", {{"name", "report.html"}, {"text", pageWith(session)}}}});
      };
      mServer.send(web::message(std::move(text)), client);
    });
  session::Action action;
  std::string reason;
  if (!session::parseHostLine(line, action, reason) || !isDriver)
    return reason;
  return put([action](HostPlayer& player) { player.perform(action); });
}

std::string Live::page(const std::string& authority) {
  return pageWith({{"live", {{"host", mServer.socketAddress(authority)}}}});
}

std::string Live::put(Asked asked) {
  const std::lock_guard<std::mutex> lock(mMutex);
  if (mInbox.size() >= kMaxAsked)
    return "the host is busy";
  mInbox.push_back(std::move(asked));
  return {};
}

// On any thread.

void Live::explained(std::size_t number, const std::array<short, 6>& sample) {
  const std::lock_guard<std::mutex> lock(mMutex);
  mSample = sample;
  mExplained.push_back({number, sample});
}

void Live::scrolled(const std::vector<ScrollState>& states) {
  json positions = json::array();
  for (std::size_t i = 0; i < states.size(); ++i)
    positions.push_back({mControls[i].mName, states[i].mVertical, states[i].mHorizontal});
  send("controls", std::move(positions));
}

// On the main thread.

void Live::doLines(HostPlayer& player) {
  std::vector<Asked> inbox;
  {
    const std::lock_guard<std::mutex> lock(mMutex);
    inbox.swap(mInbox);
  }
  for (const Asked& asked : inbox)
    asked(player);
}

void Live::sayHello(web::ClientId client, bool isDriver) {
  mRecorder.look();
  look();
  json data = mSources.mSoFar(false, mMoved);
  sendLists(); // to the others: the newcomer finds them in its data
  data["log"] = mLog;
  send("hello",
       json{{"driver", isDriver},
            {"device", mSources.mDevice},
            {"keys", keyNames(mSources.mMenu)},
            {"data", std::move(data)}},
       client);
  send("selected", numbersOf(mSelected), client);
}

void Live::sendLists() {
  json lists = json::array();
  for (; mLists < mMoved.lists().size(); ++mLists)
    lists.push_back(mMoved.lists()[mLists]);
  if (!lists.empty())
    send("lists", std::move(lists));
}

void Live::frameShown(std::size_t number) {
  sendNewObjects();
  json frame = frameData(mRecorder.frames()[number], mRecorder.start(), mMoved);
  sendLists();
  frame["n"] = number;
  {
    const std::lock_guard<std::mutex> lock(mMutex);
    frame["sample"] = mSample;
  }
  mServer.send(std::make_shared<FrameMessage>(std::make_shared<const json>(std::move(frame))));
}

void Live::look() {
  lookAtHistory();
  lookAtLog();
  sendNewObjects();
  if (mSelected != host::selected()) {
    mSelected = host::selected();
    send("selected", numbersOf(mSelected));
  }
  json pairs = json::array();
  {
    const std::lock_guard<std::mutex> lock(mMutex);
    pairs.swap(mExplained);
  }
  if (!pairs.empty())
    send("explained", std::move(pairs));
}

void Live::sendNewObjects() {
  mObjects.resize(mRecorder.drawings().size());
  for (std::size_t i = 0; i < mObjects.size(); ++i) {
    const DrawingData& drawing = mRecorder.drawings()[i];
    if (mObjects[i] < drawing.objects().size())
      send("drawing",
           json{{"number", i + 1}, {"name", drawing.name()}, {"objects", drawing.objectsFrom(mObjects[i])}});
    mObjects[i] = drawing.objects().size();
  }
}

void Live::lookAtHistory() {
  const std::vector<host::HistoryLine>& history = host::history();
  for (; mHistory < history.size(); ++mHistory) {
    const host::HistoryLine& line = history[mHistory];
    send(line.isTyped ? "command" : "printed", lineData(line, mRecorder.start()));
    if (const auto toggle = readToggle(line))
      send("state", json{{toggle->first, toggle->second}});
  }
}

void Live::lookAtLog() {
  const double now = unixNow();
  if (now < mNextLook)
    return;
  mNextLook = now + kLogInterval;
  std::error_code failure;
  const std::uintmax_t size = std::filesystem::file_size(mSources.mLog, failure);
  if (failure || size == mLogRead)
    return;
  if (size < mLogRead) // a new file
    mLogRead = 0;
  std::ifstream file(mSources.mLog, std::ios::binary);
  file.seekg(static_cast<std::streamoff>(mLogRead));
  json lines = json::array();
  for (std::string line; std::getline(file, line) && !file.eof();) { // the last one may not be complete yet
    mLogRead += line.size() + 1;
    if (!line.empty() && line.back() == '\r')
      line.pop_back();
    lines.push_back(line);
    mLog.push_back(std::move(line));
  }
  if (mLog.size() > kLogLines)
    mLog.erase(mLog.begin(), mLog.end() - static_cast<std::ptrdiff_t>(kLogLines));
  if (!lines.empty())
    send("log", std::move(lines));
}

} // namespace program
