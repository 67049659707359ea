#ifndef SESSION_SETTINGS_H
#define SESSION_SETTINGS_H

#include "session.h"

#include <string>

namespace program {

/// Writes a session's settings to the plug-in's settings file, which is made if there is none. Not while the plug-in
/// is loaded. Throws Error.
/// home  the user's folder, as USERPROFILE has it
void writeSettings(const session::Session& session, const std::string& home);

} // namespace program

#endif
