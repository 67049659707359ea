#ifndef MESSAGE_LOOP_H
#define MESSAGE_LOOP_H

#include <functional>

namespace program {

/// The main thread's message loop, with a beat of its own so that the host gets its turn while nothing
/// happens. step  called at each beat and after each message; false ends the loop. Its exceptions end the
/// loop too. Ends also when someone posts WM_QUIT.
void runMessageLoop(const std::function<bool()>& step);

} // namespace program

#endif
