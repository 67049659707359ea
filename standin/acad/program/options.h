#ifndef OPTIONS_H
#define OPTIONS_H

#include "server.h"

#include <string>

namespace program {

/// The command line's options. Paths as written, in UTF-8.
struct Options {
  std::string mDrawing; ///< empty: an empty one
  std::string mSession; ///< empty: none, the user acts
  std::string mModule;
  std::string mOut = "out";
  std::string mDeviceRecord; ///< empty: none
  std::string mDevice;       ///< address of the daemon's door for pages; empty: there is none
  bool mIsLive = false;      ///< serve a page
  web::ServerOptions mLive;
  std::string mLiveFile;  ///< gets the page's address; empty: none
  std::string mHome;      ///< empty: "home" in mOut
  double mRefresh = 60;   ///< Hz; 0 shows frames without waiting
  double mHold = 1;       ///< seconds that the host goes on after the session's last line
  bool mIsDryRun = false; ///< read drawing and session, report what is wrong with them, and end
  bool mIsToCheck = true; ///< hold each pass of the plug-in against the model
};

/// Reads the command line. Returns true if the program is to run; otherwise the exit status is set, and help
/// or one line about the mistake has been printed.
bool readOptions(int count, char** arguments, Options& options, int& exitStatus);

} // namespace program

#endif
