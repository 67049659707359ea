// The device link in trouble, with the plug-in itself at its end: whatever stands at the daemon's port, the
// host's pump goes on meanwhile, and a good daemon is found afterwards.

#include <atomic>
#include <random>

#include "fixture.h"
#include "host.h"
#include "plugged_in.h"
#include "trial.h"

namespace {

using devlink::Bytes;
using devlink::Kind;
using std::chrono::milliseconds;

using Script = std::function<void(RawEnd&)>;

/// Answers one message as a daemon with one device does. False if the client has gone.
bool answer(RawEnd& end) {
  const auto question = end.receive();
  if (!question)
    return false;
  const auto& [kind, payload] = *question;
  if (kind == Kind::hello)
    return end.send(kWelcome);
  const std::uint32_t number = payload[0] | payload[1] << 8 | payload[2] << 16;
  const Kind reply = devlink::answerTo(kind);
  return end.send(frame(reply, number, kind == Kind::askDevices ? 1 : 0, Bytes(devlink::recordBytes(reply))));
}

struct Peer {
  const char* name;
  Script script;
};

void sayAndListen(RawEnd& end, const Bytes& text) {
  end.send(text);
  end.drain();
}

/// Greets, answers so many questions, then does what it does.
Script afterAnswers(int count, std::function<void(RawEnd&)> then) {
  return [count, then](RawEnd& end) {
    for (int i = 0; i <= count; ++i) {
      if (!answer(end))
        return;
    }
    then(end);
  };
}

Bytes noise() {
  static std::mt19937 random(3);
  Bytes bytes(4096);
  for (auto& byte : bytes)
    byte = static_cast<std::uint8_t>(random());
  return bytes;
}

const Peer kPeers[] = {
    {"hangs up", [](RawEnd&) {}},
    {"silent", [](RawEnd& end) { end.drain(); }},
    {"greets too late",
     [](RawEnd& end) {
       std::this_thread::sleep_for(milliseconds(1200));
       sayAndListen(end, kWelcome);
     }},
    {"another program", [](RawEnd& end) { sayAndListen(end, bytes("HTTP/1.1 400 Bad Request\r\n\r\n")); }},
    {"older version",
     [](RawEnd& end) { sayAndListen(end, frame(Kind::welcome, devlink::kMagic, std::uint16_t{1})); }},
    {"noise", [](RawEnd& end) { sayAndListen(end, noise()); }},
    {"dies in its greeting", [](RawEnd& end) { end.send(half(kWelcome)); }},
    {"dies in a sample", afterAnswers(4,
                                      [](RawEnd& end) {
                                        end.send(half(motionFrame({1, 2, 3, 4, 5, 6})));
                                      })},
    {"dies in an answer", afterAnswers(2, [](RawEnd& end) { end.send(half(frame(Kind::devices, 3, 1))); })},
    {"noise later on", afterAnswers(6, [](RawEnd& end) { sayAndListen(end, noise()); })},
    {"silent later on", afterAnswers(6, [](RawEnd& end) { end.drain(); })},
    {"answers too late", [](RawEnd& end) {
       while (answer(end))
         std::this_thread::sleep_for(milliseconds(700));
     }}};

class Link : public PluggedIn {};

TEST_F(Link, BadPeers) {
  Trial trial("Something that is no good daemon stands at the daemon's port: slow, silent, older, dying, "
              "another program");
  load();
  std::unique_ptr<DaemonProcess> daemon = std::make_unique<DaemonProcess>(mHome, mPort);
  daemon->tell("motion 1 0 0 0 0 0");
  ASSERT_TRUE(pumpUntilSample(1));
  const Usage before = usage();
  short sample = 1;
  const std::int64_t rounds = scaled(1, 25);
  for (std::int64_t round = 0; round < rounds; ++round) {
    for (const Peer& peer : kPeers) {
      daemon.reset();
      bool isVisited = false;
      {
        const FakeDaemon impostor(peer.script, mPort);
        isVisited = pumpUntil([&] { return impostor.mVisits >= 2; });
      }
      daemon = std::make_unique<DaemonProcess>(mHome, mPort);
      daemon->tell("motion " + std::to_string(++sample) + " 0 0 0 0 0");
      trial.count(peer.name, isVisited && pumpUntilSample(sample) && isBackTo(before) && isBalanced());
    }
  }
}

TEST_F(Link, Restarts) {
  Trial trial("The daemon's process is killed under motion and started again");
  load();
  Usage before;
  const std::int64_t rounds = scaled(20, 500);
  for (std::int64_t round = 1; round <= rounds; ++round) {
    const DaemonProcess daemon(mHome, mPort);
    daemon.tell("motion " + std::to_string(round) + " 0 0 0 0 0");
    const bool isFound = pumpUntilSample(static_cast<short>(round));
    if (round == 2)
      before = usage();
    trial.count("restart " + std::to_string(round),
                isFound && (round < 3 || isBackTo(before)) && isBalanced());
  }
}

TEST_F(Link, Flood) {
  Trial trial("The daemon sends 100,000 samples a second, and a key whenever the last one has been typed");
  constexpr int kBatch = 100; // samples each millisecond
  constexpr short kLast = 12345;
  std::atomic<int> taken{0}, sent{0};
  std::atomic<bool> isEnough{false};
  std::atomic<std::int64_t> samples{0};
  load();
  const Script flood = [&](RawEnd& end) {
    if (!answer(end)) // the greeting
      return;
    auto next = std::chrono::steady_clock::now();
    while (!isEnough) {
      while (end.socket().available() > 0) {
        if (!answer(end))
          return;
      }
      Bytes batch;
      for (int i = 0; i < kBatch; ++i)
        batch = batch + motionFrame({static_cast<std::int16_t>(i), 1, -1, 2, -2, 3});
      if (sent == taken)
        batch = batch + frame(Kind::event, 0x20020 + sent++ % kKeys);
      if (!end.send(batch))
        return;
      samples += kBatch;
      next += milliseconds(1);
      std::this_thread::sleep_until(next);
    }
    end.send(motionFrame({kLast, 0, 0, 0, 0, 0}));
    while (answer(end))
      ;
  };
  const FakeDaemon impostor(flood, mPort);
  const std::int64_t length = scaled(2000, 20000); // milliseconds
  const auto start = std::chrono::steady_clock::now();
  const auto passed = [start] {
    return std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() - start)
        .count();
  };
  Usage before;
  int expected = 0;
  const auto takeKeys = [&] {
    for (std::string keys = typedKeys(); !keys.empty(); keys.erase(0, keys.find(' ') + 1)) {
      const std::string key = "KEY" + std::to_string(expected++ % kKeys);
      trial.count("key " + std::to_string(expected), keys.substr(0, keys.find(' ')) == key);
      taken = expected;
    }
    return expected;
  };
  for (auto forgotten = passed(); passed() < length;) {
    tick();
    takeKeys();
    if (passed() - forgotten > 500) {
      newDocument();
      forgotten = passed();
    }
    if (before.threads == 0 && passed() > length / 10)
      before = usage();
  }
  const double rate = static_cast<double>(samples) * 1e-3 / static_cast<double>(passed()) * 1000;
  isEnough = true;
  trial.count("newest sample", pumpUntilSample(kLast));
  trial.count("all keys", expected > 1 && pumpUntil([&] { return takeKeys() == sent; }));
  newDocument();
  const std::int64_t growth = (usage().heap - before.heap) / 1024;
  trial.count("usage", isBackTo(before) && isBalanced());
  trial.detail(std::to_string(samples) + " samples, " + std::to_string(static_cast<int>(rate)) +
               ",000 a second, " + std::to_string(expected) + " keys, heap " + std::to_string(growth) +
               " kB more");
}

} // namespace
