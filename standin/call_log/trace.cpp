#include "active.h"
#include "call_log.h"

#include <chrono>
#include <condition_variable>
#include <exception>
#include <mutex>
#include <thread>

namespace call_log {

namespace {

constexpr std::size_t kSlots = 8192;
/// The worker looks by itself so often, and is woken only when there is much to do: waking it for each record
/// would cost the caller more than the record.
constexpr std::chrono::milliseconds kWorkerNap{5};

/// Between the callers and the worker: records in the order in which they came. Slots keep their memory.
struct Ring {
  std::mutex mutex;
  std::condition_variable isFilled;  // for the worker
  std::condition_variable isEmptied; // for callers and flushTrace()
  std::vector<Record> slots{kSlots};
  std::size_t first = 0;
  std::size_t count = 0;
  bool isWorking = false; // the worker has taken a record that the sink hasn't had yet
  bool isToEnd = false;
  bool isWarm = false; // the worker has waited once
  std::function<void(Record&&)> sink;
  std::function<std::string(bool)> note;
  std::thread worker;
};

Ring& ring() {
  static Ring* const ringP = new Ring; // see state()
  return *ringP;
}

std::atomic<std::int64_t> gOrder{0};
std::atomic<int> gThreads{0};

/// What a thread is in. At most one call and one bracket of it are being recorded.
struct ThreadState {
  const int number = ++gThreads;
  int depth = 0;
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

void beginRecord(Record& record, const char* name) {
  record.name = name;
  record.in.clear();
  record.text.clear();
  record.out.clear();
  record.outText.clear();
  record.threw = record.isBracketed = record.isBracket = false;
  record.note.clear();
  record.thread = threadState().number;
  record.entered = ++gOrder;
  record.seconds = unixSeconds();
}

/// Hands a copy to the worker.
void push(const Record& record, bool isEntry) {
  Ring& r = ring();
  std::unique_lock<std::mutex> lock(r.mutex);
  while (r.count == kSlots) {
    r.isFilled.notify_one();
    r.isEmptied.wait(lock);
  }
  Record& slot = r.slots[(r.first + r.count++) % kSlots];
  slot = record;
  slot.order = ++gOrder;
  if (isEntry)
    slot.entered = slot.order;
  if (r.count == kSlots / 2)
    r.isFilled.notify_one();
}

void work() {
  Ring& r = ring();
  Record record;
  std::unique_lock<std::mutex> lock(r.mutex);
  for (;;) {
    while (r.count > 0) {
      std::swap(record, r.slots[r.first]);
      r.first = (r.first + 1) % kSlots;
      --r.count;
      r.isWorking = true;
      lock.unlock();
      r.sink(std::move(record));
      lock.lock();
      r.isWorking = false;
      if (r.count == 0 || r.count == kSlots / 2)
        r.isEmptied.notify_all();
    }
    if (r.isToEnd)
      return;
    r.isFilled.wait_for(lock, kWorkerNap);
    if (!r.isWarm) {
      r.isWarm = true;
      r.isEmptied.notify_all();
    }
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
  beginRecord(t.call, name);
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
  if (threw) {
    record->threw = true;
    record->out.clear();
    record->outText.clear();
  }
  push(*record, false);
}

bool openBracket(const char* name) {
  if (!gIsTracing.load(std::memory_order_relaxed))
    return false;
  ThreadState& t = threadState();
  if (++t.depth > 1)
    return true;
  if (ring().note)
    ring().note(false);
  t.isBracketOpen = true;
  beginRecord(t.bracket, name);
  t.bracket.isBracket = true;
  push(t.bracket, true);
  return true;
}

void closeBracket() {
  ThreadState& t = threadState();
  if (--t.depth > 0)
    return;
  t.isBracketOpen = false;
  if (ring().note)
    t.bracket.note = ring().note(true);
  push(t.bracket, false);
}

} // namespace detail

void startTrace(std::function<void(Record&&)> sink) {
  stopTrace();
  Ring& r = ring();
  r.sink = std::move(sink);
  r.isToEnd = false;
  r.isWarm = false;
  r.worker = std::thread(work);
  // Threads, waits and thread-local objects ask the system's loader at their first use on Windows, some of them with a
  // lock held. A module that makes calls while it is being loaded would then wait for the worker, and the worker for it.
  threadState();
  unixSeconds();
  {
    std::unique_lock<std::mutex> lock(r.mutex);
    r.isEmptied.wait(lock, [&r] { return r.isWarm; });
  }
  detail::gIsTracing = true;
  detail::refreshActive();
}

void flushTrace() {
  Ring& r = ring();
  std::unique_lock<std::mutex> lock(r.mutex);
  while (r.count > 0 || r.isWorking) {
    r.isFilled.notify_one();
    r.isEmptied.wait_for(lock, kWorkerNap);
  }
}

void stopTrace() {
  Ring& r = ring();
  if (!r.worker.joinable())
    return;
  detail::gIsTracing = false;
  detail::refreshActive();
  {
    const std::lock_guard<std::mutex> lock(r.mutex);
    r.isToEnd = true;
  }
  r.isFilled.notify_one();
  r.worker.join();
  r.sink = nullptr;
}

void noteBrackets(std::function<std::string(bool)> note) {
  ring().note = std::move(note);
}

} // namespace call_log
