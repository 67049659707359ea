#ifndef LOGGING_H
#define LOGGING_H

#include <cstdint>
#include <fstream>
#include <memory>
#include <sstream>
#include <string>

#include "log_pars.h"
#include "mutex.h"
#include "util.h"

/// Types of log records. Each but ERR has a switch.
enum LogType { ERR = 0, WRN, CRT, TRC, DCM, ICM, INF, DBG, TMP };

/// gLogMagic holds it while gLogging is usable; passed to gLogging it ends a record.
constexpr std::int32_t LOG_MAGIC = 314159;
/// Passed to gLogging, it asks for the byte table of the string that follows.
constexpr std::int32_t LOG_HEX_DUMP = 271828;

/// The one log of the plug-in. Every thread writes to it; a record is a line in fixed columns, or more if its
/// text has line feeds, and is on disk when its statement is over. The file is limited in size by a rotation
/// to a ".bak" beside it.
///
/// Records are written with OV_LOG and in no other way. The lock of the log doesn't nest: nothing that a
/// record's text calls may log.
///
/// No failure of the log stops the system. A record that can't be composed or written is lost.
class Logging : public LogPars {
public:
  Logging();
  ~Logging();
  Logging(const Logging&) = delete;
  Logging& operator=(const Logging&) = delete;

  /// Takes the parameters over and opens the log file, with a header. May be called again, with no other
  /// thread logging meanwhile.
  void init(const LogPars& pars);

  /// The gate. Returns true if the record is wanted: the calling thread then holds the lock, and mOs holds
  /// the columns up to the text. Otherwise returns false, with no lock held.
  /// file    source path; only the part after its last slash counts, or after the last backslash if it has
  ///         no slash
  /// prefix  from Util::logPrefix
  bool beginRecord(int type, const char* file, const std::string& prefix);

  /// Writes the string to mOs, or its byte table if that was asked for.
  Logging& operator<<(const std::string& text);
  /// LOG_MAGIC ends the record and releases the lock; it never throws. LOG_HEX_DUMP asks for the byte table.
  /// Any other number goes to mOs in decimal.
  Logging& operator<<(int number);

  /// Renames the log file to ".bak" and begins a new one. For the thread that holds the lock. Returns 0 when
  /// done, -1 without a file, -2 if the old ".bak" couldn't be removed, -3 if the log couldn't be renamed.
  int backupLogFile();
  void writeHeader();
  /// Rotates if the limit has been reached, then writes the line to all sinks.
  void writeRecord(const std::string& line);

  std::string mFilePath; // empty until init has set it
  // The record being built. Replaced at each record's end, so that no manipulator of one record reaches the
  // next.
  std::unique_ptr<std::ostringstream> mOs;
  std::unique_ptr<std::ofstream> mFileStream; // null when file logging isn't set up
  Mutex mMutex;
  bool mIsHexDump;

private:
  bool isOn(int type) const;
  void openFile(const std::string& nativePath);
  void endRecord() noexcept;
  void renewStream() noexcept;
  void writeLine(const std::string& line);
  void writeByteTable(const std::string& bytes);
};

/// The one log. The module defines it beside its other globals, which decides when it is constructed and
/// destroyed; test programs define their own. Statements do nothing before and after its life.
extern Logging& gLogging;
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

/// Composes the prefix and asks the gate. Returns false, with no lock held, if the record isn't wanted or
/// there is no memory.
inline bool beginLogRecord(int type, const char* file, int line, const char* className,
                           const char* method) noexcept {
  try {
    return gLogging.beginRecord(type, file, Util::logPrefix(file, line, className, method));
  } catch (...) {
    return false;
  }
}

/// The log statement.
///
///     OV_LOG(INF, "DaemonProxy", "DaemonProxy::connect", "devIdx: " << i << ":" << name);
///
/// Does nothing while there is no log, and evaluates the text only if the record is wanted. Never throws: a
/// record whose text can't be composed is lost.
#define OV_LOG(type, className, method, text)                                                                \
  do {                                                                                                       \
    if (gLogMagic == LOG_MAGIC &&                                                                            \
        beginLogRecord(type, logSourceName(__FILE__), __LINE__, className, method)) {                        \
      try {                                                                                                  \
        *gLogging.mOs << text;                                                                               \
      } catch (...) {                                                                                        \
        gLogging.mOs->setstate(std::ios::badbit);                                                            \
      }                                                                                                      \
      gLogging << LOG_MAGIC;                                                                                 \
    }                                                                                                        \
  } while (false)

#endif
