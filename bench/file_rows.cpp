// The two files that the plug-in keeps: settings and menu.

#include "bench.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include <benchmark/benchmark.h>
#include <ini.h>

#include "surroundings.h"

namespace bench {

namespace {

constexpr char kSettingsFile[] = "Orvaner/Applications/autocad_addin.ini";
constexpr char kMenuFile[] = "Orvaner/Applications/autocad.mnu";
constexpr char kBareSettingsFile[] = "Orvaner/Applications/bare.ini";
constexpr int kMenuEntries = 100000;

std::string gSettingsText; // with no line indented, which inih would take for the line before going on
std::string gPath;

void readAndWriteSettings(int count) {
  const std::string path = home().backslashed(kSettingsFile);
  for (int i = 0; i < count; ++i) {
    if (plugin().readSettingsFile(path) != 0 || plugin().writeSettingsFile(path) != 0)
      std::abort();
  }
}

/// The values as someone keeps them who looks them up by name.
struct Values {
  std::map<std::string, std::string> byName;
};

int keepValue(void* user, const char* section, const char* name, const char* value) {
  static_cast<Values*>(user)->byName[std::string(section) + "." + name] = value;
  return 1;
}

void readAndWriteBare(int count) {
  for (int i = 0; i < count; ++i) {
    Values values;
    if (ini_parse(gPath.c_str(), keepValue, &values) != 0 || values.byName.size() != 23)
      std::abort();
    std::FILE* const fileP = std::fopen(gPath.c_str(), "wb");
    std::fwrite(gSettingsText.data(), 1, gSettingsText.size(), fileP);
    std::fclose(fileP);
  }
}

void writeMenu() {
  std::string text = "# menu\n[Modes]\n2D = 0\n3D = 1\nModel = 2\n\n[MenuBar]\n";
  for (int i = 0; i < kMenuEntries; ++i)
    text += "ID_Entry" + std::to_string(i) + " = Draw, Entry " + std::to_string(i) + "}^C^C_entry" +
            std::to_string(i) + " |icon\n";
  home().write(kMenuFile, text);
}

void loadMenu(int count) {
  for (int i = 0; i < count; ++i) {
    engine().loadMenufile();
    if (engine().mMenuEntries.size() != kMenuEntries)
      std::abort();
  }
}

int keepEntry(void* user, const char*, const char* name, const char* value) {
  static_cast<std::vector<std::pair<std::string, std::string>>*>(user)->emplace_back(name, value);
  return 1;
}

void loadMenuBare(int count) {
  for (int i = 0; i < count; ++i) {
    std::vector<std::pair<std::string, std::string>> entries;
    if (ini_parse(gPath.c_str(), keepEntry, &entries) != 0 || entries.size() != kMenuEntries + 3)
      std::abort();
  }
}

} // namespace

void addFileRows() {
  Row settings;
  settings.what = "settings file read and written";
  settings.reference = "inih for the reading, fwrite of the same text";
  settings.goal = 1.5;
  settings.batch = 10;
  settings.start = [] {
    setQuietLog();
    plugin().setDefaults();
    plugin().writeSettingsFile(home().backslashed(kSettingsFile));
    gSettingsText = home().read(kSettingsFile);
    gSettingsText.erase(std::remove(gSettingsText.begin(), gSettingsText.end(), '\t'), gSettingsText.end());
    home().write(kBareSettingsFile, gSettingsText);
    gPath = home().native(kBareSettingsFile);
  };
  settings.stop = [] { plugin().setDefaults(); };
  settings.ours = readAndWriteSettings;
  settings.theirs = readAndWriteBare;
  add(settings);

  Row menu;
  menu.what = "menu file of 100,000 entries read";
  menu.reference = "inih, names and values stored";
  menu.goal = 1.2;
  menu.batch = 1;
  menu.pairs = 41;
  menu.start = [] {
    setQuietLog();
    plugin();
    writeMenu();
    gPath = home().native(kMenuFile);
  };
  menu.stop = [] {
    home().remove(kMenuFile);
    engine().loadMenufile();
    engine().mMenuIsLoaded = false;
  };
  menu.ours = loadMenu;
  menu.theirs = loadMenuBare;
  add(menu);
}

} // namespace bench
