#include "options.h"

#include <CLI/CLI.hpp>

#include <filesystem>

namespace program {

namespace {

std::string besideProgram(const char* program, const char* name) {
  return (std::filesystem::u8path(program).parent_path() / name).u8string();
}

} // namespace

bool readOptions(int count, char** arguments, Options& options, int& exitStatus) {
  CLI::App app{
      "Opens a drawing, loads a plug-in, plays a session's host lines and leaves a report of what the view "
      "did.\nEnds with status 0 only if the plug-in loaded, took events, something came of them, and it "
      "unloaded.\n"
      "Without a session it runs until its window is closed or Ctrl-C is pressed."};
  app.allow_windows_style_options(false); // a path may begin with a slash there too
  app.add_option("DRAWING", options.mDrawing, "drawing to open, DXF (default: an empty one)");
  app.add_option("--session", options.mSession, "session file; its host lines are played here");
  app.add_option(
         "--menu", options.mMenu,
         "the host's menu, from which the menu reader writes autocad.mnu (default: one that draws and "
         "looks at the drawing)")
      ->check(CLI::ExistingFile);
  CLI::Option* const moduleP = app.add_option(
      "--module", options.mModule, "plug-in to load (default: OVAutoCAD2019.arx beside this program)");
  app.add_option("--out", options.mOut,
                 "folder for report.html, session.json, saved.session and command_line.txt")
      ->capture_default_str();
  app.add_option("--device-record", options.mDeviceRecord, "the daemon's record, for the report");
  CLI::Option* const liveP =
      app.add_flag("--live", options.mIsLive, "serve a page on this machine that shows the view as it moves");
  app.add_option("--live-port", options.mLive.mPort, "port of the page; 0 takes any free one")
      ->needs(liveP)
      ->capture_default_str();
  app.add_option("--live-file", options.mLiveFile, "file to write the page's address to")->needs(liveP);
  app.add_option("--token", options.mLive.mToken, "what a page has to know (default: 128 random bits)")
      ->envname("OV_LIVE_TOKEN");
  app.add_option(
         "--device", options.mDevice,
         "where a page, or a session that counts passes, finds the device: the address that ov_daemon "
         "--live writes to its --live-file; a session that counts passes needs ov_daemon --live-silence 0")
      ->envname("OV_LIVE_DEVICE");
  app.add_option(
      "--home", options.mHome,
      "user's folder, in USERPROFILE for the plug-in (default: OUT/home); one that exists stays as it is");
  app.add_option("--refresh", options.mRefresh, "frames a second that the display shows, 0 for no waiting")
      ->check(CLI::Range(0.0, 1000.0))
      ->capture_default_str();
  app.add_option("--hold-seconds", options.mHold, "how long to go on after the session's last line")
      ->check(CLI::Range(0.0, 86400.0))
      ->capture_default_str();
  CLI::Option* const dryRunP = app.add_flag("--dry-run", options.mIsDryRun,
                                            "only read drawing and session; status 2 if one can't be used");
  moduleP->excludes(dryRunP);
  app.add_flag(
      "--check,!--no-check", options.mIsToCheck,
      "hold each pass of the plug-in against the model (the default); status 1 if one contradicts it");
  try {
    app.parse(count, arguments);
    options.mIsToCheck = options.mIsToCheck || options.mIsLive; // a page shows which sample explains a frame
    if (!options.mIsDryRun && options.mModule.empty())
      options.mModule = besideProgram(arguments[0], "OVAutoCAD2019.arx");
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
