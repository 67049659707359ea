#ifndef OV_AUTO_CAD_H
#define OV_AUTO_CAD_H

#include <cstdint>
#include <memory>
#include <string>

#include <pthread.h>

#include "relaxed.h"
#include "settings.h"

class AutoCadProxy;
class DaemonProxy;

/// The top object of the plug-in's own logic: the settings, the owner of motion engine and device link, and
/// the place where the reading thread leaves device input for the timer pump on the host's main thread.
///
/// Lives from the host's load message to its unload message, on its main thread. Once constructed it runs
/// whether or not the daemon answered; the connection watch restores the link for as long as the plug-in is
/// loaded. Errors are logged only.
class OvAutoCad : public Settings {
public:
  OvAutoCad();
  /// Takes up to 2000 ms as a rule, since the connection watch sleeps that long and is waited for, and up to
  /// 4000 ms if the watch is inside a check just then.
  ~OvAutoCad();

  /// Returns the name of the host's mode. May be called on any thread while the object lives.
  std::string getModeName() const;

  /// Body of the connection-watch thread.
  static void watchConnection(OvAutoCad& ovAutoCad);

  std::unique_ptr<AutoCadProxy> mAutoCadProxyP;
  std::unique_ptr<DaemonProxy> mDaemonProxyP;
  pthread_t mConnWatchThread;
  Relaxed<bool> mIsToWatchConnection; // the connection-watch thread runs while set
  Relaxed<bool> mIsConnWatchRunning;  // written by that thread only

  // The motion sample, device counts as the device library delivered them. A level: written by the reading
  // thread, read by the pump again and again. Each axis is written by itself, so the pump may see a mix of
  // two samples; the next pass corrects that.
  Relaxed<std::int16_t> mCapX, mCapY, mCapZ; // translation
  Relaxed<std::int16_t> mCapA, mCapB, mCapC; // rotation

  // Slots of one item each: a newer event overwrites what the pump hasn't taken yet.
  Relaxed<std::int32_t> mPendingKey;     // index of an application function, -1 = empty
  Relaxed<std::int32_t> mPendingSpecial; // event code of a view command, 0 = empty

private:
  void initLogging();

  bool mHasConnWatchThread;
};

#endif
