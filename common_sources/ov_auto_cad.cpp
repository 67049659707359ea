#include "ov_auto_cad.h"

#include "auto_cad_proxy.h"
#include "daemon_proxy.h"
#include "logging.h"
#include "sleep_while.h"
#include "util.h"

namespace {

constexpr std::uint32_t kWatchInterval = 2000; // milliseconds between two looks at the connection

void* connWatchThreadEntry(void* argument) {
  OvAutoCad::watchConnection(*static_cast<OvAutoCad*>(argument));
  return nullptr;
}

} // namespace

OvAutoCad::OvAutoCad()
    : mConnWatchThread(), mIsToWatchConnection(true), mIsConnWatchRunning(false), mCapX(0), mCapY(0),
      mCapZ(0), mCapA(0), mCapB(0), mCapC(0), mPendingKey(0), mPendingSpecial(0), mHasConnWatchThread(false) {
  initLogging();
  mAutoCadProxyP = std::make_unique<AutoCadProxy>(this);
  mDaemonProxyP = std::make_unique<DaemonProxy>(this);
  mHasConnWatchThread = pthread_create(&mConnWatchThread, nullptr, connWatchThreadEntry, this) == 0;
  if (!mHasConnWatchThread)
    OV_LOG(ERR, "OvAutoCad", "OvAutoCad::OvAutoCad", "Error creating reading thread!");
  OV_LOG(CRT, "OvAutoCad", "OvAutoCad::OvAutoCad", "Constructed.");
}

OvAutoCad::~OvAutoCad() {
  OV_LOG(CRT, "OvAutoCad", "OvAutoCad::~OvAutoCad", "Destructing ...");
  mIsToWatchConnection = false;
  mAutoCadProxyP->mIsPumpRunning = false;
  mDaemonProxyP->mIsToRead = false;
  // The watch goes first: it calls into DaemonProxy.
  sleepWhile(mIsConnWatchRunning, kWatchInterval);
  // After clearing its flag the thread still has to leave our code, which is unmapped soon. The join also
  // covers a thread that hasn't set its flag yet.
  if (mHasConnWatchThread)
    pthread_join(mConnWatchThread, nullptr);
  // The reading loop reads AutoCadProxy, so that one goes last.
  mDaemonProxyP.reset();
  mAutoCadProxyP.reset();
  OV_LOG(CRT, "OvAutoCad", "OvAutoCad::~OvAutoCad", "Destructed.");
}

void OvAutoCad::initLogging() {
  gLogging.mLogFile = mLogPars.mLogFile;
  gLogging.mMaxSize = mLogPars.mMaxSize;
  gLogging.mIsLogToFile = mLogPars.mIsLogToFile;
  gLogging.mIsLogToCnsl = mLogPars.mIsLogToCnsl;
  gLogging.mIsWarning = mLogPars.mIsWarning;
  gLogging.mIsCreation = mLogPars.mIsCreation;
  gLogging.mIsTrace = mLogPars.mIsTrace;
  gLogging.mIsDevCom = mLogPars.mIsDevCom;
  gLogging.mIsIntCom = mLogPars.mIsIntCom;
  gLogging.mIsInfo = mLogPars.mIsInfo;
  gLogging.mIsDebug = mLogPars.mIsDebug;
  gLogging.mIsTmp = mLogPars.mIsTmp;
  gLogging.mExclFileToLog = mLogPars.mExclFileToLog;
  gLogging.init(gLogging);
}

std::string OvAutoCad::getModeName() const {
  return mAutoCadProxyP->getModeName();
}

void OvAutoCad::watchConnection(OvAutoCad& ovAutoCad) {
  ovAutoCad.mIsConnWatchRunning = true;
  while (ovAutoCad.mIsToWatchConnection) {
    try {
      if (!ovAutoCad.mDaemonProxyP->checkConnection())
        ovAutoCad.mDaemonProxyP->connect();
    } catch (...) { // an exception that leaves a thread ends the host
    }
    try {
      Util::sleep(kWatchInterval);
    } catch (...) {
    }
  }
  ovAutoCad.mIsConnWatchRunning = false;
}
