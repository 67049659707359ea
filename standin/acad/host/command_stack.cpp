#include "command_stack.h"

#include <windows.h>

#include <algorithm>
#include <memory>
#include <vector>

#include "accmd.h"
#include "acedads.h"
#include "call_log.h"
#include "command_line.h"
#include "text.h"

namespace {

class Command : public AcEdCommand {
public:
  const ACHAR* globalName() const override { return mGlobal.c_str(); }
  const ACHAR* localName() const override { return mLocal.c_str(); }

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
    if (find(group, globalName) != mCommands.end())
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
    const auto command = find(group, globalName);
    if (command == mCommands.end())
      return Acad::eKeyNotFound;
    mCommands.erase(command);
    return Acad::eOk;
  }

  std::vector<std::unique_ptr<Command>>::const_iterator find(const ACHAR* group,
                                                             const ACHAR* globalName) const {
    return std::find_if(mCommands.begin(), mCommands.end(), [&](const auto& commandP) {
      return isSame(commandP->mGroup, group) && isSame(commandP->mGlobal, globalName);
    });
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
  const call_log::Call call("acrxSysRegistry"); // never fails
  return registryP;
}

// No application here defines functions for the command line, so none is ever called.

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
