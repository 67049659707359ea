#include "windows.h"

#include <chrono>
#include <future>
#include <memory>
#include <thread>

namespace {

struct Thread {
  std::thread thread;
  std::future<void> ended;

  bool isOver(DWORD milliseconds) const {
    return ended.wait_for(std::chrono::milliseconds(milliseconds)) == std::future_status::ready;
  }
};

/// Thrown to leave a thread's function without returning to it.
struct ThreadExit {
  HMODULE module = nullptr;
};

void run(LPTHREAD_START_ROUTINE start, LPVOID argument) {
  HMODULE module = nullptr;
  try {
    start(argument);
  } catch (const ThreadExit& exit) {
    module = exit.module;
  }
  if (module)
    FreeLibrary(module); // its frames have left this stack
}

} // namespace

HANDLE WINAPI CreateThread(SECURITY_ATTRIBUTES*, std::size_t, LPTHREAD_START_ROUTINE start, LPVOID argument,
                           DWORD, DWORD*) {
  std::packaged_task<void()> task([start, argument] { run(start, argument); });
  auto* const threadP = new Thread;
  threadP->ended = task.get_future();
  threadP->thread = std::thread(std::move(task));
  return threadP;
}

DWORD WINAPI WaitForSingleObject(HANDLE thread, DWORD milliseconds) {
  return static_cast<Thread*>(thread)->isOver(milliseconds) ? WAIT_OBJECT_0 : WAIT_TIMEOUT;
}

BOOL WINAPI CloseHandle(HANDLE thread) {
  const std::unique_ptr<Thread> threadP(static_cast<Thread*>(thread));
  if (threadP->isOver(0))
    threadP->thread.join();
  else
    threadP->thread.detach();
  return TRUE;
}

void WINAPI FreeLibraryAndExitThread(HMODULE module, DWORD) {
  throw ThreadExit{module};
}
