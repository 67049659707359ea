#include "counted_writer.h"

#include <algorithm>

namespace session {

namespace {

std::string line(std::int64_t pass, std::string who, const std::string& what) {
  constexpr std::size_t kTimeWidth = 11, kWhoWidth = 8;
  std::string time = "p" + std::to_string(pass) + " ";
  time.resize(std::max(time.size(), kTimeWidth), ' ');
  who.resize(kWhoWidth, ' ');
  return time + who + what + "\n";
}

} // namespace

void CountedWriter::write(const char* who, const std::string& what) {
  mText += line(mNext, who, what);
}

void CountedWriter::pass(const Pass& pass) {
  if (pass.mIsIdle)
    return;
  Action action;
  if (pass.mRotationCode != mLast.mRotationCode || pass.mZoomsAll != mLast.mZoomsAll) {
    action.mVerb = Verb::rotation;
    action.mRotationCode = pass.mRotationCode;
    action.mIsOn = pass.mZoomsAll;
    write("device", deviceLine(action));
  }
  if (pass.mAxes != mLast.mAxes) {
    action.mVerb = Verb::motion;
    action.mAxes = pass.mAxes;
    write("device", deviceLine(action));
  }
  for (const int code : pass.mServed) {
    action.mVerb = Verb::key;
    action.mEventCode = code;
    write("device", deviceLine(action));
  }
  mLast = pass;
  ++mNext;
  if (pass.mEndsTick)
    write("host", "tick");
}

std::string CountedWriter::text() const {
  return "# pass     who     what\n" + mText + line(mNext, "host", "wait");
}

} // namespace session
