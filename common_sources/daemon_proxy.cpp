#include "daemon_proxy.h"

#include <cstring>

#include <ov_devlink.h>

#include "auto_cad_proxy.h"
#include "event_codes.h"
#include "keys/special_functions.h"
#include "logging.h"
#include "ov_auto_cad.h"
#include "sleep_while.h"

namespace {

constexpr char kClientName[] = "acad";
constexpr char kApplicationName[] = "AutoCAD";
constexpr int kDevice = 0;                       // no device is chosen, the first one serves
constexpr std::uint32_t kReadPollInterval = 200; // milliseconds

// Records of the device library: sizes, and offsets of what we read, in bytes.
constexpr std::size_t kDevInfoSize = 96;
constexpr std::size_t kDevInfoTextOffset = 20;
constexpr std::size_t kAdvancedSettingsSize = 148;
constexpr std::size_t kRotationCodeOffset = 132;
constexpr std::size_t kZoomAllAfterViewOffset = 138;

void* readThreadEntry(void* argument) {
  OV_LOG(CRT, "Global", "readThreadEntry", "Creating reading thread ...");
  static_cast<DaemonProxy*>(argument)->readMouseEvents();
  OV_LOG(CRT, "Global", "readThreadEntry", "Reading thread ended.");
  return nullptr;
}

} // namespace

DaemonProxy::DaemonProxy(OvAutoCad* ovAutoCadP)
    : mOvAutoCadP(ovAutoCadP), mReadThread(), mIsToRead(true), mIsReading(false), mIsConnected(false),
      mIsToSendMode(false), mHasReadThread(false) {
  OV_LOG(CRT, "DaemonProxy", "DaemonProxy::DaemonProxy", "Constructing ...");
  mOvAutoCadP->mPendingKey = -1;
  try {
    mIsConnected = connect();
  } catch (...) { // out of memory, for instance; the connection watch tries again
  }
  mHasReadThread = pthread_create(&mReadThread, nullptr, readThreadEntry, this) == 0;
  OV_LOG(CRT, "DaemonProxy", "DaemonProxy::DaemonProxy", "Constructed.");
}

DaemonProxy::~DaemonProxy() {
  OV_LOG(CRT, "DaemonProxy", "DaemonProxy::~DaemonProxy", "Destructing ...");
  mIsToRead = false;
  bool isDisconnected = false;
  try {
    isDisconnected = ovDisconnect() == 0;
  } catch (...) { // nothing may leave a destructor
  }
  if (!isDisconnected)
    OV_LOG(ERR, "DaemonProxy", "DaemonProxy::~DaemonProxy", "Error in ovDisConnect()!");
  sleepWhile(mIsReading, kReadPollInterval);
  // After it has cleared its flag the thread still writes a record and returns through our code, which the
  // host unmaps soon.
  if (mHasReadThread)
    pthread_join(mReadThread, nullptr);
  OV_LOG(CRT, "DaemonProxy", "DaemonProxy::~DaemonProxy", "Destructed.");
}

bool DaemonProxy::connect() {
  OV_LOG(TRC, "DaemonProxy", "DaemonProxy::connect", "Checking connection ...");
  mIsConnected = false;
  if (ovConnect(0, kClientName) != 0) {
    OV_LOG(ERR, "DaemonProxy", "DaemonProxy::connect", "Error in ovConnect()!");
    return false;
  }
  int count = 0;
  int unused1 = 0;
  int unused2 = 0;
  if (ovGetDevNum(&count, &unused1, &unused2) != 0) {
    OV_LOG(ERR, "DaemonProxy", "DaemonProxy::connect", "Error in ovGetDevNum()!");
    return false;
  }
  for (int devIdx = 0; devIdx < count; ++devIdx) {
    char record[kDevInfoSize + 1] = {}; // one more byte, so that the text is always terminated
    if (ovGetDevInfo(devIdx, record) != 0) {
      OV_LOG(ERR, "DaemonProxy", "DaemonProxy::connect", "Error in ovGetDevInfo()!");
      return false;
    }
    OV_LOG(INF, "DaemonProxy", "DaemonProxy::connect",
           "devIdx: " << devIdx << ":" << record + kDevInfoTextOffset);
  }
  retrieveRotMode();
  mIsConnected = true;
  mIsToSendMode = true;
  return true;
}

