#ifndef OPTIONS_H
#define OPTIONS_H

#include "server.h"

#include <string>

namespace program {

/// The command line's options. Paths as written, in UTF-8.
struct Options {
  /// Empty: an empty drawing.
  std::string mDrawing;
  /// Empty: no session, the user acts.
  std::string mSession;
  /// Empty: the host's own menu.
  std::string mMenu;
  std::string mModule;
  std::string mOut = "out";
  /// Empty: no record.
  std::string mDeviceRecord;
  /// Address of the daemon's door for pages; empty: there is none.
  std::string mDevice;
  /// Serve a page.
  bool mIsLive = false;
  web::ServerOptions mLive;
  /// File for the page's address; empty: none.
  std::string mLiveFile;
  /// Empty: "home" in mOut.
  std::string mHome;
  /// Hz; 0 shows frames without waiting.
  double mRefresh = 60;
  /// Seconds that the host goes on after the session's last line.
  double mHold = 1;
  /// Read drawing and session, report what is wrong with them, and end.
  bool mIsDryRun = false;
  /// Compare each pass of the plug-in with the model.
  bool mIsToCheck = true;
};

/// Reads the command line. Returns true if the program is to run; otherwise the exit status is set, and help
/// or one line about the mistake has been printed.
bool readOptions(int count, char** arguments, Options& options, int& exitStatus);

} // namespace program

#endif
