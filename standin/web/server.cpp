#include "server.h"

#include "access.h"
#include "connection.h"

#include <boost/asio/io_context.hpp>
#include <boost/asio/post.hpp>

#include <algorithm>
#include <mutex>
#include <system_error>
#include <vector>

namespace web {

namespace {

using boost::asio::ip::tcp;
using Error = boost::beast::error_code;

/// Half of them are plenty for a few pages. When they are used up, the oldest that isn't open yet makes room.
constexpr std::size_t kMaxConnections = 32;
/// Pause before the next attempt when a connection can't be taken.
constexpr std::chrono::milliseconds kRetryPause{100};
/// How long the end waits for what is on its way.
constexpr std::chrono::milliseconds kEndPatience{1000};

struct MadeMessage : Message {
  explicit MadeMessage(std::function<std::string()> makeText) : mMakeText(std::move(makeText)) {}
  std::string text() const override { return mMakeText(); }
  const std::function<std::string()> mMakeText;
};

} // namespace

MessageP message(std::function<std::string()> makeText) {
  return std::make_shared<MadeMessage>(std::move(makeText));
}

/// The server's side of its thread.
class Hub : public ConnectionOwner {
public:
  Hub(const ServerOptions& options, Door& door) : mOptions(options), mDoor(door) {
    if (mOptions.mToken.empty())
      mOptions.mToken = randomToken();
    try {
      mAcceptor.open(tcp::v4());
#ifndef _WIN32
      // On Windows the option would let two programs have the port.
      mAcceptor.set_option(tcp::acceptor::reuse_address(true));
#endif
      mAcceptor.bind(tcp::endpoint(boost::asio::ip::address_v4::loopback(), mOptions.mPort));
      mAcceptor.listen();
      mOptions.mPort = mAcceptor.local_endpoint().port();
    } catch (const boost::system::system_error& error) {
      throw std::system_error(error.code().value(), std::system_category());
    }
    acceptNext();
  }

  void run() {
    mIo.run();
  }

  void send(MessageP messageP, ClientId to) {
    const std::lock_guard<std::mutex> lock(mMutex);
    if (mOutbox.empty())
      boost::asio::post(mIo, [this] { handOut(); });
    enqueue(mOutbox, {std::move(messageP), to});
  }

  void end() {
    boost::asio::post(mIo, [this] {
      Error ignored;
      mAcceptor.close(ignored);
      mIsEnding = true;
      const auto connections = mConnections;
      for (const auto& connection : connections)
        connection->closeWhenSent();
      mSilence.cancel();
      // Those that don't answer any more aren't waited for.
      mRetry.expires_after(kEndPatience);
      mRetry.async_wait([this](const Error& error) {
        if (!error)
          mIo.stop();
      });
      if (mConnections.empty())
        mIo.stop();
    });
  }

  const ServerOptions& options() const override {
    return mOptions;
  }

private:
  std::string page(const std::string& authority) override {
    return mDoor.page(authority);
  }

  void onOpen(Connection& connection) override {
    if (mDriver == 0)
      mDriver = connection.id();
    mDoor.onOpened(connection.id(), connection.id() == mDriver);
  }

  std::string onLine(Connection& connection, const std::string& line) override {
    const bool isDriver = connection.id() == mDriver;
    if (isDriver)
      waitForSilence();
    return mDoor.onLine(connection.id(), isDriver, line);
  }

  void onLeft(Connection& connection) override {
    if (connection.id() != mDriver)
      return;
    mSilence.cancel();
    mDoor.onSilent();
    const auto next = std::find_if(mConnections.begin(), mConnections.end(), [&](const auto& other) {
      return !mIsEnding && other->isOpen() && other.get() != &connection;
    });
    mDriver = next == mConnections.end() ? 0 : (*next)->id();
    if (mDriver != 0)
      mDoor.onDriver(mDriver);
  }

  void onEnd(Connection& connection) override {
    const auto isIt = [&](const auto& other) { return other.get() == &connection; };
    mConnections.erase(std::remove_if(mConnections.begin(), mConnections.end(), isIt), mConnections.end());
    if (mIsEnding && mConnections.empty())
      mIo.stop();
  }

  void waitForSilence() {
    if (mOptions.mSilence == 0)
      return;
    mSilence.expires_after(std::chrono::milliseconds(mOptions.mSilence));
    mSilence.async_wait([this](const Error& error) {
      if (!error && mSilence.expiry() <= std::chrono::steady_clock::now()) // not set again meanwhile
        mDoor.onSilent();
    });
  }

  void acceptNext() {
    mAcceptor.async_accept([this](const Error& error, tcp::socket socket) {
      if (!mAcceptor.is_open())
        return;
      // No descriptors left, for instance. Asking again at once would only take time.
      if (error) {
        mRetry.expires_after(kRetryPause);
        return mRetry.async_wait([this](const Error&) {
          if (mAcceptor.is_open())
            acceptNext();
        });
      }
      take(std::move(socket));
      acceptNext();
    });
  }

  void take(tcp::socket socket) {
    if (mConnections.size() >= kMaxConnections) {
      const auto oldest = std::find_if(mConnections.begin(), mConnections.end(),
                                       [](const auto& connection) { return !connection->isOpen(); });
      if (oldest == mConnections.end())
        return;
      const auto connection = *oldest; // leaves the list
      connection->drop();
    }
    mConnections.push_back(std::make_shared<Connection>(std::move(socket), ++mLastId, *this));
    mConnections.back()->start();
  }

  void handOut() {
    std::deque<Waiting> messages;
    {
      const std::lock_guard<std::mutex> lock(mMutex);
      messages.swap(mOutbox);
    }
    for (const Waiting& message : messages) {
      const auto connections = mConnections; // one that is dropped for its backlog leaves the list
      for (const auto& connection : connections) {
        if (message.mTo == connection->id())
          connection->mIsAdmitted = true;
        if (message.mTo == connection->id() || (message.mTo == kEveryone && connection->mIsAdmitted))
          connection->send(message.mMessageP);
      }
    }
  }

  ServerOptions mOptions;
  Door& mDoor;
  boost::asio::io_context mIo{1};
  tcp::acceptor mAcceptor{mIo};
  boost::asio::steady_timer mSilence{mIo};
  boost::asio::steady_timer mRetry{mIo};
  std::vector<std::shared_ptr<Connection>> mConnections;
  ClientId mLastId = 0;
  /// 0: nobody drives.
  ClientId mDriver = 0;
  bool mIsEnding = false;

  std::mutex mMutex;
  std::deque<Waiting> mOutbox;
};

Server::Server(const ServerOptions& options, Door& door)
    : mHubP(std::make_unique<Hub>(options, door)), mThread([this] { mHubP->run(); }) {}

Server::~Server() {
  mHubP->end();
  mThread.join();
}

std::uint16_t Server::port() const {
  return mHubP->options().mPort;
}

std::string Server::pageAddress() const {
  return "http://127.0.0.1:" + std::to_string(port()) + "/?token=" + mHubP->options().mToken;
}

std::string Server::socketAddress() const {
  return socketAddress("127.0.0.1:" + std::to_string(port()));
}

std::string Server::socketAddress(const std::string& authority) const {
  return "ws://" + authority + mHubP->options().mPath + "?token=" + mHubP->options().mToken;
}

void Server::send(MessageP messageP, ClientId to) {
  mHubP->send(std::move(messageP), to);
}

} // namespace web
