#include "replay.h"

#include "support.h"

#include <cmath>
#include <iomanip>

namespace model {

namespace {

/// Quote wide text; write what isn't printable ASCII as a number.
std::string quoted(const std::wstring& wide) {
  std::ostringstream os;
  os << " \"" << std::hex;
  for (const wchar_t c : wide) {
    if (c >= L' ' && c <= L'~') {
      os << static_cast<char>(c);
    } else {
      os << "\\x" << static_cast<unsigned long>(c) << ';';
    }
  }
  os << '"';
  return os.str();
}

/// Format a call for a message.
std::string shown(const std::string& name, const std::vector<Arg>& in, const std::wstring& wide) {
  std::ostringstream os;
  os << std::setprecision(17) << name << '(';
  for (std::size_t i = 0; i < in.size(); ++i) {
    os << (i == 0 ? "" : ", ") << in[i].value;
    if (in[i].scale != 0) {
      os << " of " << in[i].scale;
    }
  }
  os << ')' << (wide.empty() ? std::string() : quoted(wide));
  return os.str();
}

bool isEqual(const Arg& expected, double recorded) {
  return expected.value == recorded || std::abs(expected.value - recorded) <= 1e-12 * expected.scale;
}

bool isEqual(const std::vector<Arg>& expected, const std::vector<double>& recorded) {
  if (expected.size() != recorded.size()) {
    return false;
  }
  for (std::size_t i = 0; i < expected.size(); ++i) {
    if (!isEqual(expected[i], recorded[i])) {
      return false;
    }
  }
  return true;
}

std::string shown(const Record& record) {
  return record.type + " \"" + record.text + '"';
}

} // namespace

const Call& Replay::call(const char* name, const std::vector<Arg>& in, const std::wstring& wide) {
  const std::string place = text("call ", mCall, ": expected ", shown(name, in, wide), ", recorded ");
  if (mCall == mCalls.size()) {
    throw Contradiction(place + "nothing more");
  }
  const Call& recorded = mCalls[mCall];
  if (recorded.name != name || !isEqual(in, recorded.in) || recorded.text != wide) {
    throw Contradiction(place + shown(recorded.name, std::vector<Arg>(recorded.in.begin(), recorded.in.end()),
                                      recorded.text));
  }
  ++mCall;
  if (recorded.threw) {
    throw HostException();
  }
  return recorded;
}

void Replay::log(const char* type, const std::string& message) {
  if (!mIsLogged(type)) {
    return;
  }
  const std::string place = text("record ", mRecord, ": expected ", shown({type, message}), ", recorded ");
  if (mRecord == mRecords.size()) {
    throw Contradiction(place + "nothing more");
  }
  const Record& recorded = mRecords[mRecord];
  if (recorded.type != type || recorded.text != message) {
    throw Contradiction(place + shown(recorded));
  }
  ++mRecord;
}

void Replay::end() const {
  if (mCall != mCalls.size()) {
    const Call& left = mCalls[mCall];
    throw Contradiction(text("call ", mCall, ": expected nothing more, recorded ",
                             shown(left.name, std::vector<Arg>(left.in.begin(), left.in.end()), left.text)));
  }
  if (mRecord != mRecords.size()) {
    throw Contradiction(
        text("record ", mRecord, ": expected nothing more, recorded ", shown(mRecords[mRecord])));
  }
}

} // namespace model
