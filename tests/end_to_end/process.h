#ifndef PROCESS_H
#define PROCESS_H

#include <string>
#include <vector>

/// A program run by a test. The destructor ends it if it still runs.
class Process {
public:
  /// Starts the program. What it prints goes to the file.
  Process(const std::string& program, const std::vector<std::string>& arguments,
          const std::string& outputFile);
  ~Process();
  Process(const Process&) = delete;
  Process& operator=(const Process&) = delete;

  bool isRunning();
  /// Waits for the end. Returns the exit status; -1 if the program still runs after that time, or was ended by
  /// a signal.
  int wait(double seconds);

private:
#ifdef _WIN32
  void* mHandle = nullptr;
#else
  int mPid = -1;
#endif
  bool mIsEnded = false;
  int mStatus = -1;
};

#endif
