#ifndef COMMAND_STACK_H
#define COMMAND_STACK_H

#include <string>

namespace host {

/// Runs the registered command of that name. Returns false if there is none. An exception of the command is
/// printed on the command line.
/// isGlobal  compares with the global names, otherwise with the local ones
bool runRegisteredCommand(const std::wstring& name, bool isGlobal);
/// Removes all registered commands.
void clearCommands();

} // namespace host

#endif
