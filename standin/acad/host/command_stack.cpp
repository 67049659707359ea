#include "command_stack.h"

#include <windows.h>

#include <map>
#include <memory>
#include <vector>

#include "accmd.h"
#include "acedads.h"
#include "state.h"

namespace {

class Command : public AcEdCommand {
public:
  const ACHAR* globalName() const override { return mGlobal.c_str(); }
  const ACHAR* localName() const override { return mLocal.c_str(); }
  AcRxFunctionPtr functionAddr() const override { return mFunction; }

  std::wstring mGroup;
  std::wstring mGlobal;
  std::wstring mLocal;
  AcRxFunctionPtr mFunction = nullptr;
};

bool isSame(const std::wstring& a, const std::wstring& b) {
  return host::lowered(a) == host::lowered(b);
}

class CommandStack : public AcEdCommandStack {
public:
  Acad::ErrorStatus addCommand(const ACHAR* group, const ACHAR* globalName, const ACHAR* localName,
                               Adesk::Int32, AcRxFunctionPtr function, AcEdUIContext*, int, HINSTANCE,
                               AcEdCommand** out) override {
    const call_log::Call call("addCommand", group, globalName);
    if (call.mustFail())
      return Acad::eNotApplicable;
    if (!function || !*globalName)
      return Acad::eInvalidInput;
    if (find(group, globalName) != mCommands.size())
      return Acad::eDuplicateKey;
    auto command = std::make_unique<Command>();
    command->mGroup = group;
    command->mGlobal = globalName;
    command->mLocal = localName ? localName : globalName;
    command->mFunction = function;
    if (out)
      *out = command.get();
    mCommands.push_back(std::move(command));
    return Acad::eOk;
  }

  Acad::ErrorStatus removeCmd(const ACHAR* group, const ACHAR* globalName) override {
    const call_log::Call call("removeCmd", group, globalName);
    if (call.mustFail())
      return Acad::eNotApplicable;
    const size_t place = find(group, globalName);
    if (place == mCommands.size())
      return Acad::eKeyNotFound;
    mCommands.erase(mCommands.begin() + static_cast<std::ptrdiff_t>(place));
    return Acad::eOk;
  }

  size_t find(const ACHAR* group, const ACHAR* globalName) const {
    size_t i = 0;
    while (i < mCommands.size() &&
           !(isSame(mCommands[i]->mGroup, group) && isSame(mCommands[i]->mGlobal, globalName)))
      ++i;
    return i;
  }

  std::vector<std::unique_ptr<Command>> mCommands;
};

CommandStack& commandStack() {
  static CommandStack* const stackP = new CommandStack; // see host::state()
  return *stackP;
}

class Linker : public AcRxDynamicLinker {
public:
  bool unlockApplication(void*) override { return !call_log::Call("unlockApplication").mustFail(); }
  bool registerAppMDIAware(void*) override { return !call_log::Call("registerAppMDIAware").mustFail(); }
};

class Registry : public AcRxDictionary {
public:
  AcRxObject* at(const ACHAR* name) const override {
    static Linker* const linkerP = new Linker;
    const call_log::Call call("at", name);
    if (call.mustFail())
      return nullptr;
    if (name == std::wstring(L"DynamicLinker"))
      return linkerP;
    if (name == std::wstring(L"ACAD_REGISTERED_COMMANDS"))
      return &commandStack();
    return nullptr;
  }
};

/// The functions that applications lend to the command line.
struct DefinedFunctions {
  std::map<std::wstring, int> codes; // by name in lower case
  std::map<int, int (*)()> functions;
  int current = RTERROR; // the code that is called now
};

DefinedFunctions& definedFunctions() {
  static DefinedFunctions* const functionsP = new DefinedFunctions;
  return *functionsP;
}

} // namespace

AcRxDictionary* acrxSysRegistry() {
  static Registry* const registryP = new Registry;
  const call_log::Call call("acrxSysRegistry"); // there always is one
  return registryP;
}

void acrxBuildClassHierarchy() {
  const call_log::Call call("acrxBuildClassHierarchy");
}

int acedDefun(const ACHAR* name, short code) {
  if (call_log::Call("acedDefun", name).mustFail())
    return RTERROR;
  definedFunctions().codes[host::lowered(name)] = code;
  return RTNORM;
}

int acedUndef(const ACHAR* name, short code) {
  if (call_log::Call("acedUndef", name).mustFail())
    return RTERROR;
  DefinedFunctions& f = definedFunctions();
  f.functions.erase(code);
  return f.codes.erase(host::lowered(name)) == 1 ? RTNORM : RTERROR;
}

int acedRegFunc(int (*function)(), int code) {
  if (call_log::Call("acedRegFunc", call_log::shown(code)).mustFail())
    return RTERROR;
  definedFunctions().functions[code] = function;
  return RTNORM;
}

int acedGetFunCode() {
  return call_log::Call("acedGetFunCode").mustFail() ? RTERROR : definedFunctions().current;
}

int acedRetVoid() {
  return call_log::Call("acedRetVoid").mustFail() ? RTERROR : RTNORM;
}

namespace host {

namespace {

template <class Function> void runGuarded(const std::wstring& name, Function function) {
  try {
    const call_log::Entered plugIn(call_log::Code::PlugIn);
    function();
  } catch (const std::exception& failure) {
    print(L"Error in " + name + L": " + widen(failure.what()) + L"\n");
  } catch (...) {
    print(L"Error in " + name + L"\n");
  }
}

} // namespace

bool runRegisteredCommand(const std::wstring& name, bool isGlobal) {
  for (const auto& commandP : commandStack().mCommands) {
    if (!isSame(isGlobal ? commandP->mGlobal : commandP->mLocal, name))
      continue;
    const AcRxFunctionPtr function = commandP->mFunction; // the command may remove itself
    runGuarded(name, [function] { function(); });
    return true;
  }
  return false;
}

bool callDefinedFunction(const std::wstring& name) {
  DefinedFunctions& f = definedFunctions();
  const auto code = f.codes.find(lowered(name));
  if (code == f.codes.end() || f.functions.count(code->second) == 0)
    return false;
  f.current = code->second;
  const auto function = f.functions[code->second];
  runGuarded(name, [function] { function(); });
  f.current = RTERROR;
  return true;
}

void clearCommands() {
  commandStack().mCommands.clear();
  definedFunctions().codes.clear();
  definedFunctions().functions.clear();
}

} // namespace host
