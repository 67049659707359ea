#ifndef OV_STANDIN_WINDOWS_REPORT_H
#define OV_STANDIN_WINDOWS_REPORT_H

#include "calls.h"
#include "desktop.h"

#include <sstream>

/// How the calls write themselves into the journal. Internal to this library.
namespace desktop::detail {

/// A number that is written in hexadecimal, at least so many digits.
struct Hex {
  std::uint64_t value;
  int digits = 1;
};

/// A text that is written in quotes, on one line.
struct Quoted {
  const wchar_t* text;
};

void write(std::ostream& os, Hex hex);
void write(std::ostream& os, Quoted quoted);
inline void write(std::ostream& os, HWND window) {
  os << number(window);
}
inline void write(std::ostream& os, const wchar_t*) = delete;
template <typename T> void write(std::ostream& os, T value) {
  os << value;
}

/// Reports one call with its arguments, separated by blanks; gives true if the call was told to fail.
template <typename... T> bool report(const char* operation, T... arguments) {
  if (!calls::isRecording())
    return calls::enter(operation);
  std::ostringstream os;
  [[maybe_unused]] const char* separator = "";
  ((os << separator, write(os, arguments), separator = " "), ...);
  return calls::enter(operation, os.str());
}

} // namespace desktop::detail

#endif
