// Log and settings file on a full disk, and under a process that is killed.

#include <algorithm>
#include <functional>
#include <random>

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include "file_limit.h"
#include "log_fixture.h"
#include "settings.h"
#include "trial.h"

namespace {

/// Lets a child process work, and kills it up to that many microseconds after it has called `ready`.
void killAtWork(unsigned longest, const std::function<void(const std::function<void()>& ready)>& work) {
  static std::mt19937 sRandom(1);
  int ends[2] = {};
  ASSERT_EQ(0, pipe(ends));
  const pid_t child = fork();
  if (child == 0) {
    work([&] { (void)!write(ends[1], "", 1); });
    pause();
  }
  char byte = 0;
  EXPECT_EQ(1, read(ends[0], &byte, 1));
  usleep(static_cast<useconds_t>(sRandom() % longest));
  kill(child, SIGKILL);
  waitpid(child, nullptr, 0);
  close(ends[0]);
  close(ends[1]);
}

class Log : public LogFixture {
protected:
  /// Starts without files.
  void start(std::int32_t maxSize) {
    gLogging.mFileStream.reset();
    mFolder.remove("log.txt");
    mFolder.remove("log.bak");
    mPars.mIsCreation = false;
    mPars.mMaxSize = maxSize;
    gLogging.init(mPars);
  }
  static void write(int count) {
    for (int i = 0; i < count; ++i)
      OV_LOG(INF, "Log", "Log::write",
             "record " << std::string(static_cast<std::size_t>(i % 37), 'x') << " end");
  }
  static bool isRecord(const std::string& line) {
    return line.size() > kTextColumn && line[12] == '|' && line.find(" end") == line.size() - 4;
  }
  /// Returns whether a file, if it is there, holds nothing but whole records and headers.
  bool isWhole(const std::string& name, const Texts& header) const {
    const Texts all = mFolder.exists(name) ? lines(name) : Texts();
    return (all.empty() || bytes(name).back() == '\n') &&
           std::all_of(all.begin(), all.end(), [&](const std::string& line) {
             return isRecord(line) || std::find(header.begin(), header.end(), line) != header.end();
           });
  }
};

TEST_F(Log, SurvivesFullDisk) {
  Trial trial("The log's disk is full from each byte of a record on, and gets room again");
  start(50000);
  const std::size_t header = bytes().size();
  write(1);
  const std::size_t length = bytes().size() - header;
  for (std::size_t room = 0; room <= length + 1; ++room) {
    start(50000);
    {
      const FileLimit limit(header + room);
      write(6);
    }
    write(3);
    // The record after a cut one continues its line. The two after that are whole.
    const Texts all = lines();
    const std::size_t fitted = room >= length ? 1 : 0;
    trial.count("room for " + std::to_string(room) + " bytes", all.size() == kHeaderLines + fitted + 3 &&
                                                                   isRecord(all[all.size() - 1]) &&
                                                                   isRecord(all[all.size() - 2]));
  }
}

TEST_F(Log, SurvivesKill) {
  Trial trial("A process is killed while it writes and rotates its log");
  // A kill during a write may cut it where a page of the file ends.
  constexpr std::size_t kPage = 4096;
  int cut = 0;
  start(50000);
  const Texts header = lines();
  const std::int64_t rounds = scaled(40, 1000);
  for (std::int64_t round = 0; round < rounds; ++round) {
    start(5);
    killAtWork(3000, [](const auto& ready) {
      ready();
      for (;;)
        write(37);
    });
    std::string text = mFolder.exists("log.txt") ? bytes() : "";
    if (!text.empty() && text.size() % kPage == 0 && text.back() != '\n') {
      mFolder.write("log.txt", text.substr(0, text.rfind('\n') + 1));
      ++cut;
    }
    const bool isGood = isWhole("log.txt", header) && isWhole("log.bak", header);
    gLogging.init(mPars);
    write(1);
    trial.count("round " + std::to_string(round), isGood && isRecord(lines().back()));
  }
  trial.detail("last record cut by the system where a page of the file ends: " + std::to_string(cut));
}

constexpr char kFile[] = "Orvaner/Applications/autocad_addin.ini";

class SettingsFile : public testing::Test {
protected:
  SettingsFile() {
    setenv("USERPROFILE", mHome.native().c_str(), 1);
    mHome.makeFolder("Orvaner/Applications");
    mDefaults = loaded();
    for (const bool isToggleOn : {false, true}) {
      save(isToggleOn);
      mText[isToggleOn] = mHome.read(kFile);
      mDump[isToggleOn] = loaded();
    }
  }

