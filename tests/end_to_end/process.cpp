#include "process.h"

#include <chrono>
#include <stdexcept>
#include <thread>

#ifdef _WIN32

#include <windows.h>

Process::Process(const std::string& program, const std::vector<std::string>& arguments,
                 const std::string& outputFile) {
  std::string line = "\"" + program + "\"";
  for (const std::string& argument : arguments)
    line += " \"" + argument + "\"";
  SECURITY_ATTRIBUTES inherited{sizeof(SECURITY_ATTRIBUTES), nullptr, TRUE};
  STARTUPINFOA start{};
  start.cb = sizeof start;
  start.dwFlags = STARTF_USESTDHANDLES;
  start.hStdOutput = start.hStdError =
      CreateFileA(outputFile.c_str(), GENERIC_WRITE, FILE_SHARE_READ, &inherited, CREATE_ALWAYS, 0, nullptr);
  PROCESS_INFORMATION info{};
  if (!CreateProcessA(nullptr, line.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr, &start, &info))
    throw std::runtime_error("can't start " + program);
  CloseHandle(start.hStdOutput);
  CloseHandle(info.hThread);
  mHandle = info.hProcess;
}

bool Process::isRunning() {
  DWORD status = 0;
  if (!mIsEnded && WaitForSingleObject(mHandle, 0) == WAIT_OBJECT_0) {
    GetExitCodeProcess(mHandle, &status);
    mIsEnded = true;
    mStatus = static_cast<int>(status);
  }
  return !mIsEnded;
}

Process::~Process() {
  TerminateProcess(mHandle, 99);
  WaitForSingleObject(mHandle, INFINITE);
  CloseHandle(mHandle);
}

#else

#include <csignal>
#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

Process::Process(const std::string& program, const std::vector<std::string>& arguments,
                 const std::string& outputFile) {
  // All that allocates happens before the fork.
  std::vector<char*> words{const_cast<char*>(program.c_str())};
  for (const std::string& argument : arguments)
    words.push_back(const_cast<char*>(argument.c_str()));
  words.push_back(nullptr);
  mPid = fork();
  if (mPid < 0)
    throw std::runtime_error("can't start " + program);
  if (mPid > 0)
    return;
  const int file = open(outputFile.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
  dup2(file, STDOUT_FILENO);
  dup2(file, STDERR_FILENO);
  execv(program.c_str(), words.data());
  _exit(127);
}

bool Process::isRunning() {
  int status = 0;
  if (!mIsEnded && waitpid(mPid, &status, WNOHANG) == mPid) {
    mIsEnded = true;
    mStatus = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  }
  return !mIsEnded;
}

Process::~Process() {
  if (!isRunning())
    return;
  kill(mPid, SIGKILL);
  waitpid(mPid, nullptr, 0);
}

#endif

int Process::wait(double seconds) {
  const auto until = std::chrono::steady_clock::now() + std::chrono::duration<double>(seconds);
  while (isRunning() && std::chrono::steady_clock::now() < until)
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  return mStatus;
}
