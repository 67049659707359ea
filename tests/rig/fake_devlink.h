#ifndef FAKE_DEVLINK_H
#define FAKE_DEVLINK_H

#include <array>
#include <cstdint>
#include <string>
#include <vector>

/// The device library in memory: the same seven functions, with a daemon that tests script. Linked in the
/// real library's place. Everything may be called on any thread.
namespace fake_devlink {

/// A daemon that is there, with one device, rotation code 0 and no event; all records empty.
void reset();

/// The daemon goes away or comes back. While it is away, all but ovDisconnect fail.
void setPresent(bool isPresent);
void setDeviceCount(int count);
void setRotation(std::int32_t code, bool zoomAllAfterView);

/// Queues an event for ovFetchEvent.
void pushMotion(const std::array<short, 6>& axes, std::int32_t code = -1);
void pushEvent(std::int32_t code);
/// Waits until the reading loop has come back for more after taking all events. False after some seconds.
bool waitUntilTaken();

/// The next count calls of that function fail, or throw, after letting skip calls pass.
void fail(const std::string& function, int count = 1, int skip = 0, bool isThrow = false);

/// The calls up to now, as in "ovConnect acad", without ovFetchEvent and ovGetDevNum, which come at any time.
std::vector<std::string> calls();
int callCount(const std::string& function);
/// The mode names announced with success.
std::vector<std::string> modes();

} // namespace fake_devlink

#endif
