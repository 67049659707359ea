#include "call_log.h"
#include "active.h"

#include <iomanip>
#include <map>
#include <mutex>
#include <utility>

namespace call_log {

namespace {

struct Order {
  std::int64_t first = 0; // counted down at each call; strikes when it reaches zero
  int times = 0;          // strikes that are left
  bool isThrow = false;

  bool strikes() {
    if (times == 0)
      return false;
    if (first > 0)
      --first;
    if (first > 0)
      return false;
    --times;
    return true;
  }
};

struct State {
  std::mutex mutex;
  bool isRecording = false;
  std::atomic<bool> isJournalOn{false}; // isRecording, for those without the lock
  bool isCounting = false;
  std::vector<std::string> journal;
  std::int64_t count = 0;
  std::multimap<std::string, Order> byName;
  Order any;
  std::string lastFault;

  void refresh() {
    isJournalOn.store(isRecording);
    detail::gIsActive.store(isRecording || isCounting || any.times > 0 || !byName.empty() ||
                            detail::gIsTracing);
  }
};

State& state() {
  // Never destroyed: threads and static objects of a module may report calls while the process ends.
  static State* const stateP = new State;
  return *stateP;
}

thread_local Code gCode = Code::PlugIn; // threads that no stand-in has made are the plug-in's

void order(const std::string& operation, std::int64_t nth, int times, bool isThrow) {
  State& s = state();
  const std::lock_guard<std::mutex> lock(s.mutex);
  s.byName.insert({operation, Order{nth, times, isThrow}});
  s.refresh();
}

void orderAny(std::int64_t nth, bool isThrow) {
  State& s = state();
  const std::lock_guard<std::mutex> lock(s.mutex);
  s.any = Order{nth, 1, isThrow};
  s.refresh();
}

} // namespace

namespace detail {

std::atomic<bool> gIsActive{false};

Code setCurrentCode(Code code) {
  return std::exchange(gCode, code);
}

bool isJournalOn() {
  return state().isJournalOn.load(std::memory_order_relaxed);
}

void show(std::ostream& os, Hex argument) {
  os << " 0x" << std::hex << std::uppercase << std::setfill('0') << std::setw(argument.digits)
     << argument.value << std::dec;
}

void show(std::ostream& os, Word argument) {
  os << ' ' << argument.word;
}

void show(std::ostream& os, Quoted argument) {
  os << " \"" << escaped(argument.value ? argument.value : L"") << '"';
}

void show(std::ostream& os, std::wstring_view text) {
  if (!text.empty())
    os << ' ' << escaped(text);
}

void refreshActive() {
  State& s = state();
  const std::lock_guard<std::mutex> lock(s.mutex);
  s.refresh();
}

bool enterActive(const char* operation, const std::string& arguments) {
  const Entered standIn(Code::StandIn);
  State& s = state();
  const std::lock_guard<std::mutex> lock(s.mutex);
  ++s.count;
  if (s.isRecording)
    s.journal.push_back(operation + arguments);
  bool isStruck = false;
  bool isThrow = false;
  if (s.any.strikes()) {
    isStruck = true;
    isThrow = s.any.isThrow;
  }
  const auto range = s.byName.equal_range(operation);
  for (auto it = range.first; it != range.second; ++it) {
    if (it->second.strikes()) {
      isStruck = true;
      isThrow = isThrow || it->second.isThrow;
    }
  }
  if (!isStruck)
    return false;
  s.lastFault = operation;
  if (isThrow)
    throw InjectedFault(std::string("ordered fault in ") + operation);
  return true;
}

} // namespace detail

Code currentCode() {
  return gCode;
}

std::string escaped(std::wstring_view text) {
  constexpr std::uint32_t kLastByte = 0xFF;
  std::string result;
  for (const wchar_t c : text) {
    if (c == L'\n')
      result += "\\n";
    else if (c == L'\x1b')
      result += "\\e";
    else
      result +=
          static_cast<std::uint32_t>(c) <= kLastByte ? static_cast<char>(static_cast<unsigned char>(c)) : '?';
  }
  return result;
}

void startRecording() {
  State& s = state();
  const std::lock_guard<std::mutex> lock(s.mutex);
  s.journal.clear();
  s.isRecording = true;
  s.refresh();
}

std::vector<std::string> stopRecording() {
  State& s = state();
  const std::lock_guard<std::mutex> lock(s.mutex);
  s.isRecording = false;
  s.refresh();
  return std::move(s.journal);
}

std::vector<std::string> recorded() {
  State& s = state();
  const std::lock_guard<std::mutex> lock(s.mutex);
  return s.journal;
}

void failAt(const std::string& operation, int nth, int times) {
  order(operation, nth, times, false);
}

void throwAt(const std::string& operation, int nth, int times) {
  order(operation, nth, times, true);
}

void failAny(std::int64_t nth) {
  orderAny(nth, false);
}

void throwAny(std::int64_t nth) {
  orderAny(nth, true);
}

void startCounting() {
  State& s = state();
  const std::lock_guard<std::mutex> lock(s.mutex);
  s.count = 0;
  s.isCounting = true;
  s.refresh();
}

std::int64_t count() {
  State& s = state();
  const std::lock_guard<std::mutex> lock(s.mutex);
  return s.count;
}

std::string lastFault() {
  State& s = state();
  const std::lock_guard<std::mutex> lock(s.mutex);
  return s.lastFault;
}

void clear() {
  State& s = state();
  const std::lock_guard<std::mutex> lock(s.mutex);
  s.isRecording = false;
  s.isCounting = false;
  s.journal.clear();
  s.count = 0;
  s.byName.clear();
  s.any = Order{};
  s.lastFault.clear();
  s.refresh();
}

} // namespace call_log
