// The settings file in trouble: the plug-in runs on, on its own values or on the defaults, and never on a
// mixture.

#include <algorithm>
#include <chrono>
#include <functional>
#include <random>
#include <thread>

#include <fcntl.h>
#include <sys/fsuid.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include "file_limit.h"
#include "process.h"
#include "settings.h"
#include "temp_folder.h"
#include "trial.h"

namespace {

constexpr char kFile[] = "Orvaner/Applications/autocad_addin.ini";

/// Files are as closed to this thread as their permissions say, also if an administrator runs the test.
class PlainUser {
public:
  PlainUser() {
    if (geteuid() == 0)
      setfsuid(65534);
  }
  ~PlainUser() {
    setfsuid(geteuid());
    prctl(PR_SET_DUMPABLE, 1); // the change of user took that away; leak checkers need it
  }
  PlainUser(const PlainUser&) = delete;
  PlainUser& operator=(const PlainUser&) = delete;
};

class SettingsFile : public testing::Test {
protected:
  SettingsFile() {
    setenv("USERPROFILE", mHome.native().c_str(), 1);
    mHome.makeFolder("Orvaner/Applications");
    mDefaults = loaded();
    save(false);
    mText[0] = mHome.read(kFile);
    mDump[0] = loaded();
    save(true);
    mText[1] = mHome.read(kFile);
    mDump[1] = loaded();
    EXPECT_NE(mDump[0], mDefaults);
    EXPECT_NE(mDump[1], mDefaults);
    EXPECT_NE(mText[0], mText[1]);
  }

  /// Values that aren't the defaults, with the toggle off or on, as the plug-in leaves them at its unload.
  static void save(bool isToggleOn) {
    Settings settings;
    settings.mMinThreshold = 7;
    settings.mToggleRotationAxis = isToggleOn;
  }
  /// The file has been on the disk for long, as at a host's end; emptying it takes its time then.
  void putOnDisk() const {
    const int file = open(mHome.native(kFile).c_str(), O_RDONLY);
    fsync(file);
    close(file);
  }
  /// The values of the next run. It saves as well, like each run.
  static std::string loaded() {
    Settings settings;
    settings.mLogPars.mSettingsDirPath.clear(); // is none of the file's values
    return settings.dump();
  }

  /// The next run, on a machine in order, has one of the two states of our own or the defaults; and so has
  /// the file behind it. Notes whether it is one of our own.
  bool isWholeNextTime(Trial& trial) const {
    const std::string now = loaded();
    const bool isKept = now == mDump[0] || now == mDump[1];
    trial.keep(isKept);
    return (isKept || now == mDefaults) && loaded() == now;
  }

  rig::TempFolder mHome;
  std::string mDefaults;
  std::string mText[2]; // with the toggle off and on
  std::string mDump[2];
};

TEST_F(SettingsFile, FullDisk) {
  Trial trial("The settings file's disk is full from each byte of the file on");
  const std::size_t size = std::max(mText[0].size(), mText[1].size());
  const auto step = static_cast<std::size_t>(std::max<std::int64_t>(1, 25 / scaled(1, 25)));
  for (std::size_t room = 0; room <= size + step; room += step) {
    save(false);
    {
      Settings settings;
      settings.mToggleRotationAxis = true;
      const FileLimit limit(room);
      settings.writeSettingsFile(settings.mSettingsFilePath);
      settings.mToggleRotationCenter = false; // isn't written any more
      settings.mSettingsFilePath.clear();
    }
    const bool isNew = room >= size && mHome.read(kFile) == mText[1];
    const bool isCut = room < size && mHome.read(kFile) == mText[1].substr(0, room);
    const bool isWhole = isWholeNextTime(trial);
    trial.count("room for " + std::to_string(room) + " bytes", (isNew || isCut) && isWhole);
  }
}

TEST_F(SettingsFile, CantBeWritten) {
  Trial trial("The settings file is read-only, or a folder stands in its place, or its own folder is gone");
  const std::int64_t rounds = scaled(10, 500);
  for (std::int64_t round = 0; round < rounds; ++round) {
    save(false);
    chmod(mHome.native(kFile).c_str(), 0444);
    {
      const PlainUser user;
      save(true);
      trial.count("read-only", loaded() == mDump[0] && isWholeNextTime(trial));
    }
    chmod(mHome.native(kFile).c_str(), 0644);
    trial.count("behind read-only", mHome.read(kFile) == mText[0] && isWholeNextTime(trial));

    mHome.remove(kFile);
    mHome.makeFolder(kFile);
    save(true);
    trial.count("a folder", loaded() == mDefaults && isWholeNextTime(trial));
    mHome.remove(kFile);

    mHome.remove("Orvaner");
    save(true);
    trial.count("no folder", isWholeNextTime(trial) && loaded() == mDefaults && !mHome.exists("Orvaner"));
    mHome.makeFolder("Orvaner/Applications");
    save(true);
    trial.count("a folder again", mHome.read(kFile) == mText[1] && isWholeNextTime(trial));
  }
}

TEST_F(SettingsFile, Killed) {
  Trial trial("A process is killed within milliseconds of saving its settings at its end");
  // The file is written in place: emptied, then filled with one write. A kill in between leaves it empty, and
  // the next run begins with the defaults: the user's settings are lost. It is mostly the emptying that takes
  // time, milliseconds on some disks. The whole text in one write leaves no other state.
  int before = 0, after = 0, empty = 0;
  std::mt19937 random(2);
  const std::int64_t rounds = scaled(40, 1000);
  for (std::int64_t round = 0; round < rounds; ++round) {
    const std::size_t old = round % 2;
    save(old == 1);
    putOnDisk();
    mHome.write("child", "");
    {
      const Process child(OV_CHILD, {"settings"}, mHome.native("child"));
      while (std::filesystem::file_size(mHome.native("child")) == 0)
        ; // to the microsecond
      std::this_thread::sleep_for(std::chrono::microseconds(random() % 8000));
    }
    const std::string text = mHome.read(kFile);
    before += text == mText[old] ? 1 : 0;
    after += text == mText[1 - old] ? 1 : 0;
    empty += text.empty() ? 1 : 0;
    const bool isKnown = text.empty() || text == mText[0] || text == mText[1];
    trial.count("round " + std::to_string(round) + ": " + std::to_string(text.size()) + " bytes",
                isKnown && isWholeNextTime(trial));
  }
  trial.detail("the old file " + std::to_string(before) + " times, the new one " + std::to_string(after) +
               ", an empty one " + std::to_string(empty));
}

} // namespace
