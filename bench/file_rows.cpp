// The menu file, the largest that the plug-in reads.

#include "bench.h"

#include <cstdlib>
#include <utility>

#include <ini.h>

#include "surroundings.h"

namespace bench {

namespace {

constexpr char kMenuFile[] = "Orvaner/Applications/autocad.mnu";
constexpr int kEntries = 100000;

using Entries = std::vector<std::pair<std::string, std::string>>;

void load(int count) {
  for (int i = 0; i < count; ++i) {
    engine().loadMenufile();
    if (engine().mMenuEntries.size() != kEntries)
      std::abort();
  }
}

int keep(void* user, const char*, const char* name, const char* value) {
  static_cast<Entries*>(user)->emplace_back(name, value);
  return 1;
}

void loadBare(int count) {
  const std::string path = home().native(kMenuFile);
  for (int i = 0; i < count; ++i) {
    Entries entries;
    if (ini_parse(path.c_str(), keep, &entries) != 0 || entries.size() != kEntries + 3)
      std::abort();
  }
}

} // namespace

void addFileRows() {
  Row row;
  row.what = "menu file of 100,000 entries read";
  row.reference = "inih, names and values stored";
  row.batch = 1;
  row.pairs = 41;
  row.start = [] {
    setQuietLog();
    std::string text = "# menu\n[Modes]\n2D = 0\n3D = 1\nModel = 2\n\n[MenuBar]\n";
    for (int i = 0; i < kEntries; ++i) {
      const std::string number = std::to_string(i);
      text += "ID_Entry" + number + " = Draw, Entry " + number + "}^C^C_entry" + number + " |icon\n";
    }
    home().write(kMenuFile, text);
  };
  row.stop = [] {
    home().remove(kMenuFile);
    engine().loadMenufile();
    engine().mMenuIsLoaded = false;
  };
  row.ours = load;
  row.theirs = loadBare;
  add(row);
}

} // namespace bench
