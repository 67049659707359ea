#ifndef MODEL_REPLAY_H
#define MODEL_REPLAY_H

#include "recorded_call.h"

#include <locale>
#include <set>
#include <sstream>
#include <stdexcept>

namespace model {

/// One recorded call of the plug-in into the host or into Windows.
using Call = call_log::RecordedCall;

/// Joins the parts, with numbers as a fresh stream of the "C" locale writes them.
template <typename... Parts> std::string text(const Parts&... parts) {
  std::ostringstream os;
  os.imbue(std::locale::classic());
  (os << ... << parts);
  return os.str();
}

/// The plug-in did something other than the model.
using Contradiction = std::runtime_error;

/// Thrown by Replay::call where the recorded call ended in an exception of the host.
struct HostException {};

/// Returns one number of a call's result.
inline double out(const Call& call, std::size_t index) {
  if (index >= call.out.size())
    throw Contradiction(text(call.name, ": result ", index, " isn't recorded"));
  return call.out[index];
}

/// A real argument, and the largest magnitude of the operands that it was computed from: reals are equal if
/// they differ by no more than 1e-12 of that.
struct Arg {
  Arg(double exact) : value(exact) {}
  Arg(double computed, double largestOperand) : value(computed), scale(largestOperand) {}
  double value, scale = 0;
};
using Args = std::vector<Arg>;

/// Plays recorded calls and records back to the model, in order.
class Replay {
public:
  /// records      of the main thread, as in "INF Cap moving."
  /// loggedTypes  types of the records that reach the log, as "INF"; no others are expected
  Replay(const std::vector<Call>& calls, const std::vector<std::string>& records,
         const std::set<std::string>& loggedTypes)
      : mCalls(calls), mRecords(records), mLoggedTypes(loggedTypes) {}

  /// Takes the next recorded call, which has to have this name and these arguments, and returns it. Throws
  /// Contradiction if it differs, HostException if the recorded call threw.
  const Call& call(const char* name, const Args& in = {}, const std::wstring& text = {});
  /// Takes the next record, which has to be this one. Does nothing if the type doesn't reach the log.
  void log(const std::string& type, const std::string& text);
  /// Returns the name of the next recorded call, empty at the end.
  std::string next() const { return mCall < mCalls.size() ? mCalls[mCall].name : std::string(); }
  /// Returns the number of calls taken.
  std::size_t position() const { return mCall; }
  /// Throws Contradiction if a call or a record is left.
  void end() const;

private:
  [[noreturn]] void contradict(const std::string& expected) const;

  const std::vector<Call>& mCalls;
  const std::vector<std::string>& mRecords;
  const std::set<std::string>& mLoggedTypes;
  std::size_t mCall = 0, mRecord = 0;
};

} // namespace model

#endif
