#include "logging.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <iomanip>
#include <iostream>

std::int32_t gLogMagic = 0;
Logging gLogging;

namespace {

constexpr char kTypeNames[TMP + 1][4] = {"ERR", "WRN", "CRT", "TRC", "DCM", "ICM", "INF", "DBG", "TMP"};
constexpr std::uint32_t kSizeUnit = 1000; // bytes, unit of mMaxSize
constexpr std::size_t kThreadIdWidth = 6;
constexpr std::size_t kTimeWidth = 12;
constexpr std::size_t kTypeWidth = 3;
constexpr std::size_t kBytesPerRow = 10;

/// Removes or renames without complaint about a file that isn't there.
bool isDoneOrAbsent(int result) {
  return result == 0 || errno == ENOENT;
}

} // namespace

Logging::Logging() : mMutex("Logging"), mIsHexDump(false), mThreadId(0), mPosition(0), mIsLineTorn(false) {
  mLogFile = "c:\\def_log.txt";
  mMaxSize = 5000;
  mIsLogToFile = mIsLogToCnsl = mIsWarning = mIsCreation = mIsTrace = false;
  mIsDevCom = mIsIntCom = mIsInfo = mIsDebug = mIsTmp = false;
  mOs = std::make_unique<RecordStream>();
  gLogMagic = LOG_MAGIC;
}

Logging::~Logging() {
  OV_LOG(CRT, "Logging", "Logging::~Logging", "Logging::~Logging(): destructing ...");
  gLogMagic = 0;
}

void Logging::init(const LogPars& pars) {
  if (&pars != this)
    LogPars::operator=(pars);
  mIsHexDump = false;
  mFileStream.reset();
  if (!mIsLogToFile)
    return;
  if (mLogFile.empty())
    mLogFile = "forgot_to_name_this_file_log.txt";
  const bool hasFolder = mLogFile.find('\\') != std::string::npos;
  mFilePath = hasFolder ? mLogFile : mSettingsDirPath + "\\" + mLogFile;
  mFileStream = std::make_unique<LogFile>();
  openFileStream();
  if (!mFileStream->is_open()) {
    OV_LOG(ERR, "Logging", "Logging::init", "Opening log file '" << mLogFile << "failed!");
    mIsLogToFile = false;
    return;
  }
  writeHeader();
}

void Logging::openFileStream() {
  mIsLineTorn = false;
  mFileStream->open(Util::nativePath(mFilePath));
  mPosition = mFileStream->is_open() ? mFileStream->position() : -1;
}

bool Logging::beginRecord(int type, const char* file, std::string_view prefix) {
  if (!mExclFileToLog.empty()) {
    const char* separatorP = std::strrchr(file, '/');
    if (!separatorP)
      separatorP = std::strrchr(file, '\\');
    if (mExclFileToLog != (separatorP ? separatorP + 1 : file))
      return false;
  }
  if (!isOn(type) || mMutex.lock() != 0)
    return false;
  try {
    writeColumns(type, prefix);
  } catch (...) {
    mMutex.unlock(); // no memory for the record: it is lost, the lock isn't
    return false;
  }
  return true;
}

/// Writes the columns up to the text, in place: appending piece by piece takes several times as long.
void Logging::writeColumns(int type, std::string_view prefix) {
  const std::uint32_t id = Util::getThreadId();
  if (id != mThreadId || mThreadColumn.empty()) {
    const std::string number = std::to_string(id);
    mThreadColumn.assign(number.size() < kThreadIdWidth ? kThreadIdWidth - number.size() : 0, ' ');
    mThreadColumn += number;
    mThreadId = id;
  }
  char* p = mOs->extend(kTimeWidth + kTypeWidth + mThreadColumn.size() + prefix.size() + 5);
  Util::writeTime(p);
  p += kTimeWidth;
  *p++ = '|';
  p = std::copy_n(kTypeNames[type], kTypeWidth, p);
  *p++ = '|';
  p = std::copy(mThreadColumn.begin(), mThreadColumn.end(), p);
  *p++ = '|';
  p = std::copy(prefix.begin(), prefix.end(), p);
  *p++ = '|';
  *p = ' ';
}

