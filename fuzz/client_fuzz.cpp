// The functions of the device library, called by two threads in any order with any arguments, while a daemon sends
// anything and hangs up at any time. Each call returns, writes what its result allows and nothing beside it. A movement
// ends when the link does, and a good daemon then finds a library that works.
//
// Input: how the daemon greets; for each thread the number of its calls and a byte for each; then the daemon's pieces,
// each after a byte for its length: one when it is connected to, and one for each message that it gets.

#include <climits>
#include <future>

#include <poll.h>

#include "fixture.h"
#include "input.h"
#include "require.h"

using fuzz::require;

namespace {

constexpr std::size_t kMaxCalls = 8; // of a thread; one may wait for half a second
constexpr int kPatience = 20;        // of the daemon with a silent client, milliseconds
constexpr char kFill = 0x5A;

void ask(int (*question)(int, void*), std::size_t size, int device, bool isNull) {
  std::vector<char> record(size + 1, kFill);
  const int result = question(device, isNull ? nullptr : record.data());
  const auto untouched = std::count(record.begin(), record.end(), kFill);
  require(record.back() == kFill && ((result == 0 && !isNull) || untouched == long(size + 1)), "its record");
  require(question != ovGetDevInfo || result != 0 || isNull || record[size - 1] == 0, "a name that ends");
}

/// Makes the calls that the orders choose.
/// isDeflected  set if the last sample fetched was a deflection; null: this thread doesn't fetch
void play(const std::string& orders, bool* isDeflected) {
  const std::string names[] = {"fuzz", "", std::string(65, 'x'), "a\nb", std::string(401, 'x'), "\xFF"};
  const int devices[] = {0, 1, -1, INT_MIN};
  for (const char order : orders) {
    const unsigned argument = static_cast<unsigned char>(order) >> 3;
    const int device = devices[argument % 4];
    const char* const nameP = argument % 8 == 7 ? nullptr : names[argument % 8 % 6].c_str();
    const unsigned function = order & 7;
    int count = 0;
    if (function == 0)
      ovDisconnect();
    else if (function == 1)
      require(ovGetDevNum(argument & 1 ? nullptr : &count, nullptr, nullptr) != 0 ||
                  (count >= 0 && count <= 16),
              "a possible number of devices");
    else if (function == 2)
      ask(ovGetDevInfo, 96, device, argument > 15);
    else if (function == 3)
      ask(ovGetAdvancedSettings, 148, device, argument > 15);
    else if (function == 4)
      ovSetApplMode(nameP, names[argument / 8].c_str());
    else if (function > 5)
      require(ovConnect(device, nameP) != 0 || nameP, "no client without a name");
    else if (const std::string event = isDeflected ? fetched() : ""; event[0] == 'm')
      *isDeflected = event != kRelease;
  }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::Input input(data, size);
  const devlink::Bytes greeting = input.flag() ? kWelcome : devlink::Bytes();
  const std::string orders[] = {input.text(input.byte() % (kMaxCalls + 1)),
                                input.text(input.byte() % (kMaxCalls + 1))};
  {
    bool isDeflected = false;
    const FakeDaemon anything([&](RawEnd& end) {
      devlink::Bytes first = greeting;
      pollfd waiting{end.socket().native_handle(), POLLIN, 0};
      do {
        end.send(first + bytes(input.text(input.byte())));
        first.clear();
      } while (poll(&waiting, 1, kPatience) > 0 && end.receive());
      end.socket().close();
    });
    auto other = std::async(std::launch::async, [&] { play(orders[1], nullptr); });
    play(orders[0], &isDeflected);
    other.get();
    ovDisconnect();
    require(!isDeflected || fetched() == kRelease, "a release after a deflection");
  }
  RunningDaemon good;
  require(ovConnect(0, "fuzz") == 0, "a good daemon is found");
  good.play("key 1");
  require(fetched() == "event 131105" && ovDisconnect() == 0, "its key arrives");
  return 0;
}
