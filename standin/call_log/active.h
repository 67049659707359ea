#ifndef ACTIVE_H
#define ACTIVE_H

#include <atomic>

/// What the journal and the trace share. Internal to this library.
namespace call_log::detail {

extern std::atomic<bool> gIsTracing;
/// Sets gIsActive as recording, counting, ordered faults and the trace need it.
void refreshActive();

} // namespace call_log::detail

#endif
