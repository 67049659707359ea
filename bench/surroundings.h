#ifndef SURROUNDINGS_H
#define SURROUNDINGS_H

#include <string>

#include "auto_cad_proxy.h"
#include "ov_auto_cad.h"
#include "temp_folder.h"

/// What the rows need: a user's folder, a host with a view, a desktop with the host's windows on it, and
/// the engine of the plug-in, made once and with no daemon to talk to unless a row starts one.
namespace bench {

/// A port at which no daemon is.
constexpr char kNoDaemon[] = "1";

/// A user's home folder, with all that the plug-in keeps there. It goes at the end.
rig::TempFolder& home();

/// The engine, made at the first call, on default settings.
OvAutoCad& plugin();
inline AutoCadProxy& engine() {
  return *plugin().mAutoCadProxyP;
}
/// Ends the engine, if there is one.
void stopEngine();

/// The desktop that a user has: the host's frame with the drawing and its bars, and the pointer on the
/// drawing.
void showHost();
/// The view that all motion starts from, and no selection.
void resetView();

void setSample(int x, int y, int z, int a, int b, int c);
/// Sets a sample of all axes, forth for even numbers and back for odd ones, so that the view stays in place.
void turnSample(int i);
constexpr int kCountedPasses = 200;

/// Switches the log to its defaults, with room for all that the rows write, or to errors alone.
void setDefaultLog();
void setQuietLog();

} // namespace bench

#endif
