#include "access.h"

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <random>

namespace web {

namespace {

/// True for a name of this machine, with or without a port.
bool isLoopback(std::string_view authority) {
  const std::string_view name = authority.substr(0, authority.find(':'));
  const std::string_view port = authority.substr(std::min(name.size() + 1, authority.size()));
  const bool isNumber =
      std::all_of(port.begin(), port.end(), [](unsigned char c) { return std::isdigit(c) != 0; });
  return isNumber && (name == "127.0.0.1" || name == "localhost");
}

/// Takes equally long wherever the two differ.
bool isSame(std::string_view a, std::string_view b) {
  unsigned difference = a.size() == b.size() ? 0 : 1;
  for (std::size_t i = 0; i < std::min(a.size(), b.size()); ++i)
    difference |= static_cast<unsigned char>(a[i]) ^ static_cast<unsigned char>(b[i]);
  return difference == 0;
}

} // namespace

std::string refusal(const Request& request, std::string_view token) {
  constexpr std::string_view kScheme = "http://";
  if (!isLoopback(request.mHost))
    return "host is not this machine";
  if (!request.mOrigin.empty() && (request.mOrigin.substr(0, kScheme.size()) != kScheme ||
                                   !isLoopback(request.mOrigin.substr(kScheme.size()))))
    return "foreign origin";
  const std::string_view query = request.mTarget.substr(pathOf(request.mTarget).size());
  if (token.empty() || !isSame(query, "?token=" + std::string(token)))
    return "wrong token";
  return {};
}

std::string_view pathOf(std::string_view target) {
  return target.substr(0, target.find('?'));
}

std::string randomToken() {
  std::random_device random;
  std::string token;
  for (int i = 0; i < 4; ++i) {
    char part[9];
    std::snprintf(part, sizeof part, "%08x", static_cast<unsigned>(random()));
    token += part;
  }
  return token;
}

} // namespace web
