// The log in trouble: it never crashes, never keeps its lock, and what it writes are whole records.

#include <chrono>
#include <functional>
#include <iostream>
#include <memory>
#include <random>
#include <thread>

#include "file_faults.h"
#include "file_limit.h"
#include "log_fixture.h"
#include "process.h"
#include "stream_capture.h"
#include "trial.h"

namespace {

const std::string kEnd = " end";

class Log : public LogFixture {
protected:
  /// Begins anew, in a folder that has nothing else in it.
  void begin(std::int32_t maxSize) {
    gLogging.mFileStream.reset();
    mFolder.remove("logs");
    mFolder.makeFolder("logs");
    mPars.mSettingsDirPath = mFolder.backslashed("logs");
    mPars.mMaxSize = maxSize;
    gLogging.init(mPars);
  }

  static void write(int count) {
    for (int i = 0; i < count; ++i)
      OV_LOG(INF, "Log", "Log::write", "record " << i << kEnd);
  }
  /// Several threads write so many records each; a lock that isn't given back leaves them waiting.
  static void writeFromThreads(int count) {
    std::vector<std::thread> threads;
    for (int i = 0; i < 3; ++i)
      threads.emplace_back([count] { write(count); });
    for (std::thread& thread : threads)
      thread.join();
  }

  static bool isHeader(const std::string& line) {
    return line.compare(0, 20, std::string(20, '-')) == 0 || line.compare(0, 14, "Orvane logfile") == 0 ||
           line.compare(0, 16, "    Time    |Typ") == 0 || line.compare(0, 16, "------------+---") == 0;
  }
  static bool isRecord(const std::string& line) {
    return line.size() > kTextColumn && line[12] == '|' && line[16] == '|' &&
           line.compare(line.size() - kEnd.size(), kEnd.size(), kEnd) == 0 &&
           line.find(kEnd) == line.size() - kEnd.size();
  }
  /// Records of a file, or -1 if a line is neither a whole record nor one of a header, or if the last has no
  /// end.
  int wholeRecords(const std::string& name) const {
    if (!isFile(name))
      return -1;
    const std::string text = bytes(name);
    int count = 0;
    std::istringstream all(text);
    for (std::string line; std::getline(all, line);) {
      if (isRecord(line))
        ++count;
      else if (!isHeader(line))
        return -1;
    }
    return text.empty() || text.back() == '\n' ? count : -1;
  }
  bool isFile(const std::string& name) const {
    return std::filesystem::is_regular_file(mFolder.native(name));
  }
  bool isWhole() const {
    bool isGood = true;
    for (const char* const name : {"logs/log.txt", "logs/log.bak"})
      isGood = isGood && (!isFile(name) || wholeRecords(name) >= 0);
    return isGood;
  }

  static int recordsIn(const std::string& text) {
    int count = 0;
    std::istringstream all(text);
    for (std::string line; std::getline(all, line);)
      count += isRecord(line) ? 1 : 0;
    return count;
  }
  /// Whether the console gets so many whole records meanwhile.
  static bool consoleGets(int count, const std::function<void()>& work) {
    rig::StreamCapture out(std::cout);
    gLogging.mIsLogToCnsl = true;
    work();
    gLogging.mIsLogToCnsl = false;
    return recordsIn(out.take()) == count;
  }

