// The seven functions of the device library, called by two threads in any order with any arguments, while a daemon
// sends anything and hangs up at any time. Each call returns, writes what its result allows and nothing beside it. A
// movement ends when the link does, and a good daemon then finds a library that works.
//
// Input: how the daemon greets; for each thread the number of its calls and a byte for each; then the daemon's pieces,
// each after a byte for its length: one when it is connected to, and one for whatever it gets.

#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <climits>
#include <cstdlib>
#include <thread>
#include <vector>

#include <netinet/in.h>

#include "input.h"
#include "ov_devlink.h"
#include "require.h"

using fuzz::require;

namespace {

constexpr std::size_t kMaxCalls = 8; // of a thread; one may wait for half a second
constexpr char kFill = 0x5A;
const std::string kWelcome("\6\0\x81\0OVLK\2\0", 10);
const std::string kKeyEvent("\4\0\x87\0\x21\0\2\0", 8);

/// Sends its pieces, and hangs up on a client that stays silent.
class Daemon {
public:
  Daemon(std::vector<std::string> pieces, int patienceMs)
      : mPieces(std::move(pieces)), mPatience{0, patienceMs * 1000} {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    auto* const anyP = reinterpret_cast<sockaddr*>(&address);
    require(bind(mListener, anyP, size) == 0 && listen(mListener, 8) == 0 &&
                getsockname(mListener, anyP, &size) == 0,
            "a port");
    setenv("OV_DEVLINK_PORT", std::to_string(ntohs(address.sin_port)).c_str(), 1);
    mThread = std::thread([this] { run(); });
  }
  ~Daemon() {
    shutdown(mListener, SHUT_RDWR);
    mThread.join();
    close(mListener);
  }

private:
  void run() {
    for (int client; (client = accept(mListener, nullptr, nullptr)) >= 0; close(client)) {
      setsockopt(client, SOL_SOCKET, SO_RCVTIMEO, &mPatience, sizeof mPatience);
      char block[4096];
      do {
        if (mNext < mPieces.size())
          send(client, mPieces[mNext].data(), mPieces[mNext].size(), MSG_NOSIGNAL);
        ++mNext;
      } while (recv(client, block, sizeof block, 0) > 0);
    }
  }

  const std::vector<std::string> mPieces;
  const timeval mPatience;
  std::size_t mNext = 0;
  const int mListener = socket(AF_INET, SOCK_STREAM, 0);
  std::thread mThread;
};

/// Fetches as the plug-in does. Returns false if there is no event.
bool fetch(int device, std::array<short, 6>& axes, int& code) {
  const std::array<short, 6> before = axes;
  const bool isFound = ovFetchEvent(device, &axes[0], &axes[1], &axes[2], &axes[3], &axes[4], &axes[5],
                                    nullptr, nullptr, &code, nullptr, nullptr) == 0;
  require(isFound || axes == before, "a fetch that fails writes nothing");
  return isFound;
}

void ask(int (*question)(int, void*), std::size_t size, int device, bool isNull) {
  std::vector<char> record(size + 1, kFill);
  const int result = question(device, isNull ? nullptr : record.data());
  const auto untouched = std::count(record.begin(), record.end(), kFill);
  require(record.back() == kFill && ((result == 0 && !isNull) || untouched == long(size + 1)), "its record");
}

/// Makes the calls that the orders choose.
/// isDeflected  set if the last sample fetched was a deflection; null: this thread doesn't fetch
void play(const std::string& orders, bool* isDeflected) {
  const std::string names[] = {"fuzz", "", std::string(65, 'x'), "a\nb", std::string(401, 'x'), "\xFF"};
  const int devices[] = {0, 1, -1, INT_MIN};
  std::array<short, 6> axes{};
  for (const char order : orders) {
    const unsigned argument = static_cast<unsigned char>(order) >> 3;
    const int device = devices[argument % 4];
    const char* const nameP = argument % 8 == 7 ? nullptr : names[argument % 8 % 6].c_str();
    int code = 0;
    switch (order & 7) {
    case 0:
      ovDisconnect();
      break;
    case 1:
      ovGetDevNum(argument & 1 ? nullptr : &code, nullptr, nullptr);
      break;
    case 2:
      ask(ovGetDevInfo, 96, device, argument > 15);
      break;
    case 3:
      ask(ovGetAdvancedSettings, 148, device, argument > 15);
      break;
    case 4:
      ovSetApplMode(nameP, names[argument / 8].c_str());
      break;
    case 5:
      if (isDeflected && fetch(argument % 8 == 1, axes, code) && code < 0)
        *isDeflected = axes != std::array<short, 6>{};
      break;
    default:
      require(ovConnect(device, nameP) != 0 || nameP, "no client without a name");
    }
  }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::Input input(data, size);
  const std::string greeting = input.flag() ? kWelcome : "";
  const std::string orders[] = {input.text(input.byte() % (kMaxCalls + 1)),
                                input.text(input.byte() % (kMaxCalls + 1))};
  std::vector<std::string> pieces;
  while (!input.isAtEnd())
    pieces.push_back((pieces.empty() ? greeting : "") + input.text(input.byte()));
  std::array<short, 6> axes{};
  int code = 0;
  {
    const Daemon anything(std::move(pieces), 20);
    bool isDeflected = false;
    std::thread other([&] { play(orders[1], nullptr); });
    play(orders[0], &isDeflected);
    other.join();
    ovDisconnect();
    require(!isDeflected || (fetch(0, axes, code) && code < 0 && axes == std::array<short, 6>{}),
            "a release after a deflection");
  }
  const Daemon good({kWelcome + kKeyEvent}, 900);
  require(ovConnect(0, "fuzz") == 0 && fetch(0, axes, code) && code == 0x20021 && ovDisconnect() == 0,
          "a good daemon's key arrives");
  return 0;
}
