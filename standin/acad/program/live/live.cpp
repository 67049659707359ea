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
/// How often the log is looked at, seconds; what is read of it in one go, bytes; lines that a page gets at first.
constexpr double kLogInterval = 0.1;
constexpr std::size_t kLogPiece = 1 << 16;
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

/// The report, made when it goes out.
class ReportMessage : public web::Message {
public:
  explicit ReportMessage(json session) : mSession(std::move(session)) {}
  std::string text() const override {
    return jsonText(json{{"file", {{"name", "report.html"}, {"text", reportPage(mSession)}}}});
  }

private:
  const json mSession;
};

} // namespace

Live::Live(web::ServerOptions options, LiveSources sources, Recorder& recorder, const Controls& controls)
    : mSources(std::move(sources)), mRecorder(recorder), mControls(controls.infos()),
      mServer(forHost(std::move(options)), *this) {}

Live::~Live() {
  send("end", true);
}

template <class Value> void Live::send(const char* key, Value&& value, web::ClientId to) {
  mServer.send(std::make_shared<JsonMessage>(key, std::forward<Value>(value)), to);
}

// On the server's thread.

void Live::onOpened(web::ClientId client, bool isDriver) {
  put({Asked::What::hello, client, isDriver});
}

void Live::onDriver(web::ClientId client) {
  put({Asked::What::drive, client, true});
}

std::string Live::onLine(web::ClientId client, bool isDriver, const std::string& line) {
  Asked asked{Asked::What::act, client, isDriver};
  if (line == "save session" || line == "save report") {
    asked.mWhat = line == "save session" ? Asked::What::saveSession : Asked::What::saveReport;
    return put(std::move(asked));
  }
  std::string reason;
  if (!session::parseHostLine(line, asked.mAction, reason) || !isDriver)
    return reason;
  return put(std::move(asked));
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
  if (mIsWatched)
    mExplained.push_back({number, sample});
}

void Live::scrolled(const std::vector<ScrollState>& states) {
  json changes = json::array();
  {
    const std::lock_guard<std::mutex> lock(mMutex);
    mScrolled.resize(states.size());
    for (std::size_t i = 0; i < states.size(); ++i) {
      if (!(mScrolled[i] == states[i]))
        changes.push_back({mControls[i].mName, states[i].mVertical, states[i].mHorizontal});
    }
    mScrolled = states;
  }
  if (!changes.empty())
    send("controls", std::move(changes));
}

// On the main thread.

void Live::doLines(HostPlayer& player) {
  std::vector<Asked> inbox;
  {
    const std::lock_guard<std::mutex> lock(mMutex);
    inbox.swap(mInbox);
  }
  for (const Asked& asked : inbox) {
    switch (asked.mWhat) {
    case Asked::What::hello:
      sayHello(asked);
      break;
    case Asked::What::drive:
      send("driver", true, asked.mClient);
      break;
    case Asked::What::act:
      player.perform(asked.mAction);
      break;
    case Asked::What::saveSession:
      send("file", json{{"name", "saved.session"}, {"text", mSources.mSavedSession()}}, asked.mClient);
      break;
    case Asked::What::saveReport: {
      MovedWriter moved;
      mServer.send(std::make_shared<ReportMessage>(mSources.mSoFar(true, moved)), asked.mClient);
      break;
    }
    }
  }
}

void Live::sayHello(const Asked& asked) {
  mIsWatched = true;
  mRecorder.look();
  look();
  json data = mSources.mSoFar(false, mMoved);
  sendLists(); // to the others: the newcomer finds them in its data
  data["log"] = mLog;
  send("hello",
       json{{"driver", asked.mIsDriver},
            {"device", mSources.mDevice},
            {"keys", keyNames(mSources.mMenu)},
            {"data", std::move(data)}},
       asked.mClient);
  send("selected", numbersOf(mSelected), asked.mClient);
  send("layout", mIsLayout, asked.mClient);
}

void Live::sendLists() {
  json lists = json::array();
  for (; mLists < mMoved.lists().size(); ++mLists)
    lists.push_back(mMoved.lists()[mLists]);
  if (!lists.empty())
    send("lists", std::move(lists));
}

void Live::frameShown(std::size_t number) {
  if (!mIsWatched)
    return;
  json frame = frameData(mRecorder.frames()[number], mRecorder.start(), mMoved);
  sendLists();
  frame["n"] = number;
  {
    const std::lock_guard<std::mutex> lock(mMutex);
    frame["sample"] = mSample;
  }
  mServer.send(std::make_shared<FrameMessage>(std::move(frame)));
}

void Live::look() {
  lookAtHistory();
  lookAtLog();
  if (mObjects < mRecorder.drawing().objects().size()) {
    if (mIsWatched)
      send("drawing", json{{"objects", mRecorder.drawing().objectsFrom(mObjects)}});
    mObjects = mRecorder.drawing().objects().size();
  }
  if (mSelected != host::selected()) {
    mSelected = host::selected();
    send("selected", numbersOf(mSelected));
  }
  if (mIsLayout != host::isLayout()) {
    mIsLayout = host::isLayout();
    send("layout", mIsLayout);
  }
  json pairs = json::array();
  {
    const std::lock_guard<std::mutex> lock(mMutex);
    pairs.swap(mExplained);
  }
  if (!pairs.empty())
    send("explained", std::move(pairs));
}

void Live::lookAtHistory() {
  const std::vector<host::HistoryLine>& history = host::history();
  for (; mHistory < history.size(); ++mHistory) {
    const host::HistoryLine& line = history[mHistory];
    send(line.isTyped ? "command" : "printed", lineData(line, mRecorder.start()));
    std::string name;
    bool isOn = false;
    if (readToggle(line, name, isOn))
      send("state", json{{name, isOn}});
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
  if (size < mLogRead) { // a new file
    mLogRead = 0;
    mLogRest.clear();
  }
  std::ifstream file(mSources.mLog, std::ios::binary);
  file.seekg(static_cast<std::streamoff>(mLogRead));
  std::string piece(kLogPiece, 0);
  file.read(&piece[0], static_cast<std::streamsize>(piece.size()));
  piece.resize(static_cast<std::size_t>(file.gcount()));
  mLogRead += piece.size();
  mLogRest += piece;
  json lines = json::array();
  std::size_t start = 0;
  for (std::size_t end = 0; (end = mLogRest.find('\n', start)) != std::string::npos; start = end + 1) {
    const bool hasReturn = end > start && mLogRest[end - 1] == '\r';
    mLog.push_back(mLogRest.substr(start, end - start - (hasReturn ? 1 : 0)));
    lines.push_back(mLog.back());
  }
  mLogRest.erase(0, start);
  if (mLog.size() > kLogLines)
    mLog.erase(mLog.begin(), mLog.end() - static_cast<std::ptrdiff_t>(kLogLines));
  if (!lines.empty())
    send("log", std::move(lines));
}

} // namespace program
