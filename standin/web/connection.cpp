#include "connection.h"

#include "access.h"

#include <algorithm>

namespace web {

namespace {

namespace beast = boost::beast;
namespace http = beast::http;
namespace websocket = beast::websocket;
using boost::asio::ip::tcp;
using Clock = std::chrono::steady_clock;

constexpr std::uint32_t kMaxHeaderBytes = 8192;
/// Small, so that frames wait in the queue, where newer ones take their place, rather than in the system.
constexpr int kSendBufferBytes = 32 * 1024;
/// More messages than this don't wait for a client.
constexpr std::size_t kMaxWaiting = 4096;
/// Messages a second that a client may send, and how many at once.
constexpr double kRate = 500;
constexpr double kMostAtOnce = 1000;
/// What a client takes of a long message at least, bytes a millisecond.
constexpr std::size_t kSlowest = 100;
/// A close reason's limit in the protocol, bytes.
constexpr std::size_t kMaxReason = 123;
/// How long a silent client is believed to be there, before it is asked and again after that.
constexpr std::chrono::seconds kIdle{30};

/// What of a reason goes into a close message: whole characters of UTF-8.
std::string fitting(const std::string& reason) {
  std::size_t size = std::min(reason.size(), kMaxReason);
  while (size > 0 && size < reason.size() && (static_cast<unsigned char>(reason[size]) & 0xC0) == 0x80)
    --size;
  return reason.substr(0, size);
}

} // namespace

void enqueue(std::deque<Waiting>& queue, Waiting entry) {
  for (auto at = queue.end(); at != queue.begin() && (--at)->mTo == kEveryone;) {
    if (MessageP joinedP = entry.mMessageP->joinedTo(*at->mMessageP)) {
      queue.erase(at);
      entry.mMessageP = std::move(joinedP);
      break;
    }
  }
  queue.push_back(std::move(entry));
}

Connection::Connection(tcp::socket socket, ClientId id, ConnectionOwner& owner)
    : mStream(std::move(socket)), mPatience(mStream.get_executor()), mId(id), mOwner(owner),
      mCredit(kMostAtOnce), mLastMessage(Clock::now()) {}

void Connection::start() {
  Error ignored; // a connection that is gone already shows at the first read
  mStream.next_layer().socket().set_option(tcp::no_delay(true), ignored);
  mStream.next_layer().socket().set_option(boost::asio::socket_base::send_buffer_size(kSendBufferBytes),
                                           ignored);
  mStream.next_layer().expires_after(mOwner.options().mHandshake);
  mParser.emplace();
  mParser->header_limit(kMaxHeaderBytes);
  http::async_read(
      mStream.next_layer(), mIn, *mParser,
      [self = shared_from_this()](const Error& error, std::size_t) { self->takeRequest(error); });
}

void Connection::takeRequest(const Error& error) {
  // Faults of the request have a category of their own; any other means that the client is gone, or too late.
  if (error && error.category() != make_error_code(http::error::bad_method).category())
    return drop();
  if (error)
    return respond(http::status::bad_request, error.message());
  const auto& request = mParser->get();
  const std::string target(request.target()), host(request[http::field::host]);
  const std::string origin(request[http::field::origin]);
  const std::string reason = refusal({target, host, origin}, mOwner.options().mToken);
  if (!reason.empty())
    return respond(http::status::forbidden, reason);
  if (websocket::is_upgrade(request) && pathOf(target) == mOwner.options().mPath)
    return accept();
  std::string page = request.method() == http::verb::get && pathOf(target) == "/" ? mOwner.page(host) : "";
  if (page.empty())
    return respond(http::status::not_found, "nothing here");
  respond(http::status::ok, std::move(page));
}

void Connection::respond(http::status status, std::string text) {
  mState = State::closing;
  mResponse.result(status);
  mResponse.keep_alive(false);
  mResponse.set(http::field::content_type,
                status == http::status::ok ? "text/html; charset=utf-8" : "text/plain; charset=utf-8");
  mResponse.set(http::field::cache_control, "no-store");
  mResponse.set("Referrer-Policy", "no-referrer");
  mResponse.set(http::field::x_frame_options, "DENY");
  mResponse.set("X-Content-Type-Options", "nosniff");
  mResponse.body() = status == http::status::ok ? std::move(text) : text + "\n";
  mResponse.prepare_payload();
  mStream.next_layer().expires_after(mOwner.options().mHandshake);
  http::async_write(mStream.next_layer(), mResponse,
                    [self = shared_from_this()](const Error& error, std::size_t) {
                      Error ignored;
                      self->mStream.next_layer().socket().shutdown(tcp::socket::shutdown_send, ignored);
                      error ? self->drop() : self->drain();
                    });
}

/// Waits until the client hangs up: if bytes of its were left unread, the answer might never reach it.
void Connection::drain() {
  mIn.clear();
  mStream.next_layer().async_read_some(
      mIn.prepare(4096),
      [self = shared_from_this()](const Error& error, std::size_t) { error ? self->drop() : self->drain(); });
}

void Connection::accept() {
  mStream.next_layer().expires_never();
  mStream.set_option(websocket::stream_base::timeout{mOwner.options().mHandshake, kIdle, true});
  // A message that is too long ends below: the library hangs up so fast that the reason may be lost.
  mStream.read_message_max(0);
  mStream.text(true);
  mStream.async_accept(mParser->get(), [self = shared_from_this()](const Error& error) {
    if (error)
      return self->drop();
    if (self->mState != State::opening)
      return;
    self->mState = State::open;
    self->mParser.reset();
    self->mIn.clear();
    self->mOwner.onOpen(*self);
    self->read();
  });
}

void Connection::read() {
  mStream.async_read_some(
      mIn, mOwner.options().mMaxLineBytes + 1 - mIn.size(),
      [self = shared_from_this()](const Error& error, std::size_t) { self->takeMessage(error); });
}

void Connection::takeMessage(const Error& error) {
  if (mState != State::open)
    return;
  if (error)
    return drop();
  if (!mStream.got_text())
    return close(websocket::close_code::unknown_data, "text only");
  if (mIn.size() > mOwner.options().mMaxLineBytes)
    return close(websocket::close_code::too_big, "line too long");
  if (!mStream.is_message_done())
    return read();
  if (isTooFast())
    return close(websocket::close_code::policy_error, "too many messages");
  const std::string line = beast::buffers_to_string(mIn.data());
  mIn.consume(mIn.size());
  const std::string reason = mOwner.onLine(*this, line);
  if (!reason.empty())
    return close(websocket::close_code::policy_error, reason);
  read();
}

bool Connection::isTooFast() {
  const Clock::time_point now = Clock::now();
  mCredit += kRate * std::chrono::duration<double>(now - mLastMessage).count();
  mCredit = std::min(kMostAtOnce, mCredit) - 1;
  mLastMessage = now;
  return mCredit < 0;
}

void Connection::send(MessageP messageP) {
  if (mState != State::open || mIsLast)
    return;
  if (mQueue.size() >= kMaxWaiting)
    return drop();
  enqueue(mQueue, {std::move(messageP)});
  write();
}

void Connection::write() {
  if (mIsWriting || mState != State::open)
    return;
  if (mQueue.empty()) {
    if (mIsLast)
      close(websocket::close_code::going_away, "the end");
    return;
  }
  mIsWriting = true;
  mOut = mQueue.front().mMessageP->text();
  mQueue.pop_front();
  mPatience.expires_after(mOwner.options().mPatience + std::chrono::milliseconds(mOut.size() / kSlowest));
  mPatience.async_wait([self = shared_from_this()](const Error& error) {
    if (!error && self->mIsWriting)
      self->drop();
  });
  mStream.async_write(boost::asio::buffer(mOut),
                      [self = shared_from_this()](const Error& error, std::size_t) {
                        self->mIsWriting = false;
                        self->mPatience.cancel();
                        error ? self->drop() : self->write();
                      });
}

void Connection::close(websocket::close_code code, const std::string& reason) {
  if (mState != State::open)
    return;
  mState = State::closing;
  mQueue.clear();
  mOwner.onLeft(*this);
  mStream.async_close({code, fitting(reason)}, [self = shared_from_this()](const Error&) { self->drop(); });
}

void Connection::closeWhenSent() {
  mIsLast = true;
  mState == State::open ? write() : drop();
}

void Connection::drop() {
  const auto self = shared_from_this(); // the owner lets go of it below
  const bool wasOpen = mState == State::open;
  mState = State::closing;
  mQueue.clear();
  mPatience.cancel();
  mStream.next_layer().close();
  if (wasOpen)
    mOwner.onLeft(*this);
  mOwner.onEnd(*this);
}

} // namespace web
