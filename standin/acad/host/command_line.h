#ifndef COMMAND_LINE_H
#define COMMAND_LINE_H

#include <string>

namespace host {

/// Prints a text on the command line.
void print(const std::wstring& text);
/// Cancels what runs, and empties queue and history.
void clearCommandLine();

} // namespace host

#endif
