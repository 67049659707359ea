// The menu file, which the menu reader writes: names of the modes, and the macros of the keys. While it is
// missing, each tick looks for it, and a key finds no macro (execApplFunction in application_functions.cpp).

#include "auto_cad_proxy.h"

#include "cnfg.h"
#include "logging.h"
#include "ov_auto_cad.h"
#include "util.h"

namespace {

constexpr char kMenuFileName[] = "autocad.mnu";

/// Extracts the macro of a value: the text after the first "}", up to the next "|". Returns false if there is
/// none.
bool cutMacro(const std::string& value, std::string& macro) {
  const std::size_t brace = value.find('}');
  if (brace == std::string::npos || brace + 1 == value.size())
    return false;
  const std::size_t bar = value.find('|', brace + 1);
  macro.assign(value, brace + 1, bar == std::string::npos ? bar : bar - brace - 1);
  return true;
}

} // namespace

void AutoCadProxy::loadMenufile() {
  const std::string path = mOvAutoCadP->mApplicationsDirPath + "\\" + kMenuFileName;
  mModes.clear();
  mMenuEntries.clear();
  if (!Util::fileExists(path))
    return;
  Cnfg cnfg;
  if (cnfg.open(path) != Cnfg::kOk)
    return;

  std::string name;
  std::string value;
  cnfg.selectSection("Modes");
  while (cnfg.readNextParameter(name, value, true) == Cnfg::kOk)
    mModes.push_back(name);

  std::string macro;
  cnfg.selectSection("MenuBar");
  while (cnfg.readNextParameter(name, value, true) == Cnfg::kOk) {
    if (cutMacro(value, macro))
      mMenuEntries.push_back(macro);
  }
  OV_LOG(CRT, "AutoCadProxy", "AutoCadProxy::loadMenufile",
         "Menu file '" << path << "' with " << mMenuEntries.size() << " entries loaded.");
  if (!mModes.empty())
    mMenuIsLoaded.store(true, std::memory_order_release); // from now on the reading thread looks names up
}
