// The door for pages under hostile clients: each is hung up on with a reason, and the page that drives doesn't notice.

#include "client.h"
#include "server.h"

#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/read.hpp>
#include <boost/asio/write.hpp>
#include <gmock/gmock.h>

#include <atomic>

namespace {

using namespace std::chrono_literals;
using boost::asio::ip::tcp;
using testing::HasSubstr;

web::MessageP message(const std::string& text) {
  return web::message([text] { return text; });
}

/// Takes the place of an earlier one, and counts how many it stands for.
struct Latest : web::Message {
  explicit Latest(int count) : mCount(count) {}
  std::string text() const override { return std::to_string(mCount); }
  web::MessageP joinedTo(const web::Message& earlier) const override {
    const auto* const earlierP = dynamic_cast<const Latest*>(&earlier);
    return earlierP ? std::make_shared<Latest>(mCount + earlierP->mCount) : nullptr;
  }
  int mCount;
};

class WebTest : public testing::Test, public web::Door {
public:
  void onOpened(web::ClientId client, bool isDriver) override {
    mServerP->send(message(isDriver ? "driver" : "watcher"), client);
  }
  void onDriver(web::ClientId client) override { onOpened(client, true); }
  std::string onLine(web::ClientId client, bool, const std::string& line) override {
    if (line == "echo")
      mServerP->send(message(line), client);
    return line == "bad" ? "no such line" : "";
  }
  void onSilent() override { ++mSilences; }
  std::string page(const std::string& authority) override { return "page of " + authority; }

  WebTest() {
    mOptions.mToken = "secret";
    mOptions.mPath = "/door";
    mOptions.mHandshake = mOptions.mPatience = 1s;
  }
  void SetUp() override { mServerP = std::make_unique<web::Server>(mOptions, *this); }
  void TearDown() override { mServerP.reset(); } // its thread calls this object

  std::unique_ptr<web::Client> connect() { return std::make_unique<web::Client>(mServerP->socketAddress()); }
  tcp::socket raw(const std::string& bytes) {
    tcp::socket socket(mIo);
    socket.connect(tcp::endpoint(boost::asio::ip::address_v4::loopback(), mServerP->port()));
    boost::asio::write(socket, boost::asio::buffer(bytes));
    return socket;
  }
  /// What comes until the end.
  std::string answerTo(const std::string& bytes) {
    tcp::socket socket = raw(bytes);
    std::string answer;
    boost::system::error_code end;
    boost::asio::read(socket, boost::asio::dynamic_buffer(answer), end);
    return answer;
  }