Logging& Logging::operator<<(const std::string& text) {
  if (mIsHexDump)
    writeByteTable(text);
  else
    *mOs << text;
  mIsHexDump = false;
  return *this;
}

void Logging::writeByteTable(const std::string& bytes) {
  *mOs << "\n       0  1  2  3  4  5  6  7  8  9";
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    if (i % kBytesPerRow == 0)
      *mOs << '\n' << std::dec << std::setw(4) << i << ": ";
    *mOs << std::hex << static_cast<int>(static_cast<signed char>(bytes[i])) << ' ';
  }
  *mOs << std::hex;
}

Logging& Logging::operator<<(int number) {
  if (number == LOG_HEX_DUMP) {
    mIsHexDump = true;
  } else if (number != LOG_MAGIC) {
    *mOs << number;
  } else {
    endRecord();
  }
  return *this;
}

void Logging::endRecord() {
  try {
    *mOs->extend(1) = '\n';
    rotateIfFull();
    writeOut(mOs->text());
  } catch (...) { // the record is lost, the log goes on
  }
  try {
    mOs->restart();
  } catch (...) { // no memory for new room: the old one serves again
  }
  mMutex.unlock();
}

void Logging::writeRecord(const std::string& line) {
  rotateIfFull();
  writeOut(line + '\n');
}

void Logging::rotateIfFull() {
  // The limit is formed in 32 bits. A file that couldn't be opened again has no position and never reaches
  // it.
  const auto limit = static_cast<std::int32_t>(static_cast<std::uint32_t>(mMaxSize) * kSizeUnit);
  if (mPosition < limit || !mFileStream || !mFileStream->is_open())
    return;
  // Our own count doesn't know of a file that was emptied before the last record, nor of a device that keeps
  // no size.
  mPosition = mFileStream->position();
  if (mPosition >= limit)
    backupLogFile();
}

/// Writes whole lines to the file and to the console, as far as these are on.
void Logging::writeOut(std::string_view lines) {
  if (mFileStream && mIsLogToFile && mFileStream->is_open())
    writeToFile(lines);
  if (mIsLogToCnsl)
    std::cout << lines << std::flush;
}

void Logging::writeToFile(std::string_view text) {
  // A disk that was full a moment ago may have room now. What it took of a record then has no end.
  if (mIsLineTorn)
    mFileStream->write("\n");
  const bool isWhole = mFileStream->write(text);
  if (isWhole && !mIsLineTorn) {
    if (mPosition >= 0) // a pipe has no position
      mPosition += static_cast<std::int64_t>(text.size());
    return;
  }
  const std::int64_t end = mFileStream->position();
  mIsLineTorn = !isWhole && (mIsLineTorn || end > mPosition);
  mPosition = end;
}

void Logging::writeHeader() {
  const std::string rule(90, '-');
  writeOut(rule + "\nOrvane logfile '" + mLogFile + "' opened at " + Util::getDate() + '\n' + rule +
           "\n    Time    |Typ|  TID |      File      | Line|        Class And Method         | LogText"
           "\n------------+---+------+----------------+-----+---------------------------------+---------\n");
}

int Logging::backupLogFile() {
  if (!mFileStream)
    return -1;
  mFileStream->close();
  // The last dot of the whole path counts, even one in a folder's name.
  const std::string backup = mFilePath.substr(0, mFilePath.rfind('.')) + ".bak";
  const std::string nativeBackup = Util::nativePath(backup);
  // The lock is held already, so these two reports can't be records. They go where the third one goes.
  if (!isDoneOrAbsent(std::remove(nativeBackup.c_str()))) {
    std::cout << "'" + backup + "' couldn't be removed!\n" << std::flush;
    return -2;
  }
  if (!isDoneOrAbsent(std::rename(Util::nativePath(mFilePath).c_str(), nativeBackup.c_str()))) {
    std::cout << "File '" + mFilePath + "' couldn't be renamed to '" + backup + "'!\n" << std::flush;
    return -3;
  }
  openFileStream();
  if (!mFileStream->is_open())
    std::cout << "Opening of stream of'" + mFilePath + "' failed!\n" << std::flush;
  else
    writeHeader();
  return 0;
}
