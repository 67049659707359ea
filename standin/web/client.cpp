#include "client.h"

#include <boost/asio/connect.hpp>
#include <boost/asio/io_context.hpp>
#include <boost/beast/core.hpp>
#include <boost/beast/websocket.hpp>

#include <deque>
#include <optional>
#include <stdexcept>

namespace web {

namespace {

namespace beast = boost::beast;
namespace websocket = beast::websocket;
using boost::asio::ip::tcp;

} // namespace

struct Client::State {
  boost::asio::io_context mIo;
  websocket::stream<tcp::socket, false> mStream{mIo};
  beast::flat_buffer mIn;
  std::deque<std::string> mReceived;
  bool mIsOpen = true;

  void read() {
    mStream.async_read(mIn, [this](const beast::error_code& error, std::size_t) {
      mIsOpen = !error;
      if (error)
        return;
      mReceived.push_back(beast::buffers_to_string(mIn.data()));
      mIn.clear();
      read();
    });
  }
};

Client::Client(const std::string& address, const std::string& origin) : mStateP(std::make_unique<State>()) {
  const std::size_t name = address.find("//") + 2;
  const std::size_t colon = address.find(':', name);
  const std::size_t slash = address.find('/', name);
  if (colon == std::string::npos || slash == std::string::npos || colon > slash)
    throw std::runtime_error("no address of a WebSocket: " + address);
  const std::string host = address.substr(name, slash - name);
  auto& stream = mStateP->mStream;
  beast::error_code error;
  tcp::resolver resolver(mStateP->mIo);
  const auto found = resolver.resolve(address.substr(name, colon - name),
                                      address.substr(colon + 1, slash - colon - 1), error);
  if (!error)
    boost::asio::connect(stream.next_layer(), found, error);
  websocket::response_type response;
  stream.set_option(websocket::stream_base::decorator([&origin](websocket::request_type& request) {
    if (!origin.empty())
      request.set(beast::http::field::origin, origin);
  }));
  if (!error) {
    stream.next_layer().set_option(tcp::no_delay(true), error);
    stream.handshake(response, host, address.substr(slash), error);
  }
  if (error == websocket::error::upgrade_declined)
    throw std::runtime_error(std::to_string(response.result_int()) + " " + response.body());
  if (error)
    throw std::runtime_error(error.message());
  stream.read_message_max(0); // a first message may be long
  mStateP->read();
}

Client::~Client() = default;
Client::Client(Client&&) noexcept = default;

bool Client::send(const std::string& line) {
  beast::error_code error;
  mStateP->mStream.write(boost::asio::buffer(line), error);
  return !error;
}

bool Client::receive(std::string& text, std::chrono::milliseconds limit) {
  State& state = *mStateP;
  const auto end = std::chrono::steady_clock::now() + limit;
  state.mIo.restart();
  state.mIo.poll();
  while (state.mReceived.empty() && state.mIsOpen && state.mIo.run_one_until(end) != 0)
    ;
  if (state.mReceived.empty())
    return false;
  text = std::move(state.mReceived.front());
  state.mReceived.pop_front();
  return true;
}

bool Client::isOpen() const {
  return mStateP->mIsOpen;
}

std::string Client::closeReason() const {
  const websocket::close_reason& reason = mStateP->mStream.reason();
  if (reason.code == websocket::close_code::none)
    return {};
  return std::to_string(reason.code) + (reason.reason.empty() ? "" : " ") + reason.reason.c_str();
}

} // namespace web
