#ifndef SESSION_SETTINGS_H
#define SESSION_SETTINGS_H

#include "session.h"

namespace program {

/// Writes a session's settings to the plug-in's settings file below USERPROFILE, which is made if there is none. Not
/// while the plug-in is loaded. Throws Error.
void writeSettings(const session::Session& session);

} // namespace program

#endif
