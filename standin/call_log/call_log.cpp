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
  bool isCounting = false;
  std::vector<std::string> journal;
  std::int64_t count = 0;
  std::multimap<std::string, Order> orders; // by operation; empty: any
  std::string lastFault;
};

State& state() {
  // Never destroyed: threads and static objects of a module may report calls while the process ends.
  static State* const stateP = new State;
  return *stateP;
}

/// The state, locked for as long as this object lives.
class Locked {
public:
  Locked() : mLock(state().mutex) {}
  ~Locked() {
    const State& s = state();
    detail::gIsActive.store(s.isRecording || s.isCounting || !s.orders.empty() || detail::gIsTracing);
  }
  Locked(const Locked&) = delete;
  Locked& operator=(const Locked&) = delete;
  State* operator->() const { return &state(); }

private:
  std::lock_guard<std::mutex> mLock;
};

thread_local Code gCode = Code::PlugIn; // threads that no stand-in has made are the plug-in's

} // namespace

namespace detail {

std::atomic<bool> gIsActive{false};

Code setCurrentCode(Code code) {
  return std::exchange(gCode, code);
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
  const Locked refreshes;
}

bool enterActive(const char* operation, const std::string& arguments) {
  const Locked s;
  ++s->count;
  if (s->isRecording)
    s->journal.push_back(operation + arguments);
  bool isStruck = false;
  bool isThrow = false;
  for (auto& [name, order] : s->orders) {
    if ((name.empty() || name == operation) && order.strikes()) {
      isStruck = true;
      isThrow = isThrow || order.isThrow;
    }
  }
  if (!isStruck)
    return false;
  s->lastFault = operation;
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
  const Locked s;
  s->journal.clear();
  s->isRecording = true;
}

std::vector<std::string> stopRecording() {
  const Locked s;
  s->isRecording = false;
  return std::move(s->journal);
}

void failAt(const std::string& operation, std::int64_t nth, int times) {
  Locked()->orders.insert({operation, {nth, times, false}});
}

void throwAt(const std::string& operation, std::int64_t nth, int times) {
  Locked()->orders.insert({operation, {nth, times, true}});
}

void startCounting() {
  const Locked s;
  s->count = 0;
  s->isCounting = true;
}

std::int64_t count() {
  return Locked()->count;
}

std::string lastFault() {
  return Locked()->lastFault;
}

void clear() {
  const Locked s;
  s->isRecording = false;
  s->isCounting = false;
  s->journal.clear();
  s->count = 0;
  s->orders.clear();
  s->lastFault.clear();
}

} // namespace call_log
