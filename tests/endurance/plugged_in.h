#ifndef PLUGGED_IN_H
#define PLUGGED_IN_H

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include <gtest/gtest.h>

#include "auto_cad_proxy.h"
#include "autocad_app.h"
#include "ov_auto_cad.h"
#include "process.h"
#include "temp_folder.h"

/// What a process uses. Where a sanitizer keeps freed memory, memory counts as none.
struct Usage {
  std::ptrdiff_t threads = 0;
  std::ptrdiff_t descriptors = 0;
  std::int64_t heap = 0;     // bytes in use
  std::int64_t resident = 0; // bytes
  std::size_t timers = 0;
};

/// A daemon process that takes the device's verbs from us, a line each.
class DaemonProcess {
public:
  DaemonProcess(const rig::TempFolder& home, std::uint16_t port);
  ~DaemonProcess();
  DaemonProcess(const DaemonProcess&) = delete;
  DaemonProcess& operator=(const DaemonProcess&) = delete;

  void tell(const std::string& line) const;

private:
  int mInput;
  std::unique_ptr<Process> mProcessP;
};

/// The plug-in as the host loads it, with the real client library and a port of its own.
///
/// The clock is in hand: the connection watch, which looks every two seconds, looks every real millisecond
/// then.
class PluggedIn : public testing::Test {
protected:
  PluggedIn();
  ~PluggedIn() override;

  /// Loads the plug-in, its menu included: twenty keys that type KEY0, KEY1, ...
  void load();
  OvAutoCad& plugin() { return *mApp.mOvAutoCadP; }
  AutoCadProxy& proxy() { return *plugin().mAutoCadProxyP; }

  /// A fresh document with the plug-in's commands, and the records that the stand-ins keep for tests begun
  /// anew: the history of the command line, the sleeps. They grow with the time, which isn't the plug-in's
  /// doing.
  void newDocument();
  /// Lets the timer fall due. Gives the number of passes that the pump made, if none of them slept.
  std::int64_t tick();
  /// What the keys have typed since the last call, as in "KEY3 KEY4 ".
  std::string typedKeys();

  /// Pumps until something holds; false if that takes absurdly long.
  bool pumpUntil(const std::function<bool()>& holds, double seconds = 30);
  bool pumpUntilSample(short x);
  /// Nothing is held, one timer is armed, no view was told a number that is none.
  static bool isBalanced();
  static Usage usage();
  /// Whether no more is used than before; threads that come and go get a moment.
  bool isBackTo(const Usage& before);

  static constexpr int kKeys = 20;

  rig::TempFolder mHome;
  std::uint16_t mPort = 0;

private:
  CAutoCAD2011App mApp;
  std::size_t mHistoryRead = 0;
};

#endif
