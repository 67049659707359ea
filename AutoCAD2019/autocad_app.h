#ifndef AUTOCAD_APP_H
#define AUTOCAD_APP_H

#include <memory>

#include <arxHeaders.h>

class OvAutoCad;

/// The plug-in as the host's application object: turns the host's load and unload messages into the making
/// and destroying of OvAutoCad. One global instance lives from library load; all of it runs on the host's
/// main thread.
class CAutoCAD2011App : public AcRxArxApp {
public:
  CAutoCAD2011App();
  ~CAutoCAD2011App() override;

  /// Registers the commands, then starts the engine and its threads. Gives kRetError, with nothing
  /// registered, if the engine can't be made.
  AcRx::AppRetCode On_kInitAppMsg(void* pkt) override;
  /// Takes the commands away before the engine goes, so that none runs on a destroyed one.
  AcRx::AppRetCode On_kUnloadAppMsg(void* pkt) override;
  void RegisterServerComponents() override;

  std::unique_ptr<OvAutoCad> mOvAutoCadP;

protected:
  HINSTANCE moduleInstance() const override;
};

#endif
