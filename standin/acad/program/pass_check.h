#ifndef PASS_CHECK_H
#define PASS_CHECK_H

#include "call_log.h"
#include "check.h"
#include "counted_writer.h"

#include <deque>
#include <filesystem>
#include <functional>
#include <limits>
#include <memory>
#include <mutex>

namespace program {

/// Compares every tick and pass of the plug-in with the model while a session runs, on the trace's thread.
class PassCheck {
public:
  /// Starts the trace; to be made before the plug-in's load message.
  /// home       the user's folder, which USERPROFILE names
  /// explained  receives each frame's number and the sample that explains it: that of the pass which showed it,
  ///            or, for a frame between passes, of the last pass. On the trace's thread; may be empty
  /// outside    receives each call outside of ticks, its entry and its end. On the trace's thread; may be empty
  using Explained = std::function<void(std::size_t frame, const std::array<short, 6>& sample)>;
  using Outside = std::function<void(const call_log::Record&)>;
  explicit PassCheck(const std::filesystem::path& home, Explained explained = nullptr,
                     Outside outside = nullptr);
  ~PassCheck();
  PassCheck(const PassCheck&) = delete;
  PassCheck& operator=(const PassCheck&) = delete;

  /// Notes that a frame is shown now. On the main thread, in the call that asks for it.
  void frameShown(std::size_t number);
  /// Returns what happened up to the end of the last tick, as a session that counts passes. Not during a tick.
  std::string countedSession();
  /// Ends the trace, and returns what was found.
  const model::Check& finish();

private:
  void take(const call_log::Record& record);
  void takeOutside(const call_log::Record& record);
  void endTick(const call_log::Record& bracket);
  model::Check& check();
  model::Settings readSettings();
  void readMenu();
  std::string logNote(bool isEnd);
  void passExplained(const model::Pass& pass);
  void explainFrames(std::int64_t before);

  // Of the main thread.
  std::filesystem::path mLog;
  std::uintmax_t mLogStart = 0;
  std::string mThreadColumn;

  // Of the trace's thread.
  std::string mFolder; // of settings and menu file, in the bytes of the environment, as the plug-in has it
  double mStart = 0;
  std::unique_ptr<model::Check> mCheckP;
  model::Tick mTick;
  bool mIsMenuRead = false;
  const Explained mExplained;
  const Outside mOutside;
  std::array<short, 6> mSample{}; // of the last pass

  std::mutex mMutex;                                       // of what follows
  std::deque<std::pair<std::int64_t, std::size_t>> mShown; // order and number of frames not yet explained
  session::CountedWriter mWriter;
};

} // namespace program

#endif
