#include "command_table.h"

#include <string>

#include "auto_cad_proxy.h"
#include "util.h"

namespace {

constexpr ACHAR kGroup[] = L"OVGroup";
constexpr int kLongestLocalName = 132; // characters of a string resource

void print(const char* text, bool isOn) {
  // The text ends in a blank and the word begins with one.
  const std::string line = std::string(text) + (isOn ? " on" : " off");
  acutPrintf(L"%ls", Util::toWide(line).c_str());
}

void toggleRotationCenter() {
  if (gAutoCadProxyP)
    print("\n=> Selection as Rotation Center: ", gAutoCadProxyP->toggleRotationCenter());
}

void toggleRotationAxis() {
  if (gAutoCadProxyP)
    print("\n=> Selected Line as Rotation Axis: ", gAutoCadProxyP->toggleRotationAxis());
}

void toggleScrollMode() {
  if (gAutoCadProxyP)
    print("\n=> Scroll Trees and Lists: ", gAutoCadProxyP->toggleScrollMode());
}

void toggleObjectMoveMode() {
  if (!gAutoCadProxyP)
    return;
  bool& isOn = gAutoCadProxyP->mObjectMoveMode;
  isOn = !isOn;
  print("\n=> Move Selected Object: ", isOn);
}

template <void (*command)()> void guarded() {
  try {
    command();
  } catch (...) { // nothing of ours may reach the host
  }
}

constexpr CommandEntry entry(const ACHAR* name, AcRxFunctionPtr function) {
  return {kGroup, name, name, 0, function, nullptr, 0};
}

constexpr CommandEntry kCommands[] = {
    entry(L"OV_Toggle_Rotation_Center", guarded<toggleRotationCenter>),
    entry(L"OV_Toggle_Rotation_Axis", guarded<toggleRotationAxis>),
    entry(L"OV_Toggle_Scroll_Mode", guarded<toggleScrollMode>),
    entry(L"OV_Toggle_Object_Move_Mode", guarded<toggleObjectMoveMode>),
};

/// Null if the host has no command stack.
AcEdCommandStack* commandStack() {
  AcRxObject* const objectP = acrxSysRegistry()->at(L"ACAD_REGISTERED_COMMANDS");
  if (!objectP || !objectP->isA()->isDerivedFrom(AcEdCommandStack::desc()))
    return nullptr;
  return static_cast<AcEdCommandStack*>(objectP);
}

/// An exception of the host for one command doesn't stop the others.
template <class Action> void forEachCommand(Action action) {
  for (const CommandEntry& command : kCommands) {
    try {
      if (AcEdCommandStack* const stackP = commandStack())
        action(*stackP, command);
    } catch (...) {
    }
  }
}

} // namespace

void addCommands(HINSTANCE module) {
  forEachCommand([module](AcEdCommandStack& stack, const CommandEntry& command) {
    ACHAR resourceName[kLongestLocalName + 1] = {};
    if (!command.localName)
      LoadStringW(module, command.stringId, resourceName, kLongestLocalName + 1);
    stack.addCommand(command.group, command.globalName, command.localName ? command.localName : resourceName,
                     command.flags, command.function, command.context, -1, module, nullptr);
  });
}

void removeCommands() {
  forEachCommand([](AcEdCommandStack& stack, const CommandEntry& command) {
    stack.removeCmd(command.group, command.globalName);
  });
}
