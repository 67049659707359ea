#ifndef SESSION_DATA_H
#define SESSION_DATA_H

#include "check.h"
#include "device_record.h"
#include "recorder.h"

#include <nlohmann/json.hpp>

#include <array>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace program {

/// What became of the plug-in.
struct Outcome {
  bool mIsLoaded = false;
  bool mTookEvents = false;
  bool mIsUnloaded = false;
  // What came of the events.
  bool mMovedView = false;
  bool mMovedObjects = false;
  bool mScrolled = false;
  bool mTyped = false;
  /// Null: no pass was compared with the model.
  const model::Check* mCheckP = nullptr;

  /// Returns what came of the events as a list of words; empty if nothing did.
  std::string effects() const;
  bool isGood() const { return mIsLoaded && mTookEvents && mIsUnloaded && !effects().empty(); }
  bool isContradicted() const { return mCheckP && mCheckP->contradicted > 0; }
};

/// What is known of a session, at its end or so far.
struct SessionInput {
  /// The file's name, without folders.
  std::string mSessionName;
  /// Number of texts that had been sent when the plug-in was loaded.
  std::int64_t mSentAtStart = 0;
  /// The session's end, or now, unix seconds.
  double mEnd = 0;
  std::vector<DeviceEvent> mEvents;
  /// Earlier frames are left out; what they moved comes with this one.
  std::size_t mFirstFrame = 0;
  /// By the frame's number, the sample that explains it. Other frames get the sample that had been delivered last by
  /// the daemon's record; at a change that may already be the next one.
  std::map<std::size_t, std::array<short, 6>> mSamples;
  std::vector<session::Action> mDeviceActions;
  /// What was done, as a session that counts passes; empty if no pass was checked.
  std::string mCounted;
  /// The command line; times in unix seconds.
  std::vector<host::HistoryLine> mHistory;
  std::vector<std::string> mLog;
  std::vector<ControlInfo> mControls;
  Outcome mOutcome;
};

/// The moved objects of frames. A long list comes again with every frame of a deflection, so it is kept once.
class MovedWriter {
public:
  nlohmann::json write(const std::vector<MovedGroup>& groups);
  const std::vector<std::vector<int>>& lists() const { return mLists; }

private:
  std::size_t listNumber(const std::vector<int>& objects);

  std::vector<std::vector<int>> mLists;
};

/// Returns the session as session.json holds it. Times are in seconds since its start, `unix` is that start.
/// moved  knows the lists of objects from here on
nlohmann::json sessionData(const Recorder& recorder, const SessionInput& input, MovedWriter& moved);

/// Returns a frame as session.json holds it.
nlohmann::json frameData(const RecordedFrame& frame, double start, MovedWriter& moved);
/// Returns a line of the command line as session.json holds it.
nlohmann::json lineData(const host::HistoryLine& line, double start);
/// Returns the setting that a toggle command printed, and whether it is on now; nothing for other lines.
std::optional<std::pair<std::string, bool>> readToggle(const host::HistoryLine& line);

/// Returns a quantile: 0.5 is the median, 1 the largest value; 0 if there are no values.
double shareOf(std::vector<double> values, double share);

/// Returns the last lines of a text file, up to a number; none if there is no such file.
std::vector<std::string> lastLines(const std::string& path, std::size_t limit);

} // namespace program

#endif
