#ifndef COMMANDS_H
#define COMMANDS_H

#include <memory>
#include <string>

namespace host {

/// One of the host's own commands while it waits for its inputs.
class RunningCommand {
public:
  enum Progress { kGoesOn, kIsOver };
  virtual ~RunningCommand() = default;
  /// Does what needs no input.
  virtual Progress begin() { return kGoesOn; }
  /// Takes what was typed up to a blank or Enter; empty for a bare Enter.
  virtual Progress take(const std::wstring& input) = 0;
};

/// Returns the command of a name in lower case and without marks, null if the host has none.
std::unique_ptr<RunningCommand> makeCommand(const std::wstring& name);

} // namespace host

#endif
