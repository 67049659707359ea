#ifndef COMMAND_TABLE_H
#define COMMAND_TABLE_H

#include <arxHeaders.h>

/// One command of the plug-in, as the host registers it.
struct CommandEntry {
  const ACHAR* group;
  const ACHAR* globalName;
  const ACHAR* localName; // null: taken from the string resource of stringId
  Adesk::Int32 flags;
  AcRxFunctionPtr function;
  AcEdUIContext* context;
  UINT stringId;
};

/// Adds the four toggle commands to the host's command stack, as far as the host accepts them. Throws
/// nothing.
/// module  the plug-in's own library
void addCommands(HINSTANCE module);
/// Removes them. Throws nothing.
void removeCommands();

#endif
