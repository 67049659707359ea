#ifndef RXAPP_H
#define RXAPP_H

#include "rxobject.h"

namespace AcRx {

/// The messages to an application that this host sends.
enum AppMsgCode { kInitAppMsg = 1, kUnloadAppMsg = 2, kLoadDwgMsg = 3, kUnloadDwgMsg = 4 };

enum AppRetCode { kRetOK = 0, kRetError = 3 };

} // namespace AcRx

/// An application of the host: one global object of its library, whose operations handle the host's messages.
/// pkt is the data of the message.
class AcRxDbxApp {
public:
  /// Whether the user may unload the application, and whether it can live with several documents.
  bool mIsToUnlock = true;
  bool mIsMdiAware = true;

  virtual AcRx::AppRetCode On_kInitAppMsg(void* pkt) {
    if (mIsToUnlock)
      if (AcRxDynamicLinker* const linkerP = dynamicLinker())
        linkerP->unlockApplication(pkt);
    if (mIsMdiAware)
      if (AcRxDynamicLinker* const linkerP = dynamicLinker())
        linkerP->registerAppMDIAware(pkt);
    RegisterServerComponents();
    return AcRx::kRetOK;
  }
  virtual AcRx::AppRetCode On_kUnloadAppMsg(void*) { return AcRx::kRetOK; }
  virtual AcRx::AppRetCode On_kLoadDwgMsg(void*) { return AcRx::kRetOK; }
  virtual AcRx::AppRetCode On_kUnloadDwgMsg(void*) { return AcRx::kRetOK; }
  virtual AcRx::AppRetCode On_kInvkSubrMsg(void*) { return AcRx::kRetOK; }
  virtual AcRx::AppRetCode On_kEndMsg(void*) { return AcRx::kRetOK; }
  virtual AcRx::AppRetCode On_kQuitMsg(void*) { return AcRx::kRetOK; }
  virtual AcRx::AppRetCode On_kSaveMsg(void*) { return AcRx::kRetOK; }
  virtual AcRx::AppRetCode On_kCfgMsg(void*) { return AcRx::kRetOK; }
  virtual AcRx::AppRetCode On_kDependencyMsg(void*) { return AcRx::kRetOK; }
  virtual AcRx::AppRetCode On_kSuspendMsg(void*) { return AcRx::kRetOK; }
  virtual AcRx::AppRetCode On_kResumeMsg(void*) { return AcRx::kRetOK; }
  virtual AcRx::AppRetCode On_kPreEndMsg(void*) { return AcRx::kRetOK; }
  virtual AcRx::AppRetCode On_kPreQuitMsg(void*) { return AcRx::kRetOK; }
  virtual AcRx::AppRetCode On_kPreSaveMsg(void*) { return AcRx::kRetOK; }
  virtual AcRx::AppRetCode On_kNullMsg(void*) { return AcRx::kRetOK; }
  /// Called once at load, for applications that serve others.
  virtual void RegisterServerComponents() = 0;

  virtual ~AcRxDbxApp() = default;

private:
  static AcRxDynamicLinker* dynamicLinker() {
    AcRxObject* const objectP = acrxSysRegistry()->at(L"DynamicLinker");
    if (!objectP || !objectP->isA()->isDerivedFrom(AcRxDynamicLinker::desc()))
      return nullptr;
    return static_cast<AcRxDynamicLinker*>(objectP);
  }
};

/// An application that works with documents. None here defines functions for the command line, so none is invoked.
class AcRxArxApp : public AcRxDbxApp {
public:
  AcRx::AppRetCode On_kInvkSubrMsg(void*) override { return AcRx::kRetError; }
};

#endif
