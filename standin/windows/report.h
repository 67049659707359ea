#ifndef OV_STANDIN_WINDOWS_REPORT_H
#define OV_STANDIN_WINDOWS_REPORT_H

#include "call_log.h"
#include "desktop.h"

/// Reports the calls to call_log.h. Internal to this library.
namespace desktop::detail {

using call_log::Hex;
using call_log::Quoted;

inline Hex visible(Hex value) {
  return value;
}
inline Quoted visible(Quoted value) {
  return value;
}
template <typename T> call_log::Shown<T> visible(T value) {
  return {value};
}

/// A call of Windows whose arguments all show in the journal.
class Call : public call_log::Call {
public:
  template <typename... In>
  explicit Call(const char* name, In... in) : call_log::Call(name, visible(in)...) {}
};

} // namespace desktop::detail

#endif
