#ifndef CALL_LOG_H
#define CALL_LOG_H

#include <atomic>
#include <cstdint>
#include <exception>
#include <functional>
#include <sstream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

#include "recorded_call.h"

/// What is called in the stand-ins: a journal in text, a trace with all numbers, and the faults that tests
/// order.
///
/// Each operation of a stand-in makes a Call before it does anything else. With no recording, count, trace or
/// ordered fault, that costs one relaxed load. Everything here may be called from any thread.
namespace call_log {

/// What an operation throws when a test has ordered that.
class InjectedFault : public std::runtime_error {
public:
  using std::runtime_error::runtime_error;
};

/// Whose code a thread is in.
enum class Code { PlugIn, StandIn };
/// Returns the calling thread's. Kept up to date only during a recording, a count or a trace, or while a fault is
/// ordered.
Code currentCode();

/// One call of the trace, or the entry into one. Entries are recorded of brackets and of calls outside of brackets;
/// their order and `entered` are equal.
struct Record : RecordedCall {
  int thread = 0;           // counted from 1
  double seconds = 0;       // at the entry, unix time
  bool isBracketed = false; // made directly in a bracket
  bool isBracket = false;   // the bracket itself
  std::string note;         // at the end of a bracket: what noteBrackets() asked for
  bool isEntry() const { return entered == order; }
};

namespace detail {

extern std::atomic<bool> gIsActive;
/// Returns the one before.
Code setCurrentCode(Code code);
/// Writes the journal's line. Returns whether the call must fail; throws InjectedFault if it must throw.
bool enterActive(const char* operation, const std::string& arguments);
/// Returns the record of a call that begins now, null if it isn't wanted. Sets isEntered if endCall() has to be
/// called.
Record* beginCall(const char* name, bool& isEntered);
/// The record's arguments are complete.
void enterCall(const Record& record);
void endCall(Record* record, bool threw);
bool openBracket(const char* name);
void closeBracket();

template <class Number, std::enable_if_t<std::is_arithmetic_v<Number> || std::is_enum_v<Number>, int> = 0>
void append(std::vector<double>& numbers, std::wstring&, Number value) {
  numbers.push_back(static_cast<double>(value));
}
inline void append(std::vector<double>& numbers, std::wstring&, const void* handle) {
  numbers.push_back(static_cast<double>(reinterpret_cast<std::uintptr_t>(handle)));
}
inline void append(std::vector<double>&, std::wstring& text, std::wstring_view value) {
  text = value;
}
inline void append(std::vector<double>& numbers, std::wstring& text, const wchar_t* value) {
  append(numbers, text, std::wstring_view(value ? value : L""));
}

} // namespace detail

/// An argument that the journal shows after the operation's name.
template <class Value> struct Shown { Value value; };
template <class Value> Shown<Value> shown(Value value) {
  return {value};
}
/// A number that the journal shows in hexadecimal, with at least that number of digits.
struct Hex {
  std::uint64_t value;
  int digits = 1;
};
/// A number that the journal shows as a word.
struct Word {
  double value;
  const char* word;
};
/// A text that the journal shows in quotes.
struct Quoted {
  const wchar_t* value;
};

/// Returns a text on one line, byte by byte: a line feed as \n, Escape as \e, characters above 0xFF as question
/// marks.
std::string escaped(std::wstring_view text);

namespace detail {

/// Of an argument with a format for the journal, the trace takes the value only.
template <class Argument>
auto append(std::vector<double>& numbers, std::wstring& text, const Argument& argument)
    -> decltype(static_cast<void>(argument.value)) {
  append(numbers, text, argument.value);
}

/// Nothing, for what the journal doesn't show.
template <class Value> void show(std::ostream&, const Value&) {}
template <class Value> void show(std::ostream& os, const Shown<Value>& argument) {
  if constexpr (std::is_pointer_v<Value>)
    os << ' ' << reinterpret_cast<std::uintptr_t>(argument.value);
  else if constexpr (std::is_enum_v<Value>)
    os << ' ' << static_cast<long long>(argument.value);
  else if constexpr (std::is_arithmetic_v<Value>)
    os << ' ' << argument.value;
  else
    show(os, argument.value);
}
void show(std::ostream& os, Hex argument);
void show(std::ostream& os, Word argument);
void show(std::ostream& os, Quoted argument);
void show(std::ostream& os, std::wstring_view text);
inline void show(std::ostream& os, const wchar_t* text) {
  show(os, std::wstring_view(text ? text : L""));
}

} // namespace detail

/// Marks the calling thread as in other code while the object lives. Calls and brackets hold one.
class Entered {
public:
  explicit Entered(Code code)
      : mIsActive(detail::gIsActive.load(std::memory_order_relaxed)),
        mBefore(mIsActive ? detail::setCurrentCode(code) : code) {}
  ~Entered() {
    if (mIsActive)
      detail::setCurrentCode(mBefore);
  }
  Entered(const Entered&) = delete;
  Entered& operator=(const Entered&) = delete;

private:
  bool mIsActive;
  Code mBefore;
};

/// A call that only the trace knows, from its construction to its destruction.
class Traced {
public:
  /// name  of the operation, as in "acedSSGet"
  /// in    its arguments: numbers, enumerators, pointers, text. Other types come with a function
  ///       append(std::vector<double>&, std::wstring&, const Type&) beside them.
  template <class... In> explicit Traced(const char* name, const In&... in) {
    using detail::append;
    if (detail::gIsActive.load(std::memory_order_relaxed))
      mRecordP = detail::beginCall(name, mIsEntered);
    if (mRecordP) {
      (append(mRecordP->in, mRecordP->text, in), ...);
      detail::enterCall(*mRecordP);
    }
  }
  ~Traced() {
    if (mIsEntered)
      detail::endCall(mRecordP, std::uncaught_exceptions() > mExceptions);
  }
  Traced(const Traced&) = delete;
  Traced& operator=(const Traced&) = delete;

