#ifndef MODEL_REPLAY_H
#define MODEL_REPLAY_H

#include <cstddef>
#include <functional>
#include <locale>
#include <set>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "recorded_call.h"

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

/// One log record of the main thread: "ERR", "INF", ... and the text.
struct Record {
  std::string type, text;
};

/// The plug-in did something else than the model.
struct Contradiction : std::runtime_error {
  using std::runtime_error::runtime_error;
};

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
  operator double() const { return value; }
  double value, scale = 0;
};

/// Plays recorded calls and records back to the model, in order.
class Replay {
public:
  /// isLogged  returns whether records of a type ("INF") reach the log; others are expected nowhere
  Replay(const std::vector<Call>& calls, const std::vector<Record>& records,
         const std::function<bool(const std::string& type)>& isLogged)
      : mCalls(calls), mRecords(records), mIsLogged(isLogged) {}

  /// Takes the next recorded call, which has to have this name and these arguments, and returns it. Throws
  /// Contradiction if it differs, HostException if the recorded call threw.
  const Call& call(const char* name, const std::vector<Arg>& in = {}, const std::wstring& text = {});
  /// Takes the next record, which has to be this one; nothing if records of the type don't reach the log.
  void log(const char* type, const std::string& text);
  /// Returns the name of the next recorded call, empty at the end.
  std::string next() const { return mCall < mCalls.size() ? mCalls[mCall].name : std::string(); }
  /// Returns the number of calls taken.
  std::size_t position() const { return mCall; }
  /// Throws Contradiction if a call or a record is left.
  void end() const;

private:
  const std::vector<Call>& mCalls;
  const std::vector<Record>& mRecords;
  std::function<bool(const std::string& type)> mIsLogged;
  std::size_t mCall = 0, mRecord = 0;
};

/// The values of the settings file, and the toggles as they are now.
struct Settings {
  int traSensBase = 20000, rotSensBase = 10000, maxContMoveTime = 500, minThreshold = 0;
  bool useInt3dIntrfce = false, toggleRotationCenter = true, toggleRotationAxis = false;
  bool scrollTreeAndList = true, objectMoveMode = false;
  std::set<std::string> loggedTypes; // empty: nothing is known of the log, and no record is compared
};

/// What a menu file holds, with values as Cnfg delivers them.
struct MenuFile {
  std::string path;
  std::vector<std::string> modes, values;
};

/// What the model asks for. The event state, which other threads write, may differ from one question to the
/// next.
class Inputs {
public:
  virtual ~Inputs() = default;

  virtual const Settings& settings() = 0;
  virtual short axis(int index) = 0; // 0 to 5: X, Y, Z, A, B, C
  virtual int pendingKey() = 0;
  virtual int pendingSpecial() = 0;
  virtual int rotMode() = 0;
  virtual bool keepHorizon() = 0;
  virtual bool hoverMode() = 0;
  virtual bool zoomAllAfterView() = 0;
  // The engine empties a slot.
  virtual void keyServed() = 0;
  virtual void specialServed() = 0;
  /// Returns the menu file at a tick, while it isn't loaded; null if it can't be opened.
  virtual const MenuFile* menuFile() = 0;
};

} // namespace model

#endif
