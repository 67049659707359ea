#include "command_stack.h"

#include <windows.h>

#include <memory>
#include <vector>

#include "accmd.h"
#include "acedads.h"
#include "call_log.h"
#include "state.h"
#include "text.h"

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

} // namespace

AcRxDictionary* acrxSysRegistry() {
  static Registry* const registryP = new Registry;
  const call_log::Call call("acrxSysRegistry"); // there always is one
  return registryP;
}

// No application here lends functions to the command line, so none of them is ever called.

int acedDefun(const ACHAR* name, short) {
  return call_log::Call("acedDefun", name).mustFail() ? RTERROR : RTNORM;
}

int acedUndef(const ACHAR* name, short) {
  return call_log::Call("acedUndef", name).mustFail() ? RTERROR : RTNORM;
}

int acedRegFunc(int (*)(), int code) {
  return call_log::Call("acedRegFunc", call_log::shown(code)).mustFail() ? RTERROR : RTNORM;
}

int acedGetFunCode() {
  const call_log::Call call("acedGetFunCode");
  return RTERROR;
}

namespace host {

bool runRegisteredCommand(const std::wstring& name, bool isGlobal) {
  for (const auto& commandP : commandStack().mCommands) {
    if (!isSame(isGlobal ? commandP->mGlobal : commandP->mLocal, name))
      continue;
    const AcRxFunctionPtr function = commandP->mFunction; // the command may remove itself
    try {
      const call_log::Entered plugIn(call_log::Code::PlugIn);
      function();
    } catch (const std::exception& failure) {
      print(L"Error in " + name + L": " + widen(failure.what()) + L"\n");
    } catch (...) {
      print(L"Error in " + name + L"\n");
    }
    return true;
  }
  return false;
}

void clearCommands() {
  commandStack().mCommands.clear();
}

} // namespace host
