#ifndef LOGGING_H
#define LOGGING_H

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "log_file.h"
#include "log_pars.h"
#include "mutex.h"
#include "record_stream.h"
#include "util.h"

/// Types of log records, as the column Typ and the gates know them. ERR has no gate.
enum LogType { ERR = 0, WRN, CRT, TRC, DCM, ICM, INF, DBG, TMP };

/// gLogMagic holds it while gLogging is usable; passed to gLogging it ends a record.
constexpr std::int32_t LOG_MAGIC = 314159;
/// Passed to gLogging, it asks for the byte table of the string that follows.
constexpr std::int32_t LOG_HEX_DUMP = 271828;

/// The one log of the plug-in. Every thread writes to it; a record is one line in fixed columns, and each is
/// on disk when its statement is over. The file is limited in size by a rotation to a ".bak" beside it.
///
/// Records are written with OV_LOG and in no other way. The lock of the log doesn't nest: nothing that a
/// record's text calls may log.
///
/// No failure of the log stops the system. A record that can't be written is lost.
class Logging : public LogPars {
public:
  Logging();
  ~Logging();
  Logging(const Logging&) = delete;
  Logging& operator=(const Logging&) = delete;

  /// Takes the parameters over and opens the log file, with a header. May be called again, with no other
  /// thread logging meanwhile.
  void init(const LogPars& pars);

  /// True if records of that type are wanted at all.
  bool isOn(int type) const {
    switch (type) { // by hand rather than by table: at a statement, where the type is known, it is one load
    case ERR:
      return true;
    case WRN:
      return mIsWarning;
    case CRT:
      return mIsCreation;
    case TRC:
      return mIsTrace;
    case DCM:
      return mIsDevCom;
    case ICM:
      return mIsIntCom;
    case INF:
      return mIsInfo;
    case DBG:
      return mIsDebug;
    case TMP:
      return mIsTmp;
    default:
      return false;
    }
  }

  /// The gate. True: the record is wanted, the calling thread holds the lock, and mOs holds the columns up to
  /// the text. False: nothing has happened.
  /// file    source path; the name behind its last slash, or else backslash, counts
  /// prefix  from Util::logPrefix
  bool beginRecord(int type, const char* file, std::string_view prefix);

  /// Writes the string to mOs, or its byte table if that was asked for.
  Logging& operator<<(const std::string& text);
  /// LOG_MAGIC ends the record and gives the lock back, LOG_HEX_DUMP asks for the byte table, any other
  /// number goes to mOs in decimal.
  Logging& operator<<(int number);

  /// Renames the log file to ".bak" and begins a new one. For the thread that holds the lock. Gives 0 when
  /// done, -1 without a file, -2 if the old ".bak" couldn't be removed, -3 if the log couldn't be renamed.
  int backupLogFile();
  void writeHeader();
  /// Rotates if the limit has been reached, then writes the line to all sinks.
  void writeRecord(const std::string& line);

  std::string mFilePath; // empty until init has set it
  // The record being built. It is as good as new at each record's start, so that no manipulator of one record
  // reaches the next.
  std::unique_ptr<RecordStream> mOs;
  std::unique_ptr<LogFile> mFileStream; // null when file logging isn't set up
  Mutex mMutex;
  bool mIsHexDump;

private:
  void openFileStream();
  void writeColumns(int type, std::string_view prefix);
  void endRecord();
  void rotateIfFull();
  void writeOut(std::string_view lines);
  void writeToFile(std::string_view text);
  void writeByteTable(const std::string& bytes);

  // The thread of the last record, most likely that of the next as well, and its column.
  std::uint32_t mThreadId;
  std::string mThreadColumn;
  // Write position of the file. Counted here, since asking the stream costs a system call for each record.
  std::int64_t mPosition;
  bool mIsLineTorn; // the file ends in what a full disk took of a record
};

extern Logging gLogging;
extern std::int32_t gLogMagic;

/// The name of a source file, without its folders. Compilers write __FILE__ with either slash; the columns of
/// a record are cut at backslashes alone.
constexpr const char* logSourceName(const char* path) {
  const char* name = path;
  for (const char* p = path; *p; ++p) {
    if (*p == '/' || *p == '\\')
      name = p + 1;
  }
  return name;
}

/// The prefix of one place in the sources, kept there from the first record on.
///
/// It has nothing to destroy: a statement may still run while the library's static objects go, in the
/// destructor of one that is older than the statement's first record.
class LogPrefix {
public:
  explicit LogPrefix(const std::string& text) : mSize(text.copy(mText, sizeof mText)) {}
  std::string_view columns() const { return std::string_view(mText, mSize); }

private:
  char mText[64]; // the columns take 63 with a line number of eleven digits
  std::size_t mSize;
};

/// Ends the record when its text stands, also when the making of the text has thrown: the lock would never
/// come back otherwise.
class LogRecordEnd {
public:
  LogRecordEnd() = default;
  LogRecordEnd(const LogRecordEnd&) = delete;
  LogRecordEnd& operator=(const LogRecordEnd&) = delete;
  ~LogRecordEnd() { gLogging << LOG_MAGIC; }
};

/// The log statement.
///
///     OV_LOG(INF, "DaemonProxy", "DaemonProxy::connect", "devIdx: " << i << ":" << name);
///
/// Does nothing while there is no log, and evaluates the text only if the record is wanted. The prefix is
/// made once for each place.
#define OV_LOG(type, className, method, text)                                                                \
  do {                                                                                                       \
    if (gLogMagic == LOG_MAGIC && gLogging.isOn(type)) {                                                     \
      constexpr const char* ovLogSource = logSourceName(__FILE__);                                           \
      static const LogPrefix ovLogPrefix(Util::logPrefix(ovLogSource, __LINE__, className, method));         \
      if (gLogging.beginRecord(type, ovLogSource, ovLogPrefix.columns())) {                                  \
        const LogRecordEnd ovLogEnd;                                                                         \
        *gLogging.mOs << text;                                                                               \
      }                                                                                                      \
    }                                                                                                        \
  } while (false)

#endif
