#ifndef RECORDED_CALL_H
#define RECORDED_CALL_H

#include <cstdint>
#include <string>
#include <vector>

namespace call_log {

/// One call that was made: its name, arguments, and result.
/// in    arguments, out the result and what the call wrote, both as model/calls.md lists them; pointers and
///       handles are identities, 0 for null
/// threw true: the call ended in an exception; out is empty then
/// order counts entries and ends of all threads: the call's own place, and in `entered` that of its entry
struct RecordedCall {
  std::string name;
  std::vector<double> in;
  std::wstring text;
  std::vector<double> out;
  std::wstring outText;
  bool threw = false;
  std::int64_t entered = 0, order = 0;
};

} // namespace call_log

#endif
