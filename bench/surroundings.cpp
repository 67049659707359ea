#include "surroundings.h"

#include <cstdlib>
#include <memory>

#include "desktop.h"
#include "engine_state.h"
#include "host.h"
#include "logging.h"

namespace bench {

namespace {

constexpr std::int32_t kLargestLog = 2000000; // kB, nearly the largest limit that fits 32 bits of bytes

std::unique_ptr<OvAutoCad>& pluginSlot() {
  static std::unique_ptr<OvAutoCad> sPluginP;
  return sPluginP;
}

} // namespace

rig::TempFolder& home() {
  static rig::TempFolder sFolder;
  return sFolder;
}

OvAutoCad& plugin() {
  if (!pluginSlot()) {
    home().makeFolder("Orvaner/Applications");
    setenv("USERPROFILE", home().native().c_str(), 1);
    setenv("OV_DEVLINK_PORT", kNoDaemon, 0);
    host::reset();
    pluginSlot() = std::make_unique<OvAutoCad>();
    pluginSlot()->mPendingKey = -1;
    host::reset(); // drops the queued command for the menu reader
    showHost();
    resetView();
  }
  return *pluginSlot();
}

void stopEngine() {
  pluginSlot().reset();
}

void showHost() {
  desktop::reset();
  desktop::Window main;
  main.className = L"AfxMDIFrame140u";
  main.rect = desktop::rectangle(0, 0, 1920, 1040);
  const HWND mainWindow = desktop::addWindow(main);
  const auto child = [mainWindow](const wchar_t* className, RECT rect) {
    desktop::Window window;
    window.className = className;
    window.rect = rect;
    window.parent = mainWindow;
    desktop::addWindow(window);
  };
  child(L"AfxFrameOrView140u", desktop::rectangle(0, 160, 1920, 780));
  child(L"AdUiRibbonBar", desktop::rectangle(0, 0, 1920, 160));
  child(L"AcCommandLine", desktop::rectangle(300, 900, 1200, 30));
  child(L"AfxControlBar140u", desktop::rectangle(0, 1000, 1920, 40));
  SetCursorPos(960, 500);
}

void resetView() {
  host::ViewState state;
  state.position = AcGePoint3d(40, -60, 50);
  state.target = AcGePoint3d(1, 2, 3);
  state.up = AcGeVector3d(-0.3, 0.5, 0.8).normalize();
  host::view() = state;
}

void setSample(int x, int y, int z, int a, int b, int c) {
  rig::setSample(plugin(), x, y, z, a, b, c);
}

void turnSample(int i) {
  const int sign = i % 2 == 0 ? 1 : -1;
  setSample(30 * sign, -20 * sign, 10 * sign, 40 * sign, -50 * sign, 60 * sign);
}

void setDefaultLog() {
  plugin();
  LogPars pars;
  pars.mSettingsDirPath = home().backslashed("Orvaner");
  pars.mMaxSize = kLargestLog;
  gLogging.init(pars);
}

void setQuietLog() {
  plugin();
  gLogging.mIsCreation = gLogging.mIsInfo = false;
}

} // namespace bench