  /// Records result and outputs, and returns the result. A text goes to outText.
  template <class Result, class... Out> Result returns(Result result, const Out&... out) {
    using detail::append;
    if (mRecordP) {
      append(mRecordP->out, mRecordP->outText, result);
      (append(mRecordP->out, mRecordP->outText, out), ...);
    }
    return result;
  }

private:
  const Entered mEntered{Code::StandIn};
  Record* mRecordP = nullptr;
  bool mIsEntered = false;
  // Counted here and not in trace.cpp: on Windows each program and library counts its own exceptions.
  int mExceptions = std::uncaught_exceptions();
};

/// A call that the journal shows as well, and that tests can make fail.
class Call : public Traced {
public:
  /// Throws InjectedFault if a test has ordered that.
  template <class... In>
  explicit Call(const char* name, const In&... in) : Traced(name, in...), mMustFail(report(name, in...)) {}
  /// Returns whether the operation must do nothing and return its failure value, if it has one.
  bool mustFail() const { return mMustFail; }

  /// Writes the journal's line and returns whether the call must fail, without a record in the trace.
  template <class... In> static bool report(const char* name, const In&... in) {
    if (!detail::gIsActive.load(std::memory_order_relaxed))
      return false;
    const Entered standIn(Code::StandIn);
    using detail::show;
    std::ostringstream os;
    (show(os, in), ...);
    return detail::enterActive(name, os.str());
  }

private:
  const bool mMustFail;
};

/// Encloses a callback of the plug-in. The trace marks the calls that are made directly in it. What those call in
/// turn, and what a callback inside them calls, isn't in the trace.
class Bracket {
public:
  explicit Bracket(const char* name)
      : mIsOpen(detail::gIsActive.load(std::memory_order_relaxed) && detail::openBracket(name)) {}
  ~Bracket() {
    if (mIsOpen)
      detail::closeBracket();
  }
  Bracket(const Bracket&) = delete;
  Bracket& operator=(const Bracket&) = delete;

private:
  bool mIsOpen;
  const Entered mEntered{Code::PlugIn}; // once the trace has noted the bracket
};

/// Hands the trace to the sink from now on, record by record in their order, on a thread of its own. Up to some
/// thousand records wait for that thread; a call waits while there are more. Ends a trace that was on.
void startTrace(std::function<void(Record&&)> sink);
/// Takes a place in the order of entries and ends, for what isn't a call: the moment of a frame, say.
std::int64_t takeOrder();
/// Waits until the sink has received all that was recorded up to now.
void flushTrace();
/// Ends the trace when the sink has received all of it.
void stopTrace();
/// From now on a bracket's record holds what this returns at its end. It is called at the beginning as well, with
/// false. On the bracket's thread.
void noteBrackets(std::function<std::string(bool isEnd)> note);

/// Starts a new, empty journal.
void startRecording();
/// Ends the journal and returns its lines, each "operation arguments".
std::vector<std::string> stopRecording();

/// The n-th call of that operation from now on (1 is the next one) fails or throws, and the next times - 1
/// after it.
/// operation  empty: any
void failAt(const std::string& operation, std::int64_t nth, int times = 1);
void throwAt(const std::string& operation, std::int64_t nth, int times = 1);
/// Counts the calls from now on; count() returns their number.
void startCounting();
std::int64_t count();
/// Returns the operation at which the last fault struck; empty if none has since the last clear().
std::string lastFault();

/// Cancels all ordered faults and ends recording and counting; a trace goes on.
void clear();

} // namespace call_log

#endif
