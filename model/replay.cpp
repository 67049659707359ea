#include "replay.h"

#include <algorithm>
#include <cmath>
#include <iomanip>

namespace model {

namespace {

/// Formats a call for a message, with what isn't printable ASCII as a number.
std::string shown(const std::string& name, const Args& in, const std::wstring& wide) {
  std::ostringstream os;
  os << std::setprecision(17) << name << '(';
  for (const Arg& arg : in)
    os << ' ' << arg.value;
  os << " ) \"";
  for (const wchar_t c : wide)
    os << (c >= L' ' && c <= L'~' ? std::string(1, static_cast<char>(c))
                                  : text('<', static_cast<int>(c), '>'));
  os << '"';
  return os.str();
}

} // namespace

/// Throws Contradiction, with what was expected and what is recorded next.
void Replay::contradict(const std::string& expected) const {
  const auto shownCall = [](const Call& c) { return shown(c.name, {c.in.begin(), c.in.end()}, c.text); };
  throw Contradiction(text("call ", mCall, ", record ", mRecord, ": expected ", expected, "; recorded ",
                           mCall < mCalls.size() ? shownCall(mCalls[mCall]) : "no more calls", ", ",
                           mRecord < mRecords.size() ? mRecords[mRecord] : "no more records"));
}

const Call& Replay::call(const char* name, const Args& in, const std::wstring& wide) {
  const auto isEqual = [](const Arg& expected, double recorded) {
    return expected.value == recorded || std::abs(expected.value - recorded) <= 1e-12 * expected.scale;
  };
  if (mCall == mCalls.size() || mCalls[mCall].name != name || mCalls[mCall].text != wide ||
      !std::equal(in.begin(), in.end(), mCalls[mCall].in.begin(), mCalls[mCall].in.end(), isEqual))
    contradict(shown(name, in, wide));
  const Call& recorded = mCalls[mCall++];
  if (recorded.threw)
    throw HostException();
  return recorded;
}

void Replay::log(const std::string& type, const std::string& message) {
  const std::string record = type + ' ' + message;
  if (mLoggedTypes.count(type) == 0)
    return;
  if (mRecord == mRecords.size() || mRecords[mRecord] != record)
    contradict(record);
  ++mRecord;
}

void Replay::end() const {
  if (mCall != mCalls.size() || mRecord != mRecords.size())
    contradict("nothing more");
}

} // namespace model
