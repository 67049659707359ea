#ifndef ACCESS_H
#define ACCESS_H

#include <string>
#include <string_view>

/// Who may use a door. Pure functions.
namespace web {

/// What counts of a request.
struct Request {
  /// Path and query.
  std::string_view mTarget;
  std::string_view mHost;
  /// Empty: no browser asks.
  std::string_view mOrigin;
};

/// Returns why a request isn't served, empty if it is. Its names must be those of this machine: a page from
/// elsewhere has another origin, and one that gave this machine a name of its own shows that name as host. Any
/// port will do, so that a tunnel may use another one.
std::string refusal(const Request& request, std::string_view token);

/// The target without its query.
std::string_view pathOf(std::string_view target);

/// Returns 128 random bits of the system, in hexadecimal.
std::string randomToken();

} // namespace web

#endif
