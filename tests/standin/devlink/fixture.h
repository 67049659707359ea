#ifndef FIXTURE_H
#define FIXTURE_H

#include "daemon.h"
#include "environment.h"
#include "ov_devlink.h"
#include "protocol.h"
#include "quiet_port.h"

#include <asio.hpp>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <condition_variable>
#include <filesystem>
#include <functional>
#include <iterator>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

// Both ends of the link, for tests: a daemon that runs inside, and ends that say what the test wants them to.

/// Points the client library at a port.
inline void usePort(const std::string& port) {
  rig::setEnvironment(devlink::kPortVariable, port);
}

/// Descriptors, on Windows handles, that this process has open; 0 where there is no way to tell.
inline std::ptrdiff_t openDescriptors() {
#ifdef _WIN32
  DWORD handles = 0;
  return GetProcessHandleCount(GetCurrentProcess(), &handles) ? static_cast<std::ptrdiff_t>(handles) : 0;
#else
  std::error_code failure;
  std::filesystem::directory_iterator folder("/proc/self/fd", failure);
  return failure ? 0 : std::distance(folder, std::filesystem::directory_iterator());
#endif
}

/// Memory of this process, bytes; 0 where there is no way to tell, or where a sanitizer keeps freed memory.
inline long residentBytes() {
  long pages = 0;
#if defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
  return pages;
#endif
#endif
  if (FILE* file = std::fopen("/proc/self/statm", "r")) {
    if (std::fscanf(file, "%*d %ld", &pages) != 1)
      pages = 0;
    std::fclose(file);
  }
  return pages * 4096;
}

/// Lines that come from another thread.
class Lines {
public:
  void add(const std::string& line) {
    const std::lock_guard<std::mutex> lock(mMutex);
    mLines.push_back(line);
    mAdded.notify_all();
  }
  /// Waits until so many lines hold the text; false if that takes absurdly long.
  bool waitFor(const std::string& text, int times = 1) {
    std::unique_lock<std::mutex> lock(mMutex);
    return mAdded.wait_for(lock, std::chrono::seconds(20), [&] {
      return std::count_if(mLines.begin(), mLines.end(), [&](const std::string& line) {
               return line.find(text) != std::string::npos;
             }) >= times;
    });
  }
  std::vector<std::string> all() {
    const std::lock_guard<std::mutex> lock(mMutex);
    return mLines;
  }
  /// Forgets all lines, and gives their memory back.
  void clear() {
    const std::lock_guard<std::mutex> lock(mMutex);
    std::vector<std::string>().swap(mLines);
  }

private:
  std::mutex mMutex;
  std::condition_variable mAdded;
  std::vector<std::string> mLines;
};

/// A daemon on a thread of its own; the client library is pointed at it.
class RunningDaemon {
public:
  explicit RunningDaemon(devlink::DaemonOptions options = {}, std::uint16_t port = 0) {
    options.mPort = port;
    options.mSay = [this](const std::string& line) { mSaid.add(line); };
    options.mRecord = [this](const std::string& line) { mRecorded.add(line.substr(line.find(' ') + 1)); };
    mDaemon.emplace(std::move(options));
    usePort(std::to_string(mDaemon->port()));
    mThread = std::thread([this] { mDaemon->run(); });
  }
  ~RunningDaemon() {
    mDaemon->stop();
    join();
  }
  void join() {
    if (mThread.joinable())
      mThread.join();
  }
  std::uint16_t port() const { return mDaemon->port(); }
  /// Plays a line as the device's verbs write it.
  void play(const std::string& line) {
    session::Action action;
    std::string reason;
    ASSERT_TRUE(session::parseDeviceLine(line, action, reason)) << reason;
    ASSERT_TRUE(mDaemon->play(action));
  }
  devlink::Daemon& operator*() { return *mDaemon; }

  Lines mSaid;
  Lines mRecorded; ///< without the time

private:
  std::optional<devlink::Daemon> mDaemon;
  std::thread mThread;
};

/// What the client library delivered: "motion x y z a b c", "event CODE", or "failure". The question for the
/// mode, which comes with each connection, is passed over.
inline std::string fetched() {
  short axes[6] = {};
  int code = session::kEventAnnounceMode;
  while (code == session::kEventAnnounceMode) {
    if (ovFetchEvent(0, &axes[0], &axes[1], &axes[2], &axes[3], &axes[4], &axes[5], nullptr, nullptr, &code,
                     nullptr, nullptr) != 0)
      return "failure";
  }
  if (code >= 0)
    return "event " + std::to_string(code);
  std::string text = "motion";
  for (const short axis : axes)
    text += " " + std::to_string(axis);
  return text;
}

inline bool isConnected() {
  int count = 0, unused = 0;
  return ovGetDevNum(&count, &unused, &unused) == 0;
}

