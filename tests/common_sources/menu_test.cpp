// The menu file, and the start of the menu reader that writes it.

#include <algorithm>

#include "call_log.h"
#include "engine_rig.h"
#include "util.h"

#ifndef _WIN32
#include "desktop.h"
#endif

using Lines = std::vector<std::string>;

namespace {

constexpr char kMenuReader[] = "OvScribe2018.dll";

class Menu : public EngineTest {
protected:
  void SetUp() override {
    EngineTest::SetUp();
    plugin().mScrollTreeAndList = false;
    rig::home().remove(rig::kMenuFile);
    mApplicationsDirPath = plugin().mApplicationsDirPath;
  }
  void TearDown() override {
    plugin().mApplicationsDirPath = mApplicationsDirPath;
    rig::home().remove(rig::kMenuFile);
    rig::home().remove(kMenuReader);
    EngineTest::TearDown();
  }

  /// Reads a menu file with that text.
  void load(const std::string& text) {
    rig::home().write(rig::kMenuFile, text);
    proxy().loadMenufile();
  }
  Lines modes() { return proxy().mModes; }
  std::string loadedRecord(int entries) {
    return "CRT Menu file '" + plugin().mApplicationsDirPath + "\\autocad.mnu' with " +
           std::to_string(entries) + " entries loaded.";
  }
  static void tick() { TimerProc(nullptr, 0, 0, 0); }

  std::string mApplicationsDirPath;
};

TEST_F(Menu, ModesAreNamesAndEntriesAreMacros) {
  struct Case {
    std::string text;
    Lines modes, entries;
  };
  const Case cases[] = {
      {"# made by the menu reader\n[Modes]\nStart\n\tLayout = ignored\nMore # than anyone asks for\n\n"
       "[MenuBar]\nA = File/Open}_OPEN|Opens\nB=x}M=$(getvar,tilemode);;_B|help\n\n[Other]\nC=x}C\n",
       {"Start", "Layout", "More # than anyone asks for"},
       {"_OPEN", "M=$(getvar,tilemode);;_B"}},
      // A line without an entry takes no index.
      {"[MenuBar]\na=x}A\nb=heading\nc=x}\nd=x}|\ne=x}E\n[Modes]\nStart\n", {"Start"}, {"A", "", "E"}},
      // A section ends at the first line without a name.
      {"[Modes]\nStart\n# skipped\nModel\n  # indented\nLate\n[MenuBar]\na=x}A\n# b=x}B\nc=x}C\n\nd=x}D\n",
       {"Start", "Model"},
       {"A", "C"}},
      // A missing section leaves the other one.
      {"[Modes]\nStart\n", {"Start"}, {}},
      {"[modes]\nStart\n\n[MenuBar]\na=x}A\n", {}, {"A"}},
  };
  for (const Case& c : cases) {
    proxy().mMenuIsLoaded = false;
    load(c.text);
    EXPECT_EQ(modes(), c.modes) << c.text;
    EXPECT_EQ(proxy().mMenuEntries, c.entries) << c.text;
    EXPECT_EQ(proxy().mMenuIsLoaded, !c.modes.empty()) << c.text;
    EXPECT_EQ(takeRecords(), Lines{loadedRecord(static_cast<int>(c.entries.size()))});
  }
  // What is no file isn't read, and nothing of the one before stays.
  rig::home().remove(rig::kMenuFile);
  rig::home().makeFolder(rig::kMenuFile);
  proxy().mModes = {"Old"};
  proxy().loadMenufile();
  EXPECT_EQ(modes(), Lines{});
  EXPECT_EQ(proxy().mMenuEntries, Lines{});
  EXPECT_EQ(takeRecords(), Lines{});
}

TEST_F(Menu, MacroLiesBetweenTheFirstBraceAndTheFirstBar) {
  const std::pair<const char*, Lines> cases[] = {
      {"x}A|B", {"A"}},
      {"}A", {"A"}},
      {"x}", {}},
      {"A", {}},
      {"a|b", {}},
      {"x}|", {""}},
      {"a}b}c|d|e", {"b}c"}},
      {"a|b}c|d", {"c"}},
      {"x} A |B", {" A "}},
      {"x}A ", {"A"}},
      {"x}A=B", {"A=B"}},
      {"x}A#B", {"A"}},
      {"x} ", {}},
      {"", {}},
  };
  for (const auto& [value, entries] : cases) {
    load("[Modes]\nStart\n\n[MenuBar]\nname = " + std::string(value) + "\n");
    EXPECT_EQ(proxy().mMenuEntries, entries) << "'" << value << "'";
  }
}

TEST_F(Menu, FileIsPolledForAtEachTickUntilItHasAMode) {
  tick();
  EXPECT_EQ(takeRecords(), Lines{}) << "a file that isn't there is no event";
  EXPECT_FALSE(proxy().mMenuIsLoaded);
  // Keys with no modes: not loaded, and read again, though its keys work.
  rig::home().write(rig::kMenuFile, "[MenuBar]\na=x}A\n");
  tick();
  tick();
  EXPECT_EQ(takeRecords(), (Lines{loadedRecord(1), loadedRecord(1)}));
  EXPECT_EQ(proxy().mMenuEntries, Lines{"A"});
  EXPECT_FALSE(proxy().mMenuIsLoaded);
  // The file goes again: nothing of it stays.
  rig::home().remove(rig::kMenuFile);
  tick();
  EXPECT_EQ(proxy().mMenuEntries, Lines{});
  // Complete: read before the tick's keys are served, and never again.
  rig::home().write(rig::kMenuFile, "[Modes]\nStart\n\n[MenuBar]\na=x}A\nb=x}B\n");
  plugin().mPendingKey = 1;
  tick();
  EXPECT_EQ(host::queueLength(), 2);
  EXPECT_EQ(takeRecords(), Lines{loadedRecord(2)});
  rig::home().write(rig::kMenuFile, "[Modes]\nOther\n");
  tick();
  EXPECT_EQ(modes(), Lines{"Start"});
  EXPECT_EQ(proxy().mMenuEntries, (Lines{"A", "B"}));
  EXPECT_EQ(takeRecords(), Lines{});
}

#ifndef _WIN32 // dialogs and module paths

class MenuReader : public Menu {
protected:
  /// The way of the code page here.
  static std::wstring wide(const std::string& text) { return Util::toWideByCodePage(text); }

