#include "pass_gate.h"

#include <algorithm>
#include <iostream>

namespace program {

namespace {

constexpr std::chrono::seconds kPatience{10};

bool isDelivery(const call_log::Record& record, const session::Action& action) {
  constexpr std::size_t kCode = 7; // after the status and six axes
  if (record.out.size() <= kCode)
    return false;
  if (action.mVerb != session::Verb::motion)
    return record.out[kCode] == action.mEventCode;
  return record.out[kCode] < 0 &&
         std::equal(action.mAxes.begin(), action.mAxes.end(), record.out.begin() + 1);
}

} // namespace

PassGate::PassGate(const session::Session& session, const Recorder& recorder,
                   std::function<bool(const std::string& line)> send)
    : mRecorder(recorder), mSend(std::move(send)), mActions(session.actionsOf(session::Who::device)),
      mEnd(session.mActions.back().mPass) {
  for (const session::Action& action : session.actionsOf(session::Who::host))
    mStarts.insert(action.mPass);
}

DWORD PassGate::tickCount() {
  constexpr DWORD kStart = 0;
  constexpr DWORD kLast = kStart - 1; // so much later that no tick goes on
  if (!mIsInTick) {
    mIsInTick = true;
    return kStart;
  }
  const std::int64_t pass = mNext++;
  for (; mNextAction < mActions.size() && mActions[mNextAction].mPass <= pass; ++mNextAction)
    deliver(mActions[mNextAction]);
  return mNext >= mEnd || mHasFailed || mStarts.count(mNext) != 0 ? kLast : kStart;
}

/// Plays a line, and waits until the reading thread has stored it.
void PassGate::deliver(session::Action& action) {
  if (mHasFailed)
    return;
  std::unique_lock<std::mutex> lock(mMutex);
  mAwaitedP = &action;
  mIsDelivered = mIsStored = false;
  action.mSeconds = unixNow() - mRecorder.start();
  const std::string line = session::deviceLine(action);
  mHasFailed = !mSend(line) || !mHasStored.wait_for(lock, kPatience, [this] { return mIsStored; });
  mAwaitedP = nullptr;
  if (mHasFailed)
    std::cerr << "acad: pass " << action.mPass << ": the device's line didn't arrive: " << line << std::endl;
}

void PassGate::hear(const call_log::Record& record) {
  if (record.name != "ovFetchEvent")
    return;
  const std::lock_guard<std::mutex> lock(mMutex);
  if (!mAwaitedP)
    return;
  if (!record.isEntry())
    mIsDelivered = mIsDelivered || isDelivery(record, *mAwaitedP);
  else if (mIsDelivered)
    mIsStored = true;
  if (mIsStored)
    mHasStored.notify_all();
}

} // namespace program
