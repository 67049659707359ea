#include "logging.h"

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
constexpr std::size_t kBytesPerRow = 10;
const bool kAlways = true;

/// Removes or renames without complaint about a file that isn't there.
bool isDoneOrAbsent(int result) {
  return result == 0 || errno == ENOENT;
}

} // namespace

Logging::Logging()
    : mMutex("Logging"),
      mIsHexDump(false), mGates{&kAlways,   &mIsWarning, &mIsCreation, &mIsTrace, &mIsDevCom,
                                &mIsIntCom, &mIsInfo,    &mIsDebug,    &mIsTmp},
      mPosition(0), mIsLineTorn(false) {
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
  mFileStream = std::make_unique<std::ofstream>();
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
  mFileStream->clear();
  // Without a buffer a record goes out whole in one system call, and one that the disk refuses doesn't stay
  // behind to be written later, in the middle of another.
  mFileStream->rdbuf()->pubsetbuf(nullptr, 0);
  // Binary: line feeds alone, on every system.
  mFileStream->open(Util::nativePath(mFilePath), std::ios::out | std::ios::app | std::ios::binary);
  mFileStream->seekp(0, std::ios::end);
  mPosition = mFileStream->is_open() ? static_cast<std::int64_t>(mFileStream->tellp()) : -1;
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
    std::string& line = mOs->text();
    line.assign(kTimeWidth, ' ');
    Util::writeTime(&line[0]);
    line += '|';
    line += kTypeNames[type];
    line += '|';
    char id[12];
    const int size =
        std::snprintf(id, sizeof id, "%*u", static_cast<int>(kThreadIdWidth), Util::getThreadId());
    line.append(id, static_cast<std::size_t>(size));
    line += '|';
    line += prefix;
    line += "| ";
  } catch (...) {
    mMutex.unlock(); // no memory for the record: it is lost, the lock isn't
    return false;
  }
  return true;
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
    try {
      writeRecord(mOs->text());
    } catch (...) { // the record is lost, the log goes on
    }
    try {
      mOs->restart();
    } catch (...) {
      mOs->text().clear();
    }
    mMutex.unlock();
  }
  return *this;
}

void Logging::writeRecord(const std::string& line) {
  // The limit is formed in 32 bits. A file that couldn't be opened again has no position and never reaches
  // it.
  const auto limit = static_cast<std::int32_t>(static_cast<std::uint32_t>(mMaxSize) * kSizeUnit);
  if (mFileStream && mFileStream->is_open() && mPosition >= limit)
    backupLogFile();
  writeLine(line);
}

/// Writes a line and a line feed to the file and to the console, as far as these are on.
void Logging::writeLine(const std::string& line) {
  mWholeLine.assign(line);
  mWholeLine += '\n';
  if (mFileStream && mIsLogToFile && mFileStream->is_open())
    writeToFile(mWholeLine);
  if (mIsLogToCnsl)
    std::cout << mWholeLine << std::flush;
}

void Logging::writeToFile(const std::string& text) {
  // A disk that was full a moment ago may have room now. What it took of a record then has no end.
  mFileStream->clear();
  if (mIsLineTorn)
    mFileStream->put('\n');
  const bool isWhole = !mFileStream->write(text.data(), static_cast<std::streamsize>(text.size())).fail();
  if (isWhole && !mIsLineTorn) {
    mPosition += static_cast<std::int64_t>(text.size());
    return;
  }
  mFileStream->clear();
  const auto end = static_cast<std::int64_t>(mFileStream->tellp());
  mIsLineTorn = !isWhole && (mIsLineTorn || end > mPosition);
  mPosition = end;
}

void Logging::writeHeader() {
  const std::string rule(90, '-');
  writeLine(rule + "\nOrvane logfile '" + mLogFile + "' opened at " + Util::getDate() + '\n' + rule +
            "\n    Time    |Typ|  TID |      File      | Line|        Class And Method         | LogText"
            "\n------------+---+------+----------------+-----+---------------------------------+---------");
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