  boost::asio::io_context mIo;
  web::ServerOptions mOptions;
  std::atomic<int> mSilences{0};
  std::unique_ptr<web::Server> mServerP;
};

TEST_F(WebTest, AnswersRequestsByRule) {
  const std::string good = "GET /?token=secret", foreign = "Origin: http://evil.example\r\n";
  const std::string upgrade = "Upgrade: websocket\r\nConnection: upgrade\r\nSec-WebSocket-Version: 13\r\n"
                              "Sec-WebSocket-Key: dGhlIHNhbXBsZSBub25jZQ==\r\n";
  const std::string cases[][4] = {
      {good, "127.0.0.1:1", "", "page of 127.0.0.1:1"},
      {good, "localhost", "Origin: http://localhost:5\r\n", "page of localhost"},
      {"GET /", "localhost", "", "403 Forbidden"},
      {"GET /?token=secre", "localhost", "", "wrong token"},
      {"GET /?token=secrets", "localhost", "", "wrong token"},
      {"GET /?a=b&token=secret", "localhost", "", "wrong token"},
      {good, "localhost.evil.example:80", "", "host is not this machine"},
      {good, "127.0.0.1:1:x\"", "", "host is not this machine"},
      {good, "localhost", foreign, "foreign origin"},
      {good, "localhost", "Origin: https://localhost\r\n", "foreign origin"},
      {good, "localhost", "Origin: null\r\n", "foreign origin"},
      {"GET /door?token=secret", "localhost", upgrade + foreign, "foreign origin"},
      {"GET /other?token=secret", "localhost", "", "404 Not Found"},
      {"POST /?token=secret", "localhost", "", "404 Not Found"},
      {good, "localhost", "X: " + std::string(9000, 'x') + "\r\n", "400 Bad Request"},
      {"\x16\x03\x01 what", "localhost", "", "400 Bad Request"},
  };
  for (const auto& [request, host, more, answer] : cases)
    EXPECT_THAT(answerTo(request + " HTTP/1.1\r\nHost: " + host + "\r\n" + more + "\r\n"), HasSubstr(answer))
        << request << ' ' << host << ' ' << more.substr(0, 40);
  EXPECT_EQ(answerTo("GET /door?token=se"), "") << "has a time limit";
}

TEST_F(WebTest, HostileClientsEndWithReason) {
  const auto driver = connect();
  EXPECT_EQ(driver->next(), "driver");
  const struct {
    std::string line;
    int count;
    std::string reason;
  } cases[] = {{"bad", 1, "1008 no such line"},
               {"", 1000000, "1008 too many messages"},
               {"\xFF\xFE", 1, "1007"}, // not UTF-8
               {std::string(100000, 'x'), 1, "1009 line too long"}};
  for (const auto& [line, count, reason] : cases) {
    const auto client = connect();
    EXPECT_EQ(client->next(), "watcher");
    for (int i = 0; i < count && client->isOpen() && client->send(line); ++i)
      client->next(0ms);
    client->next();
    EXPECT_THAT(client->closeReason(), HasSubstr(reason));
    driver->send("echo");
    EXPECT_EQ(driver->next(), "echo") << reason;
  }
  const auto deaf = connect();
  EXPECT_EQ(deaf->next(), "watcher");
  int got = 0;
  for (int i = 0; i < 3000; ++i) { // more than the system holds
    mServerP->send(message(std::string(10000, 'x')));
    got += driver->next() != "(nothing)";
  }
  EXPECT_EQ(got, 3000);
  EXPECT_EQ(driver->next(3s), "(nothing)"); // longer than the server's patience
  while (deaf->next(500ms) != "(nothing)")
    --got;
  EXPECT_GT(got, 0);
  EXPECT_FALSE(deaf->isOpen());
}

TEST_F(WebTest, SlowPageMissesFramesOnly) {
  mOptions.mPatience = 20s;
  SetUp();
  const auto slow = connect();
  EXPECT_EQ(slow->next(), "driver");
  for (int i = 0; i < 1000; ++i) {
    mServerP->send(std::make_shared<Latest>(1));
    if (i % 50 == 0) // in all more than the system holds
      mServerP->send(message(std::string(1 << 20, 'x')));
  }
  int events = 0, frames = 0, shown = 0;
  while (events < 20 || shown < 1000) {
    const std::string text = slow->next(5s);
    ASSERT_NE(text, "(nothing)");
    if (text[0] == 'x')
      ++events;
    else
      shown += (++frames, std::stoi(text));
  }
  EXPECT_EQ(events, 20);
  EXPECT_EQ(shown, 1000);
  EXPECT_LT(frames, 500);
}

TEST_F(WebTest, NextPageDrivesAfterFirst) {
  auto first = connect();
  EXPECT_EQ(first->next(), "driver");
  const auto second = connect();
  EXPECT_EQ(second->next(), "watcher");
  for (int i = 0; i < 8; ++i) { // 400 ms, with pauses that are no silence
    first->send("");
    EXPECT_EQ(second->next(50ms), "(nothing)");
  }
  EXPECT_EQ(mSilences, 0);
  EXPECT_EQ(second->next(500ms), "(nothing)");
  EXPECT_EQ(mSilences, 1);
  first->send("");
  first.reset();
  EXPECT_EQ(second->next(), "driver");
  EXPECT_EQ(mSilences, 2);
}

} // namespace
