#include "client.h"

#include <boost/asio/io_context.hpp>
#include <boost/beast/core.hpp>
#include <boost/beast/websocket.hpp>

#include <cstdlib>
#include <deque>
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

Client::Client(const std::string& address) : mStateP(std::make_unique<State>()) {
  const std::size_t name = address.find("//") + 2, slash = address.find('/', name);
  const std::string host = address.substr(name, slash - name);
  const std::size_t colon = host.find(':');
  if (slash == std::string::npos || colon == std::string::npos)
    throw std::runtime_error("no address of a WebSocket: " + address);
  const auto port = static_cast<std::uint16_t>(std::atoi(host.c_str() + colon + 1));
  auto& stream = mStateP->mStream;
  stream.next_layer().connect({boost::asio::ip::address_v4::loopback(), port});
  stream.next_layer().set_option(tcp::no_delay(true));
  stream.handshake(host, address.substr(slash));
  stream.read_message_max(0); // a first message may be long
  mStateP->read();
}

Client::~Client() = default;

bool Client::send(const std::string& line) {
  beast::error_code error;
  mStateP->mStream.write(boost::asio::buffer(line), error);
  return !error;
}

std::string Client::next(std::chrono::milliseconds limit) {
  State& state = *mStateP;
  const auto end = std::chrono::steady_clock::now() + limit;
  state.mIo.restart();
  state.mIo.poll();
  while (state.mReceived.empty() && state.mIsOpen && state.mIo.run_one_until(end) != 0)
    ;
  if (state.mReceived.empty())
    return "(nothing)";
  const std::string text = std::move(state.mReceived.front());
  state.mReceived.pop_front();
  return text;
}

bool Client::isOpen() const {
  return mStateP->mIsOpen;
}

std::string Client::closeReason() const {
  const websocket::close_reason& reason = mStateP->mStream.reason();
  return std::to_string(reason.code) + ' ' + reason.reason.c_str();
}

} // namespace web
