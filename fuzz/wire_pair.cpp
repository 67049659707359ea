#include "wire_pair.h"

#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include "check.h"

namespace {

int gClientEnd = -1;

} // namespace

namespace fuzz {

int daemonEnd() {
  if (gClientEnd >= 0)
    close(gClientEnd); // nobody came for it
  int ends[2] = {-1, -1};
  require(socketpair(AF_UNIX, SOCK_STREAM, 0, ends) == 0, "a pair of sockets");
  gClientEnd = ends[1];
  return ends[0];
}

} // namespace fuzz

// What the linker gives instead of the system's own.
extern "C" {

int __wrap_socket(int, int, int) {
  const int taken = gClientEnd;
  gClientEnd = -1;
  return taken;
}

int __wrap_connect(int, const sockaddr*, socklen_t) {
  return 0;
}

int __real_setsockopt(int socket, int level, int option, const void* value, socklen_t size);

int __wrap_setsockopt(int socket, int level, int option, const void* value, socklen_t size) {
  return level == IPPROTO_TCP ? 0 : __real_setsockopt(socket, level, option, value, size);
}
}
