#include <windows.h>

#include <cstdarg>
#include <cwchar>

#include "acedads.h"
#include "call_log.h"
#include "command_line.h"
#include "state.h"
#include "text.h"

int acedGetVar(const ACHAR* name, resbuf* result) {
  call_log::Call call("acedGetVar", name);
  if (!name || !result)
    return call.returns(RTERROR);
  const auto& variables = host::document().variables;
  const auto variable = variables.find(host::lowered(name));
  if (call.mustFail() || variable == variables.end())
    return call.returns(RTERROR, result->resval.rint);
  result->restype = RTSHORT;
  result->resval.rint = variable->second;
  return call.returns(RTNORM, result->resval.rint);
}

int acutPrintf(const ACHAR* format, ...) {
  constexpr size_t kMaxText = 1 << 16;
  const call_log::Entered standIn(call_log::Code::StandIn);
  std::wstring text(kMaxText, 0);
  va_list arguments;
  va_start(arguments, format);
  const int length = std::vswprintf(&text[0], text.size(), format, arguments);
  va_end(arguments);
  text.resize(length < 0 ? 0 : static_cast<size_t>(length));
  if (call_log::Call("acutPrintf", text).mustFail() || length < 0)
    return RTERROR;
  host::print(text);
  return RTNORM;
}

namespace host {

void setVariable(const std::string& name, short value) {
  document().variables[lowered(widen(name))] = value;
}

short variable(const std::string& name) {
  const auto& variables = document().variables;
  const auto found = variables.find(lowered(widen(name)));
  return found == variables.end() ? short{0} : found->second;
}

void removeVariable(const std::string& name) {
  document().variables.erase(lowered(widen(name)));
}

void setLayout(bool isOn) {
  setVariable("tilemode", isOn ? 0 : 1);
  setVariable("cvport", isOn ? 1 : 2);
}

bool isLayout() {
  return variable("tilemode") == 0 && variable("cvport") == 1;
}

} // namespace host
