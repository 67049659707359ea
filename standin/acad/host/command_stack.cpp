#include "command_stack.h"

#include <windows.h>

#include <algorithm>
#include <vector>

#include "accmd.h"
#include "acedads.h"
#include "call_log.h"
#include "command_line.h"
#include "text.h"

namespace {

struct Command {
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
                               AcEdCommand**) override {
    const call_log::Call call("addCommand", group, globalName);
    if (call.mustFail())
      return Acad::eNotApplicable;
    if (!function || !*globalName)
      return Acad::eInvalidInput;
    if (find(group, globalName) != mCommands.end())
      return Acad::eDuplicateKey;
    mCommands.push_back({group, globalName, localName ? localName : globalName, function});
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

  std::vector<Command>::const_iterator find(const ACHAR* group, const ACHAR* globalName) const {
    return std::find_if(mCommands.begin(), mCommands.end(), [&](const Command& command) {
      return isSame(command.mGroup, group) && isSame(command.mGlobal, globalName);
    });
  }

  std::vector<Command> mCommands;
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

namespace host {

bool runRegisteredCommand(const std::wstring& name, bool isGlobal) {
  for (const Command& command : commandStack().mCommands) {
    if (!isSame(isGlobal ? command.mGlobal : command.mLocal, name))
      continue;
    const AcRxFunctionPtr function = command.mFunction; // the command may remove itself
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
