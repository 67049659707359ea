// The menu file, which the menu reader writes: names of the modes, and the macros of the keys. While it is
// missing, each tick looks for it, and a key finds no macro (execApplFunction in application_functions.cpp).

#include "auto_cad_proxy.h"

#include "keys/menu_lines.h"
#include "logging.h"
#include "ov_auto_cad.h"

void AutoCadProxy::loadMenufile() {
  const std::string path = mOvAutoCadP->mApplicationsDirPath + "\\" + kMenuFileName;
  mModes.clear();
  mMenuEntries.clear();
  std::string macro;
  const auto addMode = [this](const std::string& name, const std::string&) { mModes.push_back(name); };
  const auto addEntry = [this, &macro](const std::string&, const std::string& value) {
    if (cutMacro(value, macro))
      mMenuEntries.push_back(macro);
  };
  if (!readMenuLines(path, addMode, addEntry))
    return;
  OV_LOG(CRT, "AutoCadProxy", "AutoCadProxy::loadMenufile",
         "Menu file '" << path << "' with " << mMenuEntries.size() << " entries loaded.");
  if (!mModes.empty())
    mMenuIsLoaded.store(true, std::memory_order_release); // from now on the reading thread looks names up
}
