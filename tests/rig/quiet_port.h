#ifndef QUIET_PORT_H
#define QUIET_PORT_H

#include <cstdint>
#include <random>

#include <asio.hpp>

namespace rig {

/// Returns a free port that stays this program's own even while nobody listens there. The system chooses ports from
/// 32768 up, and may give one to another test program as soon as its listener is gone; these are below.
inline std::uint16_t quietPort() {
  static std::uint32_t next = std::random_device()();
  for (;;) {
    const auto port = static_cast<std::uint16_t>(20000 + next++ % 10000);
    asio::io_context io;
    asio::ip::tcp::acceptor acceptor(io, asio::ip::tcp::v4());
    asio::error_code failure;
    acceptor.bind(asio::ip::tcp::endpoint(asio::ip::address_v4::loopback(), port), failure);
    if (!failure)
      return port;
  }
}

} // namespace rig

#endif
