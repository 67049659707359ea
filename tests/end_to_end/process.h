#ifndef PROCESS_H
#define PROCESS_H

#include <map>
#include <string>
#include <vector>

/// A program run by a test. It is ended with the object if it still runs then, so that no test leaves one
/// behind.
class Process {
public:
  /// Starts the program. What it prints goes to the file. The variables are set for it alone.
  Process(const std::string& program, const std::vector<std::string>& arguments,
          const std::string& outputFile, const std::map<std::string, std::string>& variables = {});
  ~Process();
  Process(const Process&) = delete;
  Process& operator=(const Process&) = delete;

  bool isRunning();
  /// Waits for the end, so many seconds at most. Gives the exit status; -1 if the program still runs, or was
  /// ended by a signal.
  int wait(double seconds);

private:
  void end();

#ifdef _WIN32
  void* mHandle = nullptr;
#else
  int mPid = -1;
#endif
  bool mIsEnded = false;
  int mStatus = -1;
};

#endif
