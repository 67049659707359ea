#ifndef COMMANDS_H
#define COMMANDS_H

#include <functional>
#include <string>

namespace host {

/// One of the host's own commands while it waits for its inputs. Takes what was typed up to a blank or Enter, empty
/// for a bare Enter. Returns true if it goes on.
using RunningCommand = std::function<bool(const std::wstring& input)>;

/// Runs a command that takes no input, by its name in lower case and without marks. Returns false if there is none.
bool runCommand(const std::wstring& name);
/// Returns the command of such a name that takes input, an empty function if there is none.
RunningCommand makeCommand(const std::wstring& name);

} // namespace host

#endif
