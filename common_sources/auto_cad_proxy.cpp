#include "auto_cad_proxy.h"

#include <cstdlib>
#include <stdexcept>

#include "logging.h"
#include "motion/rotation_mode.h"
#include "ov_auto_cad.h"
#include "util.h"

AutoCadProxy* gAutoCadProxyP = nullptr;
HINSTANCE AutoCadProxy::mPlugInLibrary = nullptr;

namespace {

constexpr UINT kMovingInterval = 10; // milliseconds between two ticks while the cap moves
constexpr UINT kRestInterval = 100;  // milliseconds between two ticks at rest

int gTicks = 0; // calls of TimerProc that haven't returned yet

struct Tick {
  Tick() { ++gTicks; }
  ~Tick() { --gTicks; }
};

/// Arms the timer of the next tick. Throws if no timer can be had: the pump stops then.
void armTimer(UINT_PTR& id, UINT interval) {
  id = SetTimer(nullptr, 0, interval, TimerProc);
  if (id == 0)
    throw std::runtime_error("no timer");
}

/// Reads a 16-bit system variable. Returns false, and leaves the value, if the host refuses it.
bool readVariable(const ACHAR* name, short& value) {
  resbuf result = {};
  if (acedGetVar(name, &result) != RTNORM)
    return false;
  value = result.resval.rint;
  return true;
}

} // namespace

AutoCadProxy::AutoCadProxy(OvAutoCad* ovAutoCadP)
    : mOvAutoCadP(ovAutoCadP), mTraSensBase(ovAutoCadP->mTraSensBase), mRotSensBase(ovAutoCadP->mRotSensBase),
      mMaxContMoveTime(static_cast<std::uint32_t>(ovAutoCadP->mMaxContMoveTime)),
      mUseInt3dIntrfce(ovAutoCadP->mUseInt3dIntrfce), mViewMode(0), mCapIsMoving(false), mIsPumpRunning(true),
      mIsDocLocked(false), mRotMode(0), mZoomAllAfterView(false), mKeepHorizon(false), mHoverMode(false),
      mObjectMoveMode(false), mMenuIsLoaded(false), mTimerId(0), mLockedDocumentP(nullptr) {
  OV_LOG(CRT, "AutoCadProxy", "AutoCadProxy::AutoCadProxy", "Constructing ...");
  if (!mUseInt3dIntrfce)
    StartDotNETPlugin();
  gAutoCadProxyP = this;
  try {
    armTimer(mTimerId, kRestInterval);
  } catch (...) { // the plug-in stays loaded, and the log says why its cap does nothing
    OV_LOG(ERR, "AutoCadProxy", "AutoCadProxy::AutoCadProxy", "Error AutoCadProxy()");
  }
  OV_LOG(CRT, "AutoCadProxy", "AutoCadProxy::AutoCadProxy", "AutoCadProxy constructed.");
}

AutoCadProxy::~AutoCadProxy() {
  OV_LOG(CRT, "AutoCadProxy", "AutoCadProxy::~AutoCadProxy", "Destructing ...");
  mIsPumpRunning = false;
  try {
    KillTimer(nullptr, mTimerId);
  } catch (...) { // a destructor must not throw; a tick that still comes finds no object
  }
  try {
    // The cap is still deflected. Nobody else would release the lock, and the drawing would stay locked.
    if (mIsDocLocked) {
      AcApDocManager& manager = documentManager();
      if (manager.curDocument() == mLockedDocumentP)
        manager.unlockDocument(mLockedDocumentP);
    }
  } catch (...) {
  }
  // A tick or a command that still comes finds nothing to work on.
  if (gAutoCadProxyP == this)
    gAutoCadProxyP = nullptr;
  OV_LOG(CRT, "AutoCadProxy", "AutoCadProxy::~AutoCadProxy", "Destructed.");
}

void CALLBACK TimerProc(HWND, UINT, UINT_PTR, DWORD) {
  AutoCadProxy* const proxyP = gAutoCadProxyP;
  if (!proxyP)
    return;
  const Tick tick;
  try {
    // One-shot, so that a tick that runs long isn't entered again from a message loop below it.
    KillTimer(nullptr, proxyP->mTimerId);
    if (!proxyP->mMenuIsLoaded)
      proxyP->loadMenufile();
    proxyP->doTransform();
    if (!proxyP->mIsPumpRunning)
      return;
    armTimer(proxyP->mTimerId, proxyP->mCapIsMoving ? kMovingInterval : kRestInterval);
  } catch (...) {
    // The timer stays disarmed: the pump is dead until the plug-in is loaded again.
    OV_LOG(ERR, "Global", "TimerProc", "Error TimerProc()");
  }
}

