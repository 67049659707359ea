#include "process.h"

#include <chrono>
#include <stdexcept>
#include <thread>

#ifdef _WIN32
#include <windows.h>
#else
#include <csignal>
#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>
#endif

#ifdef _WIN32

Process::Process(const std::string& program, const std::vector<std::string>& arguments,
                 const std::string& outputFile, const std::map<std::string, std::string>& variables) {
  std::string line = "\"" + program + "\"";
  for (const std::string& argument : arguments)
    line += " \"" + argument + "\"";
  SECURITY_ATTRIBUTES inherited{sizeof(SECURITY_ATTRIBUTES), nullptr, TRUE};
  const HANDLE file = CreateFileA(outputFile.c_str(), GENERIC_WRITE, FILE_SHARE_READ, &inherited,
                                  CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
  STARTUPINFOA start{};
  start.cb = sizeof start;
  start.dwFlags = STARTF_USESTDHANDLES;
  start.hStdOutput = start.hStdError = file;
  for (const auto& [name, value] : variables)
    SetEnvironmentVariableA(name.c_str(), value.c_str());
  PROCESS_INFORMATION info{};
  const BOOL isStarted =
      CreateProcessA(nullptr, line.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr, &start, &info);
  for (const auto& [name, value] : variables)
    SetEnvironmentVariableA(name.c_str(), nullptr);
  CloseHandle(file);
  if (!isStarted)
    throw std::runtime_error("can't start " + program);
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

void Process::end() {
  TerminateProcess(mHandle, 99);
  WaitForSingleObject(mHandle, INFINITE);
}

Process::~Process() {
  if (isRunning())
    end();
  CloseHandle(mHandle);
}

#else

Process::Process(const std::string& program, const std::vector<std::string>& arguments,
                 const std::string& outputFile, const std::map<std::string, std::string>& variables) {
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
  for (const auto& [name, value] : variables)
    setenv(name.c_str(), value.c_str(), 1);
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

void Process::end() {
  kill(mPid, SIGKILL);
  waitpid(mPid, nullptr, 0);
}

Process::~Process() {
  if (isRunning())
    end();
}

#endif

int Process::wait(double seconds) {
  const auto until = std::chrono::steady_clock::now() + std::chrono::duration<double>(seconds);
  while (isRunning()) {
    if (std::chrono::steady_clock::now() > until)
      return -1;
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
  return mStatus;
}