/// Bytes as they go over the wire.
inline devlink::Bytes operator+(devlink::Bytes left, const devlink::Bytes& right) {
  left.insert(left.end(), right.begin(), right.end());
  return left;
}
inline devlink::Bytes bytes(std::string_view text) {
  return {text.begin(), text.end()};
}

template <class... Numbers> devlink::Bytes frame(devlink::Kind kind, Numbers... numbers32) {
  devlink::Bytes out;
  {
    devlink::FrameWriter writer(out, kind);
    (writer.number32(static_cast<std::uint32_t>(numbers32)), ...);
  }
  return out;
}
inline devlink::Bytes welcome(std::uint32_t magic = devlink::kMagic,
                              std::uint16_t version = devlink::kVersion) {
  devlink::Bytes out;
  devlink::FrameWriter(out, devlink::Kind::welcome).number32(magic).number16(version);
  return out;
}
inline devlink::Bytes hello(const std::string& name = "test", std::uint32_t magic = devlink::kMagic,
                            std::uint16_t version = devlink::kVersion) {
  devlink::Bytes out;
  devlink::FrameWriter(out, devlink::Kind::hello).number32(magic).number16(version).text(name);
  return out;
}
inline devlink::Bytes motionFrame(const devlink::Axes& axes) {
  devlink::Bytes out;
  devlink::FrameWriter writer(out, devlink::Kind::motion);
  for (const std::int16_t axis : axes)
    writer.number16(static_cast<std::uint16_t>(axis));
  return out;
}

/// A message of a case's own, for tests that are given one after the other.
struct Said {
  const char* mName;
  devlink::Bytes mBytes;
};
inline void PrintTo(const Said& said, std::ostream* out) {
  *out << said.mName;
}
inline std::string nameOf(const testing::TestParamInfo<Said>& info) {
  return info.param.mName;
}

/// A connected socket that the test speaks through; reading ends at the other's end or after a long time.
class RawEnd {
public:
  explicit RawEnd(asio::ip::tcp::socket socket) : mSocket(std::move(socket)) {}

  /// False if the other end has hung up.
  bool send(const devlink::Bytes& data) {
    asio::error_code error;
    asio::write(mSocket, asio::buffer(data), error);
    return !error;
  }
  /// The next frame's kind and payload; nothing at the end of the connection.
  std::optional<std::pair<devlink::Kind, devlink::Bytes>> receive() {
    std::uint8_t header[devlink::kHeaderBytes];
    asio::error_code error;
    asio::read(mSocket, asio::buffer(header), error);
    if (error)
      return std::nullopt;
    devlink::Bytes payload(static_cast<std::size_t>(header[0] | header[1] << 8));
    asio::read(mSocket, asio::buffer(payload), error);
    if (error)
      return std::nullopt;
    return std::make_pair(static_cast<devlink::Kind>(header[2] | header[3] << 8), payload);
  }
  /// Takes a client's hello as a good daemon does.
  void greet() {
    receive();
    send(welcome());
  }
  /// Reads on until the other end hangs up.
  void drain() {
    while (receive())
      ;
  }
  asio::ip::tcp::socket& socket() { return mSocket; }

private:
  asio::ip::tcp::socket mSocket;
};

/// A client of a daemon that says what the test wants.
class RawClient : public RawEnd {
public:
  explicit RawClient(std::uint16_t port) : RawEnd(connected(context(), port)) {}

private:
  static asio::io_context& context() {
    static asio::io_context io;
    return io;
  }
  static asio::ip::tcp::socket connected(asio::io_context& io, std::uint16_t port) {
    asio::ip::tcp::socket socket(io);
    socket.connect(asio::ip::tcp::endpoint(asio::ip::address_v4::loopback(), port));
    return socket;
  }
};

/// Something at the daemon's port that follows a script, once for each connection, on a thread of its own.
class FakeDaemon {
public:
  explicit FakeDaemon(std::function<void(RawEnd&)> script)
      : mAcceptor(mIo, asio::ip::tcp::endpoint(asio::ip::address_v4::loopback(), 0)) {
    usePort(std::to_string(mAcceptor.local_endpoint().port()));
    mThread = std::thread([this, script] {
      for (;;) {
        RawEnd end(mAcceptor.accept());
        if (mIsOver)
          return;
        script(end);
      }
    });
  }
  ~FakeDaemon() {
    ovDisconnect(); // the script may be waiting for the end of the connection
    mIsOver = true;
    const RawClient last(mAcceptor.local_endpoint().port()); // lets accept() return
    mThread.join();
  }

private:
  asio::io_context mIo;
  asio::ip::tcp::acceptor mAcceptor;
  std::atomic<bool> mIsOver{false};
  std::thread mThread;
};

/// Whatever a test leaves behind, the next one starts without a link.
class LinkTest : public testing::Test {
protected:
  LinkTest() { ovDisconnect(); }
  ~LinkTest() override { ovDisconnect(); }
};

#endif