bool AutoCadProxy::isInTick() {
  return gTicks > 0;
}

void AutoCadProxy::doTransform() {
  const std::uint32_t start = Util::getTickCount();
  std::uint32_t elapsed = 0;
  bool keepGoing = true;
  while (elapsed < mMaxContMoveTime && keepGoing) {
    // Takes effect at the next test: a pass that has begun is always completed. Unsigned, so the counter may
    // wrap.
    elapsed = Util::getTickCount() - start;
    try {
      handleDeviceKeys();
      keepGoing = !mUseInt3dIntrfce && handleDeviceCap();
    } catch (...) {
      OV_LOG(ERR, "AutoCadProxy", "AutoCadProxy::doTransform", "Error doTransform()");
    }
  }
}

void AutoCadProxy::handleDeviceKeys() {
  try {
    const std::int32_t key = mOvAutoCadP->mPendingKey;
    if (key >= 0) {
      execApplFunction(key);
      mOvAutoCadP->mPendingKey = -1;
    }
    const std::int32_t special = mOvAutoCadP->mPendingSpecial;
    if (special > 0) {
      execSpecialApplFunction(special);
      mOvAutoCadP->mPendingSpecial = 0;
    }
  } catch (...) {
    // The slot whose action threw stays filled: the action is tried again at the next pass.
    OV_LOG(ERR, "AutoCadProxy", "AutoCadProxy::handleDeviceKeys", "Error handleDeviceKeys()");
  }
}

bool AutoCadProxy::handleDeviceCap() {
  const int threshold = static_cast<std::int16_t>(static_cast<std::uint16_t>(mOvAutoCadP->mMinThreshold));
  const std::int32_t mode = retrieveMode();
  const std::int16_t x = mOvAutoCadP->mCapX;
  const std::int16_t y = mOvAutoCadP->mCapY;
  const std::int16_t z = mOvAutoCadP->mCapZ;
  const std::int16_t a = mOvAutoCadP->mCapA;
  const std::int16_t b = mOvAutoCadP->mCapB;
  const std::int16_t c = mOvAutoCadP->mCapC;

  const auto isDeflected = [threshold](int axis) { return std::abs(axis) > threshold; };
  if (!isDeflected(x) && !isDeflected(y) && !isDeflected(z) && !isDeflected(a) && !isDeflected(b) &&
      !isDeflected(c)) {
    handleCapIsReleased(mode);
    return false;
  }
  if (scrollTreesAndLists(x, y, z))
    return true; // mCapIsMoving stays as it is, and so does the tick interval
  if (mode == kMode2D)
    handleCapIsDeflectedIn2DMode(x, y, z);
  else
    handleCapIsDeflectedIn3DMode(x, y, z, a, b, c);
  if (!mCapIsMoving) {
    mCapIsMoving = true;
    OV_LOG(INF, "AutoCadProxy", "AutoCadProxy::handleDeviceCap", "Cap moving.");
  }
  return true;
}

std::int32_t AutoCadProxy::retrieveMode() {
  // The mode most likely hasn't changed if the host refuses a variable: it counts as the last mode had it, as
  // 3D if there was none.
  short tilemode = mViewMode == kMode2D ? 0 : 1;
  short cvport = mViewMode == kMode2D ? 1 : 2;
  readVariable(L"tilemode", tilemode);
  readVariable(L"cvport", cvport);
  const std::int32_t mode = tilemode == 0 && cvport == 1 ? kMode2D : kMode3D;
  mViewMode = mode;
  return mode;
}

std::string AutoCadProxy::getModeName() const {
  if (!mMenuIsLoaded.load(std::memory_order_acquire))
    return "Unknown";
  const auto index = static_cast<std::uint32_t>(static_cast<std::int32_t>(mViewMode));
  return index < mModes.size() ? mModes[index] : "Unknown";
}

void AutoCadProxy::setRotMode(std::int32_t code) {
  const motion::RotationMode mode = motion::rotationMode(code);
  mHoverMode = mode.hoverMode;
  mKeepHorizon = mode.keepHorizon;
  mRotMode = mode.rotMode;
}

bool AutoCadProxy::toggleRotationCenter() {
  return mOvAutoCadP->mToggleRotationCenter = !mOvAutoCadP->mToggleRotationCenter;
}

bool AutoCadProxy::toggleRotationAxis() {
  return mOvAutoCadP->mToggleRotationAxis = !mOvAutoCadP->mToggleRotationAxis;
}

bool AutoCadProxy::toggleScrollMode() {
  return mOvAutoCadP->mScrollTreeAndList = !mOvAutoCadP->mScrollTreeAndList;
}
