// Keys that the user has bound to menu items: the item's macro is typed at the command line, line by line.
// Without a menu file there are no macros, and each key logs "keyEvent ... too big".

#include "auto_cad_proxy.h"

#include <algorithm>

#include "logging.h"
#include "util.h"

namespace {

constexpr wchar_t kCancel[] = L"\x1B\x1B"; // cancels what runs in the host

/// One line of input for one token of a macro.
std::wstring inputFor(const std::string& token) {
  // The menu reader writes its file in the system's code page.
  const std::wstring wide = Util::toWideByCodePage(token);
  if (token.compare(0, 2, "M=") == 0)
    return L"(command (menucmd \"" + wide + L"\"))\n";
  return wide + L"\n";
}

} // namespace

void AutoCadProxy::execApplFunction(int keyEvent) {
  AcApDocManager& manager = documentManager();
  AcApDocument* const documentP = manager.curDocument();
  const auto count = static_cast<int>(mMenuEntries.size());
  if (keyEvent >= count) {
    OV_LOG(ERR, "AutoCadProxy", "AutoCadProxy::execApplFunction",
           "keyEvent (" << keyEvent << "') too big (max. is " << count - 1 << ")!");
    return;
  }
  const std::string macro = mMenuEntries[static_cast<std::size_t>(keyEvent)];
  if (macro.empty())
    return;
  manager.sendStringToExecute(documentP, kCancel, true, false, true);
  // Text after the last ";" is a token only if it isn't empty, so a macro that ends in ";" sends no Enter for
  // it.
  std::size_t start = 0;
  while (start < macro.size()) {
    const std::size_t end = (std::min)(macro.find(';', start), macro.size());
    manager.sendStringToExecute(documentP, inputFor(macro.substr(start, end - start)).c_str(), true, false,
                                true);
    start = end + 1;
  }
}
