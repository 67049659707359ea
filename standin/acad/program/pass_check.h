#ifndef PASS_CHECK_H
#define PASS_CHECK_H

#include "call_log.h"
#include "check.h"

#include <filesystem>
#include <memory>

namespace program {

/// Holds every tick and pass of the plug-in against the model while a session runs, on the trace's thread.
class PassCheck {
public:
  /// Starts the trace; to be made before the plug-in's load message.
  /// home  the user's folder, as USERPROFILE has it
  explicit PassCheck(const std::filesystem::path& home);
  ~PassCheck();
  PassCheck(const PassCheck&) = delete;
  PassCheck& operator=(const PassCheck&) = delete;

  /// Ends the trace, and returns what was found.
  const model::Check& finish();

private:
  void take(const call_log::Record& record);
  void takeOutside(const call_log::Record& record);
  void endTick(const call_log::Record& bracket);
  model::Check& check();
  model::Settings readSettings();
  void readMenu();
  std::string logNote(bool isEnd);

  // Of the main thread.
  std::filesystem::path mLog;
  std::uintmax_t mLogStart = 0;
  std::string mThreadColumn;

  // Of the trace's thread.
  std::string mFolder; // of settings and menu file
  double mStart = 0;
  std::unique_ptr<model::Check> mCheckP;
  model::Tick mTick;
  bool mIsMenuRead = false;
};

} // namespace program

#endif
