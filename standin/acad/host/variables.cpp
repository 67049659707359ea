#include <windows.h>

#include <cstdarg>
#include <cwchar>

#include "acedads.h"
#include "state.h"

namespace {

/// Without the library's tables: each motion sample asks for names.
bool isSameName(const ACHAR* given, const std::wstring& lowerName) {
  for (const wchar_t c : lowerName) {
    const wchar_t g = *given++;
    if (g != c && !(g >= L'A' && g <= L'Z' && g - L'A' + L'a' == c))
      return false;
  }
  return *given == 0;
}

host::Variable* findVariable(const ACHAR* name) {
  for (host::Variable& variable : host::document().variables)
    if (isSameName(name, variable.name))
      return &variable;
  return nullptr;
}

/// The compilers' libraries disagree on what %s means to a wide printf; %ls means a wide string to all.
std::wstring withWideStrings(const ACHAR* format) {
  std::wstring result;
  for (const ACHAR* p = format; *p; ++p) {
    result += *p;
    if (*p != L'%')
      continue;
    for (++p; *p && std::wcschr(L"-+ #0123456789.*", *p); ++p)
      result += *p;
    if (*p == L's' || *p == L'c')
      result += L'l';
    if (!*p)
      break;
    result += *p;
  }
  return result;
}

} // namespace

int acedGetVar(const ACHAR* name, resbuf* result) {
  call_log::Call call("acedGetVar", name);
  const host::Variable* const variableP = name && !call.mustFail() ? findVariable(name) : nullptr;
  if (!result)
    return call.returns(RTERROR);
  if (!variableP)
    return call.returns(RTERROR, result->resval.rint);
  result->restype = RTSHORT;
  result->resval.rint = variableP->value;
  return call.returns(RTNORM, result->resval.rint);
}

int acutPrintf(const ACHAR* format, ...) {
  constexpr size_t kMaxText = 1 << 16;
  const call_log::Entered standIn(call_log::Code::StandIn);
  const std::wstring wideFormat = withWideStrings(format);
  std::wstring text(256, 0);
  int length = -1;
  while (length < 0 && text.size() <= kMaxText) {
    va_list arguments;
    va_start(arguments, format);
    length = std::vswprintf(&text[0], text.size(), wideFormat.c_str(), arguments);
    va_end(arguments);
    // Too long a text gives -1 in some libraries, and in others the length that it would have had.
    if (length >= static_cast<int>(text.size()))
      length = -1;
    if (length < 0)
      text.resize(text.size() * 2);
  }
  text.resize(length < 0 ? 0 : static_cast<size_t>(length));
  if (call_log::Call("acutPrintf", text).mustFail() || length < 0)
    return RTERROR;
  host::print(text);
  return RTNORM;
}

namespace host {

void setVariable(const std::string& name, short value) {
  const std::wstring key = lowered(widen(name));
  if (Variable* const variableP = findVariable(key.c_str()))
    variableP->value = value;
  else
    document().variables.push_back({key, value});
}

short variable(const std::string& name) {
  return variableValue(widen(name).c_str());
}

short variableValue(const ACHAR* name) {
  const Variable* const variableP = findVariable(name);
  return variableP ? variableP->value : static_cast<short>(0);
}

void removeVariable(const std::string& name) {
  auto& variables = document().variables;
  for (size_t i = 0; i < variables.size(); ++i)
    if (isSameName(widen(name).c_str(), variables[i].name)) {
      variables.erase(variables.begin() + static_cast<std::ptrdiff_t>(i));
      return;
    }
}

void setLayout(bool isOn) {
  setVariable("tilemode", isOn ? 0 : 1);
  setVariable("cvport", isOn ? 1 : 2);
}

bool isLayout() {
  return variableValue(L"tilemode") == 0 && variableValue(L"cvport") == 1;
}

} // namespace host
