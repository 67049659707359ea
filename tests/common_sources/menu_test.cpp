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

class Menu : public EngineTest {
protected:
  void SetUp() override {
    EngineTest::SetUp();
    rig::home().remove(rig::kMenuFile);
    rig::home().remove(rig::kMenuReader);
  }
};

TEST_F(Menu, ModesAreNamesAndEntriesMacros) {
  rig::home().write(
      rig::kMenuFile,
      "# made by the menu reader\n[Modes]\nStart\n\tLayout = ignored\n  # indented\nLate\n"
      "[MenuBar]\na=File/Open}_OPEN|Opens\nb=heading\nc=x}\nf=a}M=$(getvar,tilemode);;b}c|d|e\n\nd=x}D\n");
  proxy().loadMenufile();
  EXPECT_EQ(proxy().mModes, (Lines{"Start", "Layout"}));
  EXPECT_EQ(proxy().mMenuEntries, (Lines{"_OPEN", "M=$(getvar,tilemode);;b}c"}));
  EXPECT_EQ(takeRecords(), Lines{"CRT Menu file '" + plugin().mApplicationsDirPath +
                                 "\\autocad.mnu' with 2 entries loaded."});
  // A folder isn't read, and nothing of the file before stays.
  rig::home().remove(rig::kMenuFile);
  rig::home().makeFolder(rig::kMenuFile);
  proxy().mModes = {"Old"};
  proxy().loadMenufile();
  EXPECT_EQ(proxy().mModes, Lines{});
  EXPECT_EQ(proxy().mMenuEntries, Lines{});
  EXPECT_EQ(takeRecords(), Lines{});
}

#ifndef _WIN32 // dialogs and module paths

class MenuReader : public Menu {
protected:
  void SetUp() override {
    Menu::SetUp();
    desktop::setMessageBoxAnswer([this](const desktop::MessageBox&) {
      ++mBoxes;
      return IDOK;
    });
  }
  /// Starts the menu reader from a plug-in file. Returns the records, without the first.
  Lines start(const std::string& modulePath) {
    desktop::setModulePath(Util::toWideByCodePage(modulePath));
    takeRecords();
    proxy().StartDotNETPlugin();
    Lines found = takeRecords();
    EXPECT_EQ(found.at(0), "TRC Start .NET Plugin...");
    found.erase(found.begin());
    return found;
  }

  int mBoxes = 0;
};

TEST_F(MenuReader, LoadsFromThePlugInFolder) {
  rig::home().makeFolder("J\xF6rg's v2.1"); // an o with two dots
  rig::home().write("J\xF6rg's v2.1/OvScribe2018.dll", "a menu reader");
  const std::string folder = rig::home().backslashed("J\xF6rg's v2.1");
  std::string slashed = folder;
  std::replace(slashed.begin(), slashed.end(), '\\', '/');
  const std::string command = "(command \"netload\" \"" + slashed + "/OvScribe2018.dll\")";
  const std::string file = folder + "\\OVAutoCAD2019.arx";
  call_log::startRecording();
  // The command's record contains a line feed, so it takes two lines. The second isn't a record by itself.
  EXPECT_EQ(start(file),
            (Lines{"TRC charPath: '" + file + "'", "TRC dllPath: '" + folder + "\\OvScribe2018.dll'",
                   "TRC totalCmd: '" + command}));
  EXPECT_EQ(call_log::stopRecording().back(), "sendStringToExecute \"" + command + "\\n\" 1 0 1");
  call_log::failAt("sendStringToExecute", 1);
  start(file);
  EXPECT_NE(rig::home()
                .read("Orvaner/autocad_addin_log.txt")
                .find("\n', ec: " + std::to_string(Acad::eNotApplicable)),
            std::string::npos);
}

TEST_F(MenuReader, LogSaysWhatIsMissing) {
  const std::string file = rig::home().backslashed("x.arx"),
                    reader = rig::home().backslashed(rig::kMenuReader);
  EXPECT_EQ(start("plain.arx"), (Lines{"TRC charPath: 'plain.arx'", "ERR Error: Invalid path plain.arx"}));
  EXPECT_EQ(start(file), (Lines{"TRC charPath: '" + file + "'", "TRC dllPath: '" + reader + "'",
                                "ERR Error: OvScribe does not exist " + reader}));
  call_log::throwAt("GetModuleFileNameW", 1);
  EXPECT_EQ(start(file), Lines{"ERR Error StartDotNETPlugin()"});
  call_log::clear();
  host::setHasDocumentManager(false);
  EXPECT_EQ(start(file), Lines{});
  EXPECT_EQ(mBoxes, 0);
  // A missing folder is reported to the user, who can make it.
  plugin().mApplicationsDirPath = rig::home().backslashed(rig::kSettingsFile);
  proxy().StartDotNETPlugin();
  EXPECT_EQ(takeRecords(), Lines{});
  EXPECT_EQ(mBoxes, 1);
}

TEST_F(MenuReader, StartsBeforeTheTimer) {
  rig::home().write(rig::kMenuReader, "a menu reader");
  for (const bool usesHostsOwn : {false, true}) {
    desktop::setModulePath(Util::toWideByCodePage(rig::home().backslashed("x.arx")));
    call_log::startRecording();
    restart({{"useInt3dIntrfce", usesHostsOwn ? "on" : "off"}});
    const Lines made = call_log::stopRecording();
    const auto sent = std::find_if(made.begin(), made.end(),
                                   [](const std::string& call) { return call.compare(0, 4, "send") == 0; });
    const auto armed = std::find(made.begin(), made.end(), "SetTimer 100");
    EXPECT_NE(armed, made.end());
    EXPECT_EQ(sent < armed, !usesHostsOwn);
    EXPECT_EQ(mBoxes, 0);
  }
}

#endif

} // namespace
