#ifndef RXAPP_H
#define RXAPP_H

#include "acedads.h"
#include "rxobject.h"

namespace AcRx {

/// The messages of the host to an application.
enum AppMsgCode {
  kNullMsg = 0,
  kInitAppMsg = 1,
  kUnloadAppMsg = 2,
  kLoadDwgMsg = 3,
  kUnloadDwgMsg = 4,
  kInvkSubrMsg = 5,
  kEndMsg = 6,
  kQuitMsg = 7,
  kSaveMsg = 8,
  kCfgMsg = 9,
  kDependencyMsg = 10,
  kSuspendMsg = 11,
  kResumeMsg = 12,
  kPreEndMsg = 13,
  kPreQuitMsg = 14,
  kPreSaveMsg = 15
};

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

/// A function that an application defines for the command line.
struct AcRxFunctionEntry {
  const ACHAR* name;
  int (*function)();
};

/// An application that works with documents.
class AcRxArxApp : public AcRxDbxApp {
public:
  AcRx::AppRetCode On_kLoadDwgMsg(void* pkt) override {
    const FunctionTable table = functionTable();
    for (int i = 0; i < table.count; ++i) {
      acedDefun(table.entries[i].name, static_cast<short>(i));
      acedRegFunc(table.entries[i].function, i);
    }
    return AcRxDbxApp::On_kLoadDwgMsg(pkt);
  }
  AcRx::AppRetCode On_kUnloadDwgMsg(void* pkt) override {
    const FunctionTable table = functionTable();
    for (int i = 0; i < table.count; ++i)
      acedUndef(table.entries[i].name, static_cast<short>(i));
    return AcRxDbxApp::On_kUnloadDwgMsg(pkt);
  }
  AcRx::AppRetCode On_kInvkSubrMsg(void* pkt) override {
    const FunctionTable table = functionTable();
    const int code = acedGetFunCode();
    if (code < 0 || code >= table.count)
      return AcRx::kRetError;
    table.entries[code].function();
    return AcRxDbxApp::On_kInvkSubrMsg(pkt);
  }

protected:
  struct FunctionTable {
    const AcRxFunctionEntry* entries = nullptr;
    int count = 0;
  };
  /// Empty unless the application has such functions.
  virtual FunctionTable functionTable() const { return {}; }
};

#endif
