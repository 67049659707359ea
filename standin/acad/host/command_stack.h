#ifndef COMMAND_STACK_H
#define COMMAND_STACK_H

#include <string>

namespace host {

/// Runs the registered command of that name: the global name if isGlobal, else the local one. False if there
/// is none. What a command throws ends here, with a line on the command line.
bool runRegisteredCommand(const std::wstring& name, bool isGlobal);

} // namespace host

#endif
