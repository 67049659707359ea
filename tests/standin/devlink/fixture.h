#ifndef FIXTURE_H
#define FIXTURE_H

#include "daemon.h"
#include "environment.h"
#include "ov_devlink.h"
#include "quiet_port.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <mutex>
#include <thread>

// Both ends of the link, for tests: a daemon that runs inside, and ends that send what the test wants.

/// Points the client library at a port.
inline void usePort(const std::string& port) {
  rig::setEnvironment(devlink::kPortVariable, port);
}

/// A daemon on a thread of its own. Points the client library at it.
class RunningDaemon {
public:
  explicit RunningDaemon(std::uint16_t port = 0) {
    devlink::DaemonOptions options;
    options.mPort = port;
    options.mRecord = [this](const std::string& line) {
      const std::lock_guard<std::mutex> lock(mMutex);
      mRecord.push_back(line.substr(line.find(' ') + 1));
    };
    mDaemon.emplace(std::move(options));
    usePort(std::to_string(mDaemon->port()));
    mThread = std::thread([this] { mDaemon->run(); });
  }
  ~RunningDaemon() {
    mDaemon->stop();
    mThread.join();
  }
  std::uint16_t port() const { return mDaemon->port(); }
  devlink::Daemon& operator*() { return *mDaemon; }
  /// Plays a line as the device's verbs write it.
  void play(const std::string& line) {
    session::Action action;
    std::string reason;
    ASSERT_TRUE(session::parseDeviceLine(line, action, reason)) << reason;
    ASSERT_TRUE(mDaemon->play(action));
  }
  /// Returns whether a line, without its time, has been recorded.
  bool hasRecorded(const std::string& line) {
    const std::lock_guard<std::mutex> lock(mMutex);
    return std::find(mRecord.begin(), mRecord.end(), line) != mRecord.end();
  }
  void forgetRecord() {
    const std::lock_guard<std::mutex> lock(mMutex);
    std::vector<std::string>().swap(mRecord); // its memory goes, too
  }
  void waitFor(const std::string& line) {
    while (!hasRecorded(line))
      std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }

private:
  std::mutex mMutex;
  std::vector<std::string> mRecord;
  std::optional<devlink::Daemon> mDaemon;
  std::thread mThread;
};

/// Returns what the client library delivers: "motion x y z a b c", "event CODE", or "failure". Skips the question
/// for the mode, which comes with each connection.
inline std::string fetched() {
  short v[6] = {};
  int code = session::kEventAnnounceMode;
  while (code == session::kEventAnnounceMode)
    if (ovFetchEvent(0, v, v + 1, v + 2, v + 3, v + 4, v + 5, nullptr, nullptr, &code, nullptr, nullptr) != 0)
      return "failure";
  if (code >= 0)
    return "event " + std::to_string(code);
  std::string text = "motion";
  for (const short axis : v)
    text += " " + std::to_string(axis);
  return text;
}

inline const std::string kRelease = "motion 0 0 0 0 0 0";

inline bool isConnected() {
  return ovGetDevNum(nullptr, nullptr, nullptr) == 0;
}

/// Bytes as they go over the wire.
inline devlink::Bytes operator+(devlink::Bytes left, const devlink::Bytes& right) {
  left.insert(left.end(), right.begin(), right.end());
  return left;
}
inline devlink::Bytes bytes(std::string_view text) {
  return {text.begin(), text.end()};
}
inline devlink::Bytes half(devlink::Bytes whole) {
  whole.resize(whole.size() / 2);
  return whole;
}

/// Returns a message of numbers, texts and records.
template <class... Parts> devlink::Bytes message(devlink::Kind kind, const Parts&... parts) {
  devlink::Bytes out;
  devlink::MessageWriter writer(out, kind);
  const auto put = [&](const auto& part) {
    using Part = std::decay_t<decltype(part)>;
    if constexpr (std::is_same_v<Part, devlink::Bytes>)
      writer.record(part);
    else if constexpr (!std::is_integral_v<Part>)
      writer.text(part);
    else if constexpr (sizeof part == 2)
      writer.number16(static_cast<std::uint16_t>(part));
    else
      writer.number32(static_cast<std::uint32_t>(part));
  };
  (put(parts), ...);
  return out;
}
const devlink::Bytes kWelcome = message(devlink::Kind::welcome, devlink::kMagic, devlink::kVersion);

/// A connected socket of the test; reading ends with the connection.
class RawEnd {
public:
  explicit RawEnd(asio::ip::tcp::socket socket) : mSocket(std::move(socket)) {}
  /// A client of the daemon at a port.
  RawEnd(asio::io_context& io, std::uint16_t port, const devlink::Bytes& first) : mSocket(io) {
    mSocket.connect({asio::ip::address_v4::loopback(), port});
    send(first);
  }

  /// Returns false if the other end has hung up.
  bool send(const devlink::Bytes& data) {
    asio::error_code error;
    asio::write(mSocket, asio::buffer(data), error);
    return !error;
  }
  /// Returns the next message's kind and payload; nothing at the end of the connection.
  std::optional<std::pair<devlink::Kind, devlink::Bytes>> receive() {
    std::uint8_t header[devlink::kHeaderBytes];
    asio::error_code error;
    asio::read(mSocket, asio::buffer(header), error);
    devlink::Bytes payload(error ? 0 : static_cast<std::size_t>(header[0] | header[1] << 8));
    if (!error)
      asio::read(mSocket, asio::buffer(payload), error);
    if (error)
      return std::nullopt;
    return std::make_pair(static_cast<devlink::Kind>(header[2] | header[3] << 8), payload);
  }
  /// Reads until the other end hangs up.
  void drain() {
    while (receive())
      ;
  }
  asio::ip::tcp::socket& socket() { return mSocket; }

private:
  asio::ip::tcp::socket mSocket;
};

/// A fake at the daemon's port that runs a script for each connection, on a thread of its own. The script must
/// return when the client hangs up.
class FakeDaemon {
public:
  explicit FakeDaemon(std::function<void(RawEnd&)> script, std::uint16_t port = 0)
      : mAcceptor(mIo, {asio::ip::address_v4::loopback(), port}) {
    usePort(std::to_string(mAcceptor.local_endpoint().port()));
    mThread = std::thread([this, script] {
      for (RawEnd end(mAcceptor.accept()); !mIsOver; end = RawEnd(mAcceptor.accept())) {
        ++mVisits;
        script(end);
      }
    });
  }
  ~FakeDaemon() {
    mIsOver = true;
    ovDisconnect();
    asio::ip::tcp::socket(mIo).connect(mAcceptor.local_endpoint()); // lets accept() return
    mThread.join();
  }

  std::atomic<int> mVisits{0};

private:
  asio::io_context mIo;
  asio::ip::tcp::acceptor mAcceptor;
  std::atomic<bool> mIsOver{false};
  std::thread mThread;
};

/// Whatever a test leaves behind, the next one starts without a link and without a deflected cap.
class LinkTest : public testing::Test {
protected:
  ~LinkTest() override {
    ovDisconnect();
    fetched();
  }
};

#endif
