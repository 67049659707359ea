#include "options.h"

#include <CLI/CLI.hpp>

namespace program {

bool readOptions(int count, char** arguments, Options& options, int& exitStatus) {
  CLI::App app{"Opens a drawing, loads a plug-in, plays a session's host lines and leaves a report of what the view "
               "did.\nEnds with status 0 only if the plug-in loaded, took events, moved the view and unloaded."};
  app.add_option("DRAWING", options.mDrawing, "drawing to open, DXF")->required();
  app.add_option("--session", options.mSession, "session file; its host lines are played here")->required();
  CLI::Option* const moduleP = app.add_option("--module", options.mModule, "plug-in to load, OVAutoCAD2019.arx");
  app.add_option("--out", options.mOut, "folder for report.html, session.json and command_line.txt")
      ->capture_default_str();
  app.add_option("--device-record", options.mDeviceRecord, "the daemon's record, for the report");
  app.add_option("--home", options.mHome, "user's folder, in USERPROFILE for the plug-in (default: OUT/home)");
  app.add_option("--refresh", options.mRefresh, "frames a second that the display shows, 0 for no waiting")
      ->check(CLI::Range(0.0, 1000.0))
      ->capture_default_str();
  app.add_option("--hold-seconds", options.mHold, "how long to go on after the session's last line")
      ->check(CLI::Range(0.0, 86400.0))
      ->capture_default_str();
  CLI::Option* const checkP =
      app.add_flag("--check", options.mIsCheckOnly, "only read drawing and session; status 2 if one can't be used");
  moduleP->excludes(checkP);
  try {
    app.parse(count, arguments);
    if (!options.mIsCheckOnly && options.mModule.empty())
      throw CLI::RequiredError("--module");
    return true;
  } catch (const CLI::CallForHelp& help) {
    exitStatus = app.exit(help);
  } catch (const CLI::ParseError& error) {
    std::cerr << "acad: " << error.what() << '\n';
    exitStatus = 2;
  }
  return false;
}

} // namespace program
