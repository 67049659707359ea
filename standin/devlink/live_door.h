#ifndef LIVE_DOOR_H
#define LIVE_DOOR_H

#include "daemon.h"
#include "server.h"

#include <string>

namespace devlink {

/// The device's door for pages: what the driver sends are lines of a session. When it falls silent while the cap
/// is deflected, the cap is released.
class LiveDoor : private web::Door {
public:
  /// Opens the port. Throws std::system_error if it can't be had.
  /// daemon  plays what comes; must outlive the door
  LiveDoor(web::ServerOptions options, Daemon& daemon);

  std::string address() const { return mServer.socketAddress(); }

  // What the daemon reports.
  void said(const std::string& text);
  /// Absences count here; line as in DaemonOptions::mRecord.
  void recorded(const std::string& line);

private:
  void onOpened(web::ClientId client, bool isDriver) override;
  void onDriver(web::ClientId client) override { onOpened(client, true); }
  std::string onLine(web::ClientId client, bool isDriver, const std::string& line) override;
  void onSilent() override;

  Daemon& mDaemon;
  /// A page has deflected the cap.
  bool mIsDeflected = false;
  web::Server mServer; // last: its thread uses what is above
};

} // namespace devlink

#endif
