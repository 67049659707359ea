#ifndef QUIET_PORT_H
#define QUIET_PORT_H

#include <cstdint>
#include <stdexcept>

#include <asio.hpp>

namespace rig {

/// A port of this program's own, also while nobody listens there. Ports that the system chooses are from
/// 32768 up, and it may give one to another test program as soon as the listener is gone; these are below.
inline std::uint16_t quietPort() {
  constexpr std::uint32_t kFirst = 20000, kCount = 10000;
#ifdef _WIN32
  static std::uint32_t next = GetCurrentProcessId();
#else
  static auto next = static_cast<std::uint32_t>(getpid());
#endif
  for (std::uint32_t i = 0; i < kCount; ++i) {
    const auto port = static_cast<std::uint16_t>(kFirst + next++ % kCount);
    asio::io_context io;
    asio::ip::tcp::acceptor acceptor(io, asio::ip::tcp::v4());
    asio::error_code failure;
    acceptor.bind(asio::ip::tcp::endpoint(asio::ip::address_v4::loopback(), port), failure);
    if (!failure)
      return port;
  }
  throw std::runtime_error("no port is free");
}

} // namespace rig

#endif