  /// Saves values that aren't the defaults, with the toggle off or on, as the plug-in does at its unload.
  static void save(bool isToggleOn) {
    Settings settings;
    settings.mMinThreshold = 7;
    settings.mToggleRotationAxis = isToggleOn;
  }
  /// Returns the values of the next run. It saves as well, like each run.
  static std::string loaded() {
    Settings settings;
    settings.mLogPars.mSettingsDirPath.clear(); // isn't in the file
    return settings.dump();
  }
  /// Returns whether the next run, and the one after it, have one of the two saved states or the defaults.
  /// Notes whether it is one of the two.
  bool isWholeNextTime(Trial& trial) const {
    const std::string now = loaded();
    const bool isKept = now == mDump[0] || now == mDump[1];
    trial.keep(isKept);
    return (isKept || now == mDefaults) && loaded() == now;
  }

  rig::TempFolder mHome;
  std::string mDefaults, mText[2], mDump[2]; // with the toggle off and on
};

TEST_F(SettingsFile, SurvivesFullDisk) {
  Trial trial("The settings file's disk is full from each byte of the file on");
  const std::size_t size = mText[1].size();
  const auto step = static_cast<std::size_t>(std::max<std::int64_t>(1, 25 / scaled(1, 25)));
  for (std::size_t room = 0; room <= size + step; room += step) {
    save(false);
    {
      Settings settings;
      settings.mToggleRotationAxis = true;
      const FileLimit limit(room);
      settings.writeSettingsFile(settings.mSettingsFilePath);
      settings.mSettingsFilePath.clear(); // the end doesn't write
    }
    const bool isCut = mHome.read(kFile) == mText[1].substr(0, room);
    trial.count("room for " + std::to_string(room) + " bytes", isWholeNextTime(trial) && isCut);
  }
}

TEST_F(SettingsFile, SurvivesUnwritablePath) {
  Trial trial("A folder has the settings file's name, or the file's folder is gone");
  mHome.remove(kFile);
  mHome.makeFolder(kFile);
  save(true);
  trial.count("a folder", loaded() == mDefaults);
  mHome.remove("Orvaner");
  save(true);
  trial.count("no folder", loaded() == mDefaults && !mHome.exists("Orvaner"));
  mHome.makeFolder("Orvaner/Applications");
  save(true);
  trial.count("a folder again", mHome.read(kFile) == mText[1]);
}

TEST_F(SettingsFile, SurvivesKill) {
  Trial trial("A process is killed within milliseconds of saving its settings at its end");
  // The file is written in place: emptied, then filled with one write. A kill in between leaves it empty, and
  // the next run starts with the defaults: the user's settings are lost. The emptying takes most of the time,
  // milliseconds on some disks.
  int before = 0, after = 0, empty = 0;
  const std::int64_t rounds = scaled(40, 1000);
  for (std::int64_t round = 0; round < rounds; ++round) {
    const bool isOn = round % 2 == 1;
    save(isOn);
    const int file = open(mHome.native(kFile).c_str(), O_RDONLY);
    fsync(file); // emptying a file that is on the disk takes longer
    close(file);
    killAtWork(8000, [](const auto& ready) {
      Settings settings;
      settings.mToggleRotationAxis = !settings.mToggleRotationAxis;
      ready();
      usleep(1000);
    });
    const std::string text = mHome.read(kFile);
    before += text == mText[isOn] ? 1 : 0;
    after += text == mText[!isOn] ? 1 : 0;
    empty += text.empty() ? 1 : 0;
    const bool isKnown = before + after + empty == round + 1;
    trial.count("round " + std::to_string(round), isWholeNextTime(trial) && isKnown);
  }
  trial.detail("the old file " + std::to_string(before) + " times, the new one " + std::to_string(after) +
               ", an empty one " + std::to_string(empty));
}

} // namespace