  /// The lock is free, and the log writes again once it has been set up anew.
  bool startsAnew() {
    begin(50000);
    write(3);
    return wholeRecords("logs/log.txt") == 3;
  }
};

TEST_F(Log, FullDisk) {
  Trial trial("The log's disk is full from each byte of a record on, and gets room again");
  begin(50000);
  write(1);
  const std::size_t header = bytes("logs/log.txt").find("\n", bytes("logs/log.txt").find("---+---")) + 1;
  const std::size_t length = bytes("logs/log.txt").size() - header;
  for (std::size_t room = 0; room <= length + 1; ++room) {
    begin(50000);
    {
      const FileLimit limit(bytes("logs/log.txt").size() + room);
      writeFromThreads(2);
    }
    writeFromThreads(1);
    // The record after a torn one goes on in its line. The two after that are whole.
    const std::vector<std::string> all = lines("logs/log.txt");
    const bool isBack = all.size() >= 2 && isRecord(all[all.size() - 1]) && isRecord(all[all.size() - 2]);
    const std::size_t fitted = room >= length ? 1 : 0;
    trial.count("room for " + std::to_string(room) + " bytes",
                isBack && all.size() == kHeaderLines + fitted + 3);
  }
}

TEST_F(Log, RotationFails) {
  Trial trial("Each step of the log's rotation fails: removing, renaming, opening, writing the header");
  std::unique_ptr<FileLimit> limit;
  const struct {
    const char* name;
    std::function<void()> breakIt;
    bool isGivenUp; // the file; the console goes on
  } steps[] = {
      {"removing", [this] { mFolder.makeFolder("logs/log.bak/content"); }, true},
      {"renaming", [] { file_faults::failRename(EACCES); }, true},
      {"opening", [this] { file_faults::afterRename([this] { mFolder.makeFolder("logs/log.txt"); }); }, true},
      {"header", [&] { file_faults::afterRename([&] { limit = std::make_unique<FileLimit>(0); }); }, false}};
  const std::int64_t rounds = scaled(10, 500);
  for (std::int64_t round = 0; round < rounds; ++round) {
    for (const auto& step : steps) {
      begin(1);
      step.breakIt();
      const bool isConsoleWhole = consoleGets(60, [] { writeFromThreads(20); });
      limit.reset();
      const bool isWholeThen = isWhole();
      write(1);
      // A file that isn't given up takes records as soon as there is room.
      const bool goesOn = step.isGivenUp || wholeRecords("logs/log.txt") == 1;
      trial.count(step.name, isConsoleWhole && isWholeThen && goesOn && startsAnew());
    }
  }
}

TEST_F(Log, FolderAndFileDisappear) {
  Trial trial("The log's file, or its whole folder, is deleted under the running log");
  for (int record = 0; record < 40; ++record) {
    for (const bool isFolder : {false, true}) {
      begin(1);
      const bool isConsoleWhole = consoleGets(record + 60, [&] {
        write(record);
        mFolder.remove(isFolder ? "logs" : "logs/log.txt");
        writeFromThreads(20);
      });
      // Without its folder the log has the console alone; a file comes back with the next rotation.
      const bool isBack = isFolder || wholeRecords("logs/log.txt") > 0;
      trial.count(std::string(isFolder ? "folder" : "file") + " behind record " + std::to_string(record),
                  isConsoleWhole && isBack && isWhole() && startsAnew());
    }
  }
}

TEST_F(Log, OverTheLimitAtTheStart) {
  Trial trial("The log's file is below, at or far above its limit when it is opened");
  for (const std::size_t size : {990u, 999u, 1000u, 1001u, 5000u, 50000000u}) {
    begin(1);
    gLogging.mFileStream.reset();
    mFolder.write("logs/log.txt", std::string(size - 1, '-') + "\n");
    gLogging.init(mPars);
    write(1);
    trial.count(std::to_string(size) + " bytes",
                wholeRecords("logs/log.txt") == 1 && bytes("logs/log.bak").size() >= size && startsAnew());
  }
}

TEST_F(Log, TwoProcesses) {
  Trial trial("Two processes write and rotate one log file at the same time, a third holds it open");
  const std::int64_t rounds = scaled(4, 100);
  for (std::int64_t round = 0; round < rounds; ++round) {
    const int maxSize = round % 2 == 0 ? 5 : 50000; // with many rotations, with none
    begin(maxSize);
    const Process holder("/bin/sh", {"-c", "exec 3<>\"$0\"; exec sleep 100", mFolder.native("logs/log.txt")},
                         mFolder.native("holder"));
    Process other(OV_CHILD, {"log", mFolder.backslashed("logs"), std::to_string(maxSize), "5000"},
                  mFolder.native("child"));
    int here = 0;
    rig::StreamCapture out(std::cout);
    gLogging.mIsLogToCnsl = true;
    for (; other.isRunning(); here += 150)
      writeFromThreads(50);
    gLogging.mIsLogToCnsl = false;
    // A rotation takes away what the other process has just put into the backup; without one nothing goes.
    const bool isAllThere = maxSize == 5 || wholeRecords("logs/log.txt") == here + 5000;
    trial.count("round " + std::to_string(round),
                recordsIn(out.take()) == here && other.wait(0) == 0 && isWhole() && isAllThere);
  }
}

TEST_F(Log, Killed) {
  Trial trial("A process is killed while it writes and rotates its log");
  // The system cuts a write that a kill meets between two of its pages; no record behind that one can be hit.
  constexpr std::size_t kPage = 4096;
  int cut = 0;
  std::mt19937 random(1);
  const std::int64_t rounds = scaled(40, 1000);
  for (std::int64_t round = 0; round < rounds; ++round) {
    begin(50000);
    gLogging.mFileStream.reset();
    mFolder.remove("logs/log.txt");
    mFolder.write("child", "");
    {
      const Process child(OV_CHILD, {"log", mFolder.backslashed("logs"), "5"}, mFolder.native("child"));
      while (bytes("child").empty())
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
      std::this_thread::sleep_for(std::chrono::microseconds(random() % 3000));
    }
    if (isFile("logs/log.txt")) {
      const std::string text = bytes("logs/log.txt");
      if (text.size() % kPage == 0 && !text.empty() && text.back() != '\n') {
        mFolder.write("logs/log.txt", text.substr(0, text.rfind('\n') + 1));
        ++cut;
      }
    }
    trial.count("round " + std::to_string(round), isWhole() && startsAnew());
  }
  trial.detail("last record cut by the system where a page of the file ends: " + std::to_string(cut));
}

} // namespace
