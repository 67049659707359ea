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
  action.mAxes = pass.mAxes;
  action.mRotationCode = pass.mRotationCode;
  action.mIsOn = pass.mZoomsAll;
  const auto writeDevice = [&](Verb verb) {
    action.mVerb = verb;
    write("device", deviceLine(action));
  };
  if (pass.mRotationCode != mLast.mRotationCode || pass.mZoomsAll != mLast.mZoomsAll)
    writeDevice(Verb::rotation);
  if (pass.mAxes != mLast.mAxes)
    writeDevice(Verb::motion);
  for (const int code : pass.mServed) {
    action.mEventCode = code;
    writeDevice(Verb::key);
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