bool DaemonProxy::checkConnection() {
  int count = 0;
  int unused1 = 0;
  int unused2 = 0;
  if (ovGetDevNum(&count, &unused1, &unused2) == 0) {
    mIsConnected = true;
    return true;
  }
  OV_LOG(ERR, "DaemonProxy", "DaemonProxy::checkConnection", "Error in ovGetDevNum()!");
  mIsConnected = false;
  if (ovDisconnect() != 0)
    OV_LOG(ERR, "DaemonProxy", "DaemonProxy::checkConnection", "Error in ovDisconnect()!");
  return false;
}

void DaemonProxy::retrieveRotMode() {
  char record[kAdvancedSettingsSize] = {};
  if (ovGetAdvancedSettings(kDevice, record) != 0)
    OV_LOG(ERR, "DaemonProxy", "DaemonProxy::retrieveRotMode", "Error in ovGetAdvancedSettings()!");
  std::int32_t code = 0;
  std::memcpy(&code, record + kRotationCodeOffset, sizeof code);
  mOvAutoCadP->mAutoCadProxyP->setRotMode(code);
  mOvAutoCadP->mAutoCadProxyP->mZoomAllAfterView = record[kZoomAllAfterViewOffset] != 0;
}

void DaemonProxy::readMouseEvents() {
  mIsReading = true;
  OV_LOG(CRT, "DaemonProxy", "DaemonProxy::readMouseEvents",
         "Invoking reading loop ... mIsToRead: " << static_cast<bool>(mIsToRead));
  std::string lastMode; // the last one that the daemon accepted
  while (mIsToRead) {
    try {
      readMouseEvent(lastMode);
    } catch (...) { // out of memory, for instance; an exception that leaves a thread ends the host
    }
  }
  OV_LOG(CRT, "DaemonProxy", "DaemonProxy::readMouseEvents", "Reading loop left.");
  mIsReading = false;
}

void DaemonProxy::readMouseEvent(std::string& lastMode) {
  short x = 0, y = 0, z = 0, a = 0, b = 0, c = 0;
  int unused1 = 0, unused2 = 0, unused3 = 0, unused4 = 0;
  int eventCode = 0;
  if (ovFetchEvent(kDevice, &x, &y, &z, &a, &b, &c, &unused1, &unused2, &eventCode, &unused3, &unused4) ==
      0) {
    if (eventCode < 0) {
      mOvAutoCadP->mCapX = x;
      mOvAutoCadP->mCapY = y;
      mOvAutoCadP->mCapZ = z;
      mOvAutoCadP->mCapA = a;
      mOvAutoCadP->mCapB = b;
      mOvAutoCadP->mCapC = c;
    } else {
      handleEvent(eventCode, lastMode);
    }
  }
  const std::string mode = mOvAutoCadP->getModeName();
  if (mode == lastMode && !mIsToSendMode)
    return;
  if (ovSetApplMode(kApplicationName, mode.c_str()) == 0)
    lastMode = mode;
  mIsToSendMode = false;
}

void DaemonProxy::handleEvent(std::int32_t eventCode, std::string& lastMode) {
  OV_LOG(DBG, "DaemonProxy", "DaemonProxy::readMouseEvents",
         "event: " << eventCode << ", APPL_FUNC_START: " << APPL_FUNC_START);
  if (eventCode >= APPL_FUNC_START) {
    mOvAutoCadP->mPendingKey = eventCode - APPL_FUNC_START;
    return;
  }
  switch (eventCode) {
  case kRotationSettingsEvent1:
  case kRotationSettingsEvent2:
    retrieveRotMode();
    break;
  case kAnnounceModeEvent:
    lastMode.clear();
    break;
  default:
    if (findSpecialFunction(eventCode))
      mOvAutoCadP->mPendingSpecial = eventCode;
    break;
  }
}
