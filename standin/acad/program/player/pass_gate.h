#ifndef PASS_GATE_H
#define PASS_GATE_H

#include "call_log.h"
#include "recorder.h"
#include "session.h"

#include <windows.h>

#include <condition_variable>
#include <functional>
#include <mutex>
#include <set>

namespace program {

/// Replays a session that counts passes. A pass begins only once the plug-in's reading thread has stored what the
/// pass saw, and a tick ends where it ended. For that the plug-in reads its tick count here: at a tick's start, and
/// at the start of each of its passes.
class PassGate {
public:
  /// send  plays a line of the device; false if nobody takes it
  PassGate(const session::Session& session, const Recorder& recorder,
           std::function<bool(const std::string& line)> send);

  // The main thread.
  /// Returns the tick count; at a pass's start, waits until the pass may go on.
  DWORD tickCount();
  /// Says that no tick runs.
  void betweenTicks() { mIsInTick = false; }
  /// Number of the pass that comes next.
  std::int64_t next() const { return mNext; }
  bool isOver() const { return mNext >= mEnd || hasFailed(); }
  /// Returns true if a line of the device didn't arrive, which standard error has reported.
  bool hasFailed() const { return mHasFailed; }
  /// The device's lines, with the seconds at which they were played.
  const std::vector<session::Action>& played() const { return mActions; }

  /// Receives the calls outside of ticks, their entries and ends. The trace's thread.
  void hear(const call_log::Record& record);

private:
  void deliver(session::Action& action);

  const Recorder& mRecorder;
  const std::function<bool(const std::string&)> mSend;
  std::vector<session::Action> mActions; // of the device
  std::size_t mNextAction = 0;
  std::set<std::int64_t>
      mStarts; // passes that begin a tick, because the host acts before them or its time was up
  std::int64_t mNext = 1, mEnd = 1;
  bool mIsInTick = false, mHasFailed = false;

  std::mutex mMutex; // of what follows
  std::condition_variable mHasStored;
  const session::Action* mAwaitedP = nullptr;
  bool mIsDelivered = false; // and stored once the reading thread is back
  bool mIsStored = false;
};

} // namespace program

#endif
