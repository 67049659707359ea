#ifndef SURROUNDINGS_H
#define SURROUNDINGS_H

#include <string>

#include "auto_cad_proxy.h"
#include "ov_auto_cad.h"
#include "temp_folder.h"

/// What the rows need: a user's folder, a host with a view, a desktop with the host's windows, and the plug-in's
/// engine, constructed without a daemon.
namespace bench {

/// A port without a daemon.
constexpr char kNoDaemon[] = "1";

/// Returns a user's home folder, with the plug-in's files. Removed at the end.
rig::TempFolder& home();

/// Returns the engine. Constructs it with default settings if there is none.
OvAutoCad& plugin();
inline AutoCadProxy& engine() {
  return *plugin().mAutoCadProxyP;
}
/// Ends the engine, if there is one.
void stopEngine();

/// Sets up a user's desktop: the host's main window with the drawing and its bars, and the pointer on the
/// drawing.
void showHost();
/// Sets the view from which all motion starts.
void resetView();

void setSample(int x, int y, int z, int a, int b, int c);
/// Sets a sample of all axes, with opposite signs for even and odd numbers, so that the view stays in place.
void turnSample(int i);
constexpr int kCountedPasses = 200;

/// Set the log to its defaults, with a limit that the rows don't reach, or to errors alone.
void setDefaultLog();
void setQuietLog();

} // namespace bench

#endif
