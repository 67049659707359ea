#include "pass_check.h"

#include "host_player.h"
#include "recorder.h"
#include "wide_text.h"

#include <windows.h>

#include "cnfg.h"
#include "util.h"

#include <algorithm>
#include <fstream>
#include <sstream>

namespace program {

namespace {

constexpr char kLogName[] = "autocad_addin_log.txt";
constexpr double kFirstInterval = 100; // of the plug-in's first timer, milliseconds

/// Returns a file's text from a position on; empty if the file is shorter.
std::string textFrom(const std::filesystem::path& path, std::uintmax_t start) {
  std::ifstream file(path, std::ios::binary);
  file.seekg(static_cast<std::streamoff>(start));
  return std::string(std::istreambuf_iterator<char>(file), {});
}

/// Returns the records of one thread. A record has time, type, thread and more columns, then the text.
std::vector<std::string> recordsIn(const std::string& text, const std::string& thread) {
  constexpr std::size_t kType = 13, kThread = 17, kThreadEnd = 23, kText = 82;
  std::vector<std::string> records;
  std::istringstream lines(text);
  for (std::string line; std::getline(lines, line);) {
    if (!line.empty() && line.back() == '\r')
      line.pop_back();
    const std::size_t end = line.find('|', kThread);
    if (end == std::string::npos || end < kThreadEnd || line.size() < kText + end - kThreadEnd)
      continue;
    const std::string column = line.substr(kThread, end - kThread);
    if (column.substr(column.find_first_not_of(' ')) == thread)
      records.push_back(line.substr(kType, 3) + ' ' + line.substr(kText + end - kThreadEnd));
  }
  return records;
}

} // namespace

PassCheck::PassCheck(const std::filesystem::path& home, Explained explained, Outside outside)
    : mLog(home / "Orvaner" / kLogName), mThreadColumn(std::to_string(GetCurrentThreadId())),
      mFolder(Util::getHomeDir() + "\\Orvaner\\Applications"), mStart(unixNow()),
      mExplained(std::move(explained)), mOutside(std::move(outside)) {
  call_log::noteBrackets([this](bool isEnd) { return logNote(isEnd); });
  call_log::startTrace([this](call_log::Record&& record) { take(record); });
}

PassCheck::~PassCheck() {
  finish();
}

const model::Check& PassCheck::finish() {
  call_log::stopTrace();
  call_log::noteBrackets(nullptr);
  if (check().contradicted == 0)
    explainFrames(std::numeric_limits<std::int64_t>::max());
  return check();
}

void PassCheck::frameShown(std::size_t number) {
  const std::int64_t order = call_log::takeOrder();
  const std::lock_guard<std::mutex> lock(mMutex);
  mShown.emplace_back(order, number);
}

/// Explains the frames up to a place in the order by the last pass.
void PassCheck::explainFrames(std::int64_t before) {
  const std::lock_guard<std::mutex> lock(mMutex);
  for (; !mShown.empty() && mShown.front().first < before; mShown.pop_front())
    if (mExplained)
      mExplained(mShown.front().second, mSample);
}

void PassCheck::passExplained(const model::Pass& pass) {
  explainFrames(pass.entered);
  std::copy_n(pass.values.begin(), mSample.size(), mSample.begin());
  explainFrames(pass.ended);
  const std::lock_guard<std::mutex> lock(mMutex);
  mWriter.pass({mSample, pass.rotationCode(), pass.values[model::ZOOM_ALL_AFTER_VIEW] != 0, pass.served,
                pass.isIdle, pass.endsTick});
}

std::string PassCheck::countedSession() {
  call_log::flushTrace();
  const std::lock_guard<std::mutex> lock(mMutex);
  return mWriter.text();
}

/// Returns what was logged since a tick's beginning. A log that is shorter now is a new file.
std::string PassCheck::logNote(bool isEnd) {
  std::error_code failure;
  const std::uintmax_t size = std::filesystem::file_size(mLog, failure);
  if (!isEnd) {
    mLogStart = failure ? 0 : size;
    return {};
  }
  if (failure || size == mLogStart)
    return {};
  if (size > mLogStart)
    return textFrom(mLog, mLogStart);
  return textFrom(mLog.string() + ".bak", mLogStart) + textFrom(mLog, 0);
}

void PassCheck::take(const call_log::Record& record) {
  if (mOutside && !record.isBracketed && !record.isBracket)
    mOutside(record);
  if (record.isEntry()) {
    if (mCheckP)
      mCheckP->entered(record.thread, record.order);
    if (record.isBracket) {
      mTick = model::Tick();
      mTick.entered = record.order;
      mTick.seconds = record.seconds - mStart;
    }
  } else if (record.isBracketed) {
    mTick.calls.push_back(record);
  } else if (record.isBracket) {
    endTick(record);
  } else {
    takeOutside(record);
  }
}

void PassCheck::takeOutside(const call_log::Record& record) {
  if (record.name == kHostLine) {
    const std::lock_guard<std::mutex> lock(mMutex);
    mWriter.host(narrowed(record.text));
    return;
  }
  if (record.name == "acutPrintf")
    check().printed(record.text);
  if (record.threw || record.out.empty()) // an event that never came, say
    return;
  const auto out = [&record](std::size_t i) { return static_cast<int>(record.out.at(i)); };
  if (record.name == "ovFetchEvent") {
    if (out(7) < 0)
      check().delivered(record.thread, record.order, model::X,
                        {out(1), out(2), out(3), out(4), out(5), out(6)});
    else
      check().eventDelivered(record.order, out(7));
  } else if (record.name == "ovGetAdvancedSettings") {
    check().delivered(record.thread, record.order, model::ROT_MODE,
                      model::rotationValues(out(1), out(2) != 0));
  } else if (record.name == "SetTimer" && record.in.at(0) == kFirstInterval) {
    check().timerArmed(record.out.at(0));
  }
}

void PassCheck::endTick(const call_log::Record& bracket) {
  if (mTick.calls.empty()) // another timer's, or one that found no plug-in
    return;
  mTick.ended = bracket.order;
  mTick.records = recordsIn(bracket.note, mThreadColumn);
  readMenu();
  check().tick(mTick);
  mTick = model::Tick();
}

/// Returns the check. Made at the first call that counts, when the plug-in has read its settings.
model::Check& PassCheck::check() {
  if (!mCheckP)
    mCheckP = std::make_unique<model::Check>(readSettings(),
                                             [this](const model::Pass& pass) { passExplained(pass); });
  return *mCheckP;
}

model::Settings PassCheck::readSettings() {
  model::Settings s;
  Cnfg file;
  // In a home without the folder all settings have their defaults.
  if (file.open(mFolder + "\\autocad_addin.ini") != Cnfg::kOk)
    return s;
  const auto text = [&file](const char* key, const char* section) {
    std::string value;
    file.readParameter(key, value, section, true);
    return value;
  };
  const auto number = [&text](const char* key) { return std::atoi(text(key, "PROGRAM").c_str()); };
  const auto isOn = [&text](const char* key, const char* section) { return Util::isOn(text(key, section)); };
  s.traSensBase = number("transSensBase");
  s.rotSensBase = number("rotSensBase");
  s.minThreshold = number("minThreshold");
  s.maxContMoveTime = number("maxContMoveTime");
  s.toggleRotationCenter = isOn("toggleRotationCenter", "PROGRAM");
  s.toggleRotationAxis = isOn("toggleRotationAxis", "PROGRAM");
  s.scrollTreeAndList = isOn("scrollTreeAndList", "PROGRAM");
  s.useInt3dIntrfce = isOn("useInt3dIntrfce", "PROGRAM");
  for (const char* const key : {"transSensBase", "rotSensBase", "minThreshold", "toggleRotationCenter",
                                "toggleRotationAxis", "scrollTreeAndList"}) {
    const std::lock_guard<std::mutex> lock(mMutex);
    mWriter.host(std::string("setting ") + key + " " + text(key, "PROGRAM"));
  }
  if (!isOn("logToFile", "LOGGING") || text("logFile", "LOGGING") != kLogName ||
      !text("fileToLog", "LOGGING").empty() || !std::ofstream(mLog, std::ios::app))
    return s;
  s.loggedTypes = {"ERR"};
  const char* const types[][2] = {{"warning", "WRN"}, {"creation", "CRT"}, {"trace", "TRC"},
                                  {"info", "INF"},    {"debug", "DBG"},    {"tmp", "TMP"}};
  for (const auto& [key, type] : types)
    if (isOn(key, "LOGGING"))
      s.loggedTypes.insert(type);
  return s;
}

void PassCheck::readMenu() {
  const std::string path = mFolder + "\\autocad.mnu";
  Cnfg file;
  if (mIsMenuRead || file.open(path) != Cnfg::kOk)
    return;
  std::vector<std::string> modes, values;
  std::string name, value;
  file.selectSection("Modes");
  while (file.readNextParameter(name, value, true) == Cnfg::kOk)
    modes.push_back(name);
  file.selectSection("MenuBar");
  while (file.readNextParameter(name, value, true) == Cnfg::kOk)
    values.push_back(value);
  mIsMenuRead = !modes.empty();
  check().menuFound({path, modes, values});
}

} // namespace program
