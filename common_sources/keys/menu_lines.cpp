#include "keys/menu_lines.h"

#include "cnfg.h"
#include "util.h"

bool readMenuLines(const std::string& path, const AddMenuLine& addMode, const AddMenuLine& addEntry) {
  if (!Util::fileExists(path))
    return false;
  Cnfg cnfg;
  if (cnfg.open(path) != Cnfg::kOk)
    return false;
  std::string name;
  std::string value;
  cnfg.selectSection("Modes");
  while (cnfg.readNextParameter(name, value, true) == Cnfg::kOk)
    addMode(name, value);
  cnfg.selectSection("MenuBar");
  while (cnfg.readNextParameter(name, value, true) == Cnfg::kOk)
    addEntry(name, value);
  return true;
}

bool cutMacro(const std::string& value, std::string& macro) {
  const std::size_t brace = value.find('}');
  if (brace == std::string::npos || brace + 1 == value.size())
    return false;
  const std::size_t bar = value.find('|', brace + 1);
  macro.assign(value, brace + 1, bar == std::string::npos ? bar : bar - brace - 1);
  return true;
}
