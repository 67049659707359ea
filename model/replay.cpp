#include "replay.h"

#include <algorithm>
#include <cmath>
#include <iomanip>

namespace model {

namespace {

/// Formats a call for a message, with what isn't printable ASCII as a number.
std::string shown(const Call& call) {
  std::ostringstream os;
  os << std::setprecision(17) << call.name << '(';
  for (const double value : call.in)
    os << ' ' << value;
  os << " ) \"";
  for (const wchar_t c : call.text)
    os << (c >= L' ' && c <= L'~' ? std::string(1, static_cast<char>(c))
                                  : text('<', static_cast<int>(c), '>'));
  os << '"';
  return os.str();
}

std::string shown(const Record& record) {
  return record.type + " \"" + record.text + '"';
}

/// Says that what is recorded next isn't as expected.
template <class Item>
[[noreturn]] void contradict(const char* kind, const std::vector<Item>& items, std::size_t index,
                             const std::string& expected) {
  throw Contradiction(text(kind, ' ', index, ": expected ", expected, ", recorded ",
                           index < items.size() ? shown(items[index]) : "nothing more"));
}

} // namespace

const Call& Replay::call(const char* name, const std::vector<Arg>& in, const std::wstring& wide) {
  const auto isEqual = [](const Arg& expected, double recorded) {
    return expected.value == recorded || std::abs(expected.value - recorded) <= 1e-12 * expected.scale;
  };
  if (mCall == mCalls.size() || mCalls[mCall].name != name || mCalls[mCall].text != wide ||
      !std::equal(in.begin(), in.end(), mCalls[mCall].in.begin(), mCalls[mCall].in.end(), isEqual))
    contradict("call", mCalls, mCall, shown(Call{name, {in.begin(), in.end()}, wide, {}, {}}));
  const Call& recorded = mCalls[mCall++];
  if (recorded.threw)
    throw HostException();
  return recorded;
}

void Replay::log(const char* type, const std::string& message) {
  if (!mIsLogged(type))
    return;
  if (mRecord == mRecords.size() || mRecords[mRecord].type != type || mRecords[mRecord].text != message)
    contradict("record", mRecords, mRecord, shown(Record{type, message}));
  ++mRecord;
}

void Replay::end() const {
  if (mCall != mCalls.size())
    contradict("call", mCalls, mCall, "nothing more");
  if (mRecord != mRecords.size())
    contradict("record", mRecords, mRecord, "nothing more");
}

} // namespace model