  /// Starts the menu reader from a plug-in file; gives what was typed, and the records.
  Lines start(const std::string& modulePath) {
    desktop::setModulePath(wide(modulePath));
    takeRecords();
    call_log::startRecording();
    proxy().StartDotNETPlugin();
    Lines found;
    for (const std::string& call : call_log::stopRecording()) {
      if (call.compare(0, 4, "send") == 0)
        found.push_back(call);
    }
    const Lines records = takeRecords();
    found.insert(found.end(), records.begin(), records.end());
    return found;
  }
};

TEST_F(MenuReader, IsLoadedFromThePlugInsFolder) {
  rig::home().makeFolder("J\xF6rg's v2.1"); // an o with two dots
  rig::home().write("J\xF6rg's v2.1/OvScribe2018.dll", "stands for the menu reader");
  const std::string folder = rig::home().backslashed("J\xF6rg's v2.1");
  std::string slashed = folder;
  std::replace(slashed.begin(), slashed.end(), '\\', '/');
  const std::string command = "(command \"netload\" \"" + slashed + "/OvScribe2018.dll\")";
  const std::string file = folder + "\\OVAutoCAD2019.arx";
  // The record of the command holds its line feed, and so is on two lines, of which the second is no record.
  EXPECT_EQ(start(file),
            (Lines{"sendStringToExecute \"" + command + "\\n\" 1 0 1", "TRC Start .NET Plugin...",
                   "TRC charPath: '" + file + "'", "TRC dllPath: '" + folder + "\\OvScribe2018.dll'",
                   "TRC totalCmd: '" + command}));
  // A host that refuses the text says so in the log, and nothing else happens.
  const std::size_t mark = rig::logSize();
  call_log::failAt("sendStringToExecute", 1);
  start(file);
  EXPECT_NE(rig::logText(mark).find("\n', ec: " + std::to_string(Acad::eNotApplicable) + "\n"),
            std::string::npos);
}

TEST_F(MenuReader, WhatIsMissingIsSaidToTheLogButForTheFolder) {
  EXPECT_EQ(start("plain.arx"), (Lines{"TRC Start .NET Plugin...", "TRC charPath: 'plain.arx'",
                                       "ERR Error: Invalid path plain.arx"}));
  const std::string file = rig::home().backslashed("x.arx"), reader = rig::home().backslashed(kMenuReader);
  EXPECT_EQ(start(file),
            (Lines{"TRC Start .NET Plugin...", "TRC charPath: '" + file + "'",
                   "TRC dllPath: '" + reader + "'", "ERR Error: OvScribe does not exist " + reader}));
  call_log::throwAt("GetModuleFileNameW", 1);
  EXPECT_EQ(start(file), (Lines{"TRC Start .NET Plugin...", "ERR Error StartDotNETPlugin()"}));
  call_log::clear();
  host::setHasDocumentManager(false);
  EXPECT_EQ(start(file), Lines{"TRC Start .NET Plugin..."});
  EXPECT_TRUE(desktop::messageBoxes().empty());
  rig::home().write("Orvaner/plain", "no folder");
  plugin().mApplicationsDirPath = rig::home().backslashed("Orvaner/plain");
  EXPECT_EQ(start(file), Lines{}) << "said to the user, who can do something about it";
  EXPECT_EQ(desktop::messageBoxes().size(), 1u);
}

TEST_F(MenuReader, IsAskedForByTheConstructorUnlessTheHostsOwnInterfaceServes) {
  for (const bool usesOwn : {false, true}) {
    rig::home().write(kMenuReader, "stands for the menu reader");
    desktop::setModulePath(wide(rig::home().backslashed("x.arx")));
    call_log::startRecording();
    restart({{"useInt3dIntrfce", usesOwn ? "on" : "off"}});
    const Lines made = call_log::stopRecording();
    const auto sent = std::find_if(made.begin(), made.end(),
                                   [](const std::string& call) { return call.compare(0, 4, "send") == 0; });
    EXPECT_EQ(sent != made.end(), !usesOwn);
    EXPECT_NE(std::find(sent == made.end() ? made.begin() : sent, made.end(), "SetTimer 100"), made.end())
        << "the timer is armed behind it";
    EXPECT_TRUE(desktop::messageBoxes().empty());
  }
}

#endif

} // namespace
