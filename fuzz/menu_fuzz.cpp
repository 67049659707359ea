// The menu file: modes and macros are those that plain rules find; each key types its macro, cut at ";".
//
// Input: the file.

#include <algorithm>

#include "call_log.h"
#include "check.h"
#include "engine_home.h"
#include "engine_rig.h"
#include "plain_config.h"

using fuzz::PlainConfig;
using fuzz::require;
using fuzz::requireSame;

namespace {

constexpr int kMaxKeys = 4; // that are pressed

std::vector<std::string> plainMacros(const PlainConfig& config) {
  std::vector<std::string> macros;
  for (const auto& parameter : config.parametersOf("MenuBar")) {
    const std::string& value = parameter.second;
    const std::size_t brace = value.find('}');
    if (brace == std::string::npos || brace == value.size() - 1)
      continue;
    const std::string behind = value.substr(brace + 1);
    macros.push_back(behind.substr(0, behind.find('|')));
  }
  return macros;
}

std::vector<std::string> plainTokens(const std::string& macro) {
  std::vector<std::string> tokens(1);
  for (const char c : macro) {
    if (c == ';')
      tokens.emplace_back();
    else
      tokens.back() += c;
  }
  if (tokens.back().empty())
    tokens.pop_back(); // nothing behind the last ";"
  return tokens;
}

/// Texts as they should reach the host, in its journal's way.
std::vector<std::string> expectedTexts(const std::string& macro) {
  if (macro.empty())
    return {};
  std::vector<std::wstring> texts = {L"\x1B\x1B"};
  for (const std::string& token : plainTokens(macro)) {
    std::wstring wide;
    for (const char c : token)
      wide += static_cast<wchar_t>(static_cast<unsigned char>(c)); // the code page here
    texts.push_back(token.substr(0, 2) == "M=" ? L"(command (menucmd \"" + wide + L"\"))\n" : wide + L"\n");
  }
  AcApDocManager* const managerP = acDocManagerPtr();
  call_log::startRecording();
  for (const std::wstring& text : texts)
    managerP->sendStringToExecute(managerP->curDocument(), text.c_str(), true, false, true);
  return call_log::stopRecording();
}

/// The texts alone: a macro is also a question for document and manager.
std::vector<std::string> sent(const std::vector<std::string>& journal) {
  std::vector<std::string> found;
  for (const std::string& line : journal)
    if (line.rfind("sendStringToExecute", 0) == 0)
      found.push_back(line);
  return found;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  OvAutoCad& plugin = fuzz::freshEngine();
  AutoCadProxy& engine = *plugin.mAutoCadProxyP;
  const std::string text(reinterpret_cast<const char*>(data), size);
  rig::home().write(rig::kMenuFile, text);
  const PlainConfig config(text);

  engine.loadMenufile();
  const PlainConfig::Parameters modes = config.parametersOf("Modes");
  require(engine.mMenuIsLoaded == !modes.empty(), "loaded if there is a mode");
  for (int mode = -1; mode <= static_cast<int>(modes.size()); ++mode) {
    engine.mViewMode = mode;
    const bool isKnown = mode >= 0 && mode < static_cast<int>(modes.size());
    requireSame(engine.getModeName(), isKnown ? modes[static_cast<std::size_t>(mode)].first : "Unknown",
                "mode's name");
  }
  const std::vector<std::string> macros = plainMacros(config);
  require(engine.mMenuEntries == macros, "macros");
  for (int key = 0; key < std::min(kMaxKeys, static_cast<int>(macros.size())); ++key) {
    call_log::startRecording();
    engine.execApplFunction(key);
    const std::vector<std::string> found = sent(call_log::stopRecording());
    require(found == sent(expectedTexts(macros[static_cast<std::size_t>(key)])),
            "a key's macro, token by token");
  }
  host::runQueue();
  return 0;
}
