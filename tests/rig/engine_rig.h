#ifndef ENGINE_RIG_H
#define ENGINE_RIG_H

#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "auto_cad_proxy.h"
#include "host.h"
#include "ov_auto_cad.h"

#include "engine_state.h"
#include "fake_devlink.h"
#include "temp_folder.h"

/// What tests of the whole engine need: a home folder of their own, a fresh host, the fake of the device library, and,
/// where Windows is a stand-in, a fresh desktop with the manual clock.
namespace rig {

/// Clears ordered faults, and resets the host and, where Windows is a stand-in, the desktop. Holds its clock.
void freshSurroundings();
/// Makes the home folder of this test program and points USERPROFILE there. Idempotent.
void useOwnHome();
/// Returns the home folder; it lives as long as the program.
TempFolder& home();
constexpr char kMenuFile[] = "Orvaner/Applications/autocad.mnu";
constexpr char kMenuReader[] = "OvScribe2018.dll";
constexpr char kSettingsFile[] = "Orvaner/Applications/autocad_addin.ini";

/// Returns the text of a settings file with all values at their defaults, all log types on, and the given
/// keys changed: {"transSensBase", "0"}.
std::string settingsText(const std::vector<std::pair<std::string, std::string>>& changes = {});

/// A record of any thread. Of a file name that is too long for its column, the end is kept.
struct Record {
  std::string type, thread, file, text;
};
/// Returns the records in the log file from a position on, in order.
std::vector<Record> allRecords(std::size_t from);
/// Returns this thread's records, each as "ERR text", without those of the device link.
std::vector<std::string> records(std::size_t from);
std::size_t logSize();

/// Returns a line entity for host::add.
std::unique_ptr<AcDbLine> line(AcGePoint3d start, AcGePoint3d end);

} // namespace rig

/// A test with a running engine. The engine is made once for a suite, since each unload waits for the connection
/// watch, and is reset between tests; restart() makes a new one with other settings.
class EngineTest : public ::testing::Test {
protected:
  static void TearDownTestSuite() { stop(); }
  void SetUp() override;
  /// Expects that everything borrowed from the host has been given back, and that no view got NaN or
  /// infinity.
  void TearDown() override;

  static void restart(const std::vector<std::pair<std::string, std::string>>& settingsChanges = {});
  static void stop() { mPluginP.reset(); }

  static OvAutoCad& plugin() { return *mPluginP; }
  static AutoCadProxy& proxy() { return *mPluginP->mAutoCadProxyP; }

  /// Leaves a sample for the pump.
  static void setSample(int x, int y, int z, int a = 0, int b = 0, int c = 0) {
    rig::setSample(plugin(), x, y, z, a, b, c);
  }
  /// Leaves a sample and plays a pass.
  static bool pass(int x, int y, int z, int a = 0, int b = 0, int c = 0) {
    setSample(x, y, z, a, b, c);
    return proxy().handleDeviceCap();
  }
  static void release() { pass(0, 0, 0); }

  /// Returns the records since the test's start or the last call.
  std::vector<std::string> takeRecords();

private:
  static inline std::unique_ptr<OvAutoCad> mPluginP;
  static inline bool mHasOwnSettings = false;
  std::size_t mLogStart = 0;
};

#endif
