#ifndef DAEMON_PROXY_H
#define DAEMON_PROXY_H

#include <cstdint>
#include <string>

#include <pthread.h>

#include "relaxed.h"

class OvAutoCad;

/// The plug-in's side of the link to the device daemon: connection, rotation settings and the reading thread.
///
/// Owned by OvAutoCad. No failure of the device library reaches the user: each is logged, and the connection
/// watch tries again. The reading thread runs in either state of the link; the watch mends the link under it.
class DaemonProxy {
public:
  /// Makes the first attempt to connect and starts the reading thread, whether or not that succeeded.
  /// ovAutoCadP  not owned, has to outlive this object
  explicit DaemonProxy(OvAutoCad* ovAutoCadP);
  /// Disconnects, which frees a blocked reading thread, and waits for that thread.
  ~DaemonProxy();
  DaemonProxy(const DaemonProxy&) = delete;
  DaemonProxy& operator=(const DaemonProxy&) = delete;

  /// Opens the link, lists the devices in the log and fetches the rotation settings. True: connected. For the
  /// main thread (once, in the constructor) and the connection watch.
  bool connect();
  /// Tests whether the daemon answers, and closes a dead link. Returns the new mIsConnected. For the
  /// connection watch.
  bool checkConnection();
  /// Fetches rotation code and zoom flag; a failure sets code 0 and clears the flag. On any thread.
  void retrieveRotMode();
  /// The reading loop: stores each device event in the shared event state, and sends the daemon the host's
  /// mode when it has changed. Runs until mIsToRead is cleared.
  void readMouseEvents();

  OvAutoCad* mOvAutoCadP;
  pthread_t mReadThread;
  Relaxed<bool> mIsToRead;
  Relaxed<bool> mIsReading;    // written by the reading thread only: it is in the loop
  Relaxed<bool> mIsConnected;  // last known state of the link
  Relaxed<bool> mIsToSendMode; // the mode has to be announced again, changed or not

private:
  /// Waits for one event and stores it; then sends the daemon the mode's name if it has changed.
  void readMouseEvent(std::string& lastMode);
  /// Stores a key or a view command in its slot, or obeys a request of the daemon.
  /// lastMode  the mode that the daemon accepted last; empty: to be sent again
  void handleEvent(std::int32_t eventCode, std::string& lastMode);

  bool mHasReadThread;
};

#endif
