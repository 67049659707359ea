#include "active.h"
#include "call_log.h"

#include <chrono>
#include <condition_variable>
#include <exception>
#include <mutex>
#include <thread>

namespace call_log {

namespace {

constexpr std::size_t kMostWaiting = 8192; // records
/// How often the worker looks: waking it for each record would cost the caller more than the record.
constexpr std::chrono::milliseconds kWorkerNap{5};

/// Between the callers and the worker.
struct Waiting {
  std::mutex mutex;
  std::condition_variable isToEndNow; // for the worker
  std::condition_variable isEmptied;  // for callers and flushTrace()
  std::vector<Record> records;        // in the order in which they came
  bool isWorking = false;             // the worker holds records that the sink hasn't received yet
  bool isToEnd = false;
  bool isWarm = false; // the worker has waited once
  std::function<void(Record&&)> sink;
  std::function<std::string(bool)> note;
  std::thread worker;
};

Waiting& waiting() {
  static Waiting* const waitingP = new Waiting; // see state()
  return *waitingP;
}

std::atomic<std::int64_t> gOrder{0};
std::atomic<int> gThreads{0};

/// What a thread is in. At most one call and one bracket of it are being recorded.
struct ThreadState {
  const int number = ++gThreads;
  int depth = 0;
  int exceptions = 0;         // of this library, at the call's entry
  bool isBracketOpen = false; // the outermost one is a bracket
  Record call;
  Record bracket;
};

ThreadState& threadState() {
  thread_local ThreadState state;
  return state;
}

double unixSeconds() {
  return std::chrono::duration<double>(std::chrono::system_clock::now().time_since_epoch()).count();
}

Record beginRecord(const char* name) {
  Record record;
  record.name = name;
  record.thread = threadState().number;
  record.entered = ++gOrder;
  record.seconds = unixSeconds();
  return record;
}

/// Hands a record to the worker.
void push(Record record, bool isEntry) {
  Waiting& w = waiting();
  std::unique_lock<std::mutex> lock(w.mutex);
  w.isEmptied.wait(lock, [&w] { return w.records.size() < kMostWaiting; });
  record.order = ++gOrder;
  if (isEntry)
    record.entered = record.order;
  w.records.push_back(std::move(record));
}

void work() {
  Waiting& w = waiting();
  std::unique_lock<std::mutex> lock(w.mutex);
  w.isToEndNow.wait_for(lock, std::chrono::milliseconds(0));
  w.isWarm = true;
  w.isEmptied.notify_all();
  while (!w.isToEnd || !w.records.empty()) {
    w.isToEndNow.wait_for(lock, kWorkerNap, [&w] { return w.isToEnd; });
    std::vector<Record> taken;
    taken.swap(w.records);
    w.isWorking = true;
    lock.unlock();
    for (Record& record : taken)
      w.sink(std::move(record));
    lock.lock();
    w.isWorking = false;
    w.isEmptied.notify_all();
  }
}

} // namespace

namespace detail {

std::atomic<bool> gIsTracing{false};

Record* beginCall(const char* name, bool& isEntered) {
  if (!gIsTracing.load(std::memory_order_relaxed))
    return nullptr;
  ThreadState& t = threadState();
  isEntered = true;
  if (++t.depth > (t.isBracketOpen ? 2 : 1))
    return nullptr;
  t.exceptions = std::uncaught_exceptions(); // of this library: it throws what tests order
  t.call = beginRecord(name);
  t.call.isBracketed = t.isBracketOpen;
  return &t.call;
}

void enterCall(const Record& record) {
  if (!record.isBracketed)
    push(record, true);
}

void endCall(Record* record, bool threw) {
  ThreadState& t = threadState();
  --t.depth;
  if (!record)
    return;
  if (threw || std::uncaught_exceptions() > t.exceptions) {
    record->threw = true;
    record->out.clear();
    record->outText.clear();
  }
  push(std::move(*record), false);
}

bool openBracket(const char* name) {
  if (!gIsTracing.load(std::memory_order_relaxed))
    return false;
  ThreadState& t = threadState();
  if (++t.depth > 1)
    return true;
  if (waiting().note)
    waiting().note(false);
  t.isBracketOpen = true;
  t.bracket = beginRecord(name);
  t.bracket.isBracket = true;
  push(t.bracket, true);
  return true;
}

void closeBracket() {
  ThreadState& t = threadState();
  if (--t.depth > 0)
    return;
  t.isBracketOpen = false;
  if (waiting().note)
    t.bracket.note = waiting().note(true);
  push(std::move(t.bracket), false);
}

} // namespace detail

void startTrace(std::function<void(Record&&)> sink) {
  stopTrace();
  Waiting& w = waiting();
  w.sink = std::move(sink);
  w.isToEnd = w.isWarm = false;
  w.worker = std::thread(work);
  // Threads, waits and thread-local objects ask the system's loader at their first use on Windows, some of them with a
  // lock held. A module that makes calls while it is being loaded would then wait for the worker, and the worker for
  // it.
  threadState();
  unixSeconds();
  {
    std::unique_lock<std::mutex> lock(w.mutex);
    w.isEmptied.wait(lock, [&w] { return w.isWarm; });
  }
  detail::gIsTracing = true;
  detail::refreshActive();
}

std::int64_t takeOrder() {
  return ++gOrder;
}

void flushTrace() {
  Waiting& w = waiting();
  std::unique_lock<std::mutex> lock(w.mutex);
  w.isEmptied.wait(lock, [&w] { return (w.records.empty() && !w.isWorking) || !w.worker.joinable(); });
}

void stopTrace() {
  Waiting& w = waiting();
  if (!w.worker.joinable())
    return;
  detail::gIsTracing = false;
  detail::refreshActive();
  {
    const std::lock_guard<std::mutex> lock(w.mutex);
    w.isToEnd = true;
  }
  w.isToEndNow.notify_one();
  w.worker.join();
  w.sink = nullptr;
}

void noteBrackets(std::function<std::string(bool)> note) {
  waiting().note = std::move(note);
}

} // namespace call_log
