#include "logging.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <iomanip>
#include <iostream>
#include <locale>

std::int32_t gLogMagic = 0;

namespace {

constexpr const char* kTypeNames[] = {"ERR", "WRN", "CRT", "TRC", "DCM", "ICM", "INF", "DBG", "TMP"};
constexpr std::uint32_t kSizeUnit = 1000; // bytes, unit of mMaxSize
constexpr int kThreadIdWidth = 6;
constexpr std::size_t kBytesPerRow = 10;

/// Returns true if a removal or renaming succeeded, or the file wasn't there.
bool isDoneOrAbsent(int result) {
  return result == 0 || errno == ENOENT;
}

/// A host that sets a locale for the process mustn't put grouping dots into our numbers.
std::unique_ptr<std::ostringstream> makeRecordStream() {
  auto osP = std::make_unique<std::ostringstream>();
  osP->imbue(std::locale::classic());
  return osP;
}

} // namespace

Logging::Logging() : mMutex("Logging"), mIsHexDump(false) {
  mLogFile = "c:\\def_log.txt";
  mMaxSize = 5000;
  mIsLogToFile = mIsLogToCnsl = mIsWarning = mIsCreation = mIsTrace = false;
  mIsDevCom = mIsIntCom = mIsInfo = mIsDebug = mIsTmp = false;
  mOs = makeRecordStream();
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
  openFile(Util::nativePath(mFilePath));
  if (!*mFileStream) {
    OV_LOG(ERR, "Logging", "Logging::init", "Opening log file '" << mLogFile << "failed!");
    mIsLogToFile = false;
    return;
  }
  writeHeader();
}

/// Opens the file at its end, or a new one. Others may read it, or append to it, meanwhile.
void Logging::openFile(const std::string& nativePath) {
  // Unbuffered: text that a full disk refused isn't written again before the next record.
  mFileStream->rdbuf()->pubsetbuf(nullptr, 0);
  mFileStream->open(nativePath, std::ios::out | std::ios::app | std::ios::binary);
}

bool Logging::isOn(int type) const {
  const bool isOn[] = {true,      mIsWarning, mIsCreation, mIsTrace, mIsDevCom,
                       mIsIntCom, mIsInfo,    mIsDebug,    mIsTmp};
  return type >= ERR && type <= TMP && isOn[type];
}

bool Logging::beginRecord(int type, const char* file, const std::string& prefix) {
  const char* separatorP = std::strrchr(file, '/');
  if (!separatorP)
    separatorP = std::strrchr(file, '\\');
  if (!mExclFileToLog.empty() && mExclFileToLog != (separatorP ? separatorP + 1 : file))
    return false;
  if (!isOn(type) || mMutex.lock() != 0)
    return false;
  try {
    *mOs << Util::getTime() << '|' << kTypeNames[type] << '|' << std::setw(kThreadIdWidth)
         << Util::getThreadId() << '|' << prefix << "| ";
  } catch (...) { // the record is lost, the lock isn't
    renewStream();
    mMutex.unlock();
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
  if (number == LOG_HEX_DUMP)
    mIsHexDump = true;
  else if (number == LOG_MAGIC)
    endRecord();
  else
    *mOs << number;
  return *this;
}

void Logging::endRecord() noexcept {
  try {
    const bool isWhole = mOs->good(); // some of the text is lost if memory ran out
    const std::string line = mOs->str();
    renewStream();
    if (isWhole)
      writeRecord(line);
  } catch (...) {
    renewStream();
  }
  mMutex.unlock();
}

/// Puts a new stream in the old one's place; with no memory for one, the old one is emptied.
void Logging::renewStream() noexcept {
  try {
    mOs = makeRecordStream();
  } catch (...) {
    mOs->clear();
    mOs->str(std::string());
  }
}

void Logging::writeRecord(const std::string& line) {
  // The limit is formed in 32 bits. The position of a failed stream is -1, which reaches no limit.
  const auto limit = static_cast<std::int32_t>(static_cast<std::uint32_t>(mMaxSize) * kSizeUnit);
  const std::streamoff position = mFileStream ? std::streamoff(mFileStream->tellp()) : -1;
  if (position != -1 && position >= limit)
    backupLogFile();
  writeLine(line);
}

/// Writes to the file and to the console, as far as these are on.
void Logging::writeLine(const std::string& line) {
  if (mFileStream && mIsLogToFile) {
    mFileStream->clear(); // a disk that was full a moment ago may have room now
    *mFileStream << line + '\n' << std::flush;
  }
  if (mIsLogToCnsl)
    std::cout << line << '\n' << std::flush;
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
  // The last dot of the whole path counts, even one in a folder's name.
  const std::string backup = mFilePath.substr(0, mFilePath.rfind('.')) + ".bak";
  const std::string nativeBackup = Util::nativePath(backup);
  const std::string nativeFile = Util::nativePath(mFilePath);
  mFileStream->close();
  // The lock is held, so these reports can't be records. They go to standard output.
  if (!isDoneOrAbsent(std::remove(nativeBackup.c_str()))) {
    std::cout << "'" + backup + "' couldn't be removed!\n" << std::flush;
    return -2;
  }
  if (!isDoneOrAbsent(std::rename(nativeFile.c_str(), nativeBackup.c_str()))) {
    std::cout << "File '" + mFilePath + "' couldn't be renamed to '" + backup + "'!\n" << std::flush;
    return -3;
  }
  openFile(nativeFile);
  if (!*mFileStream)
    std::cout << "Opening of stream of'" + mFilePath + "' failed!\n" << std::flush;
  else
    writeHeader();
  return 0;
}
