#ifndef MESSAGE_LOOP_H
#define MESSAGE_LOOP_H

#include <functional>

namespace program {

/// Runs the main thread's message loop, with a timer so that the host gets its turn while nothing happens. Ends
/// also when someone posts WM_QUIT.
/// handOver  called before each message, whose receiver may be the plug-in
/// step      called after each message; false ends the loop. Its exceptions end it too.
void runMessageLoop(const std::function<void()>& handOver, const std::function<bool()>& step);

} // namespace program

#endif
