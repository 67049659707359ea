#ifndef RECORDED_CALL_H
#define RECORDED_CALL_H

#include <cstdint>
#include <string>
#include <vector>

namespace call_log {

/// One call that was made: its name, arguments, and result.
/// in       arguments; as in model/calls.md, pointers and handles as numbers, 0 for null
/// out      the result and what the call wrote, likewise
/// threw    true: the call ended in an exception; out is empty then
/// entered  place of the call's entry in the order of the entries and ends of all threads
/// order    place of its end
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
