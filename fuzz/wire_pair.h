#ifndef FUZZ_WIRE_PAIR_H
#define FUZZ_WIRE_PAIR_H

namespace fuzz {

/// The daemon's end of the connection that the next connect() of this program finds already made: no port, no
/// second thread, and nothing that a system keeps of a connection when it is over. The caller closes it.
int daemonEnd();

} // namespace fuzz

#endif
