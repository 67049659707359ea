#ifndef AUTOCAD_APP_H
#define AUTOCAD_APP_H

#include <atomic>
#include <memory>

#include <arxHeaders.h>

class OvAutoCad;

/// The plug-in as the host's application object: turns the host's load and unload messages into the making
/// and destroying of OvAutoCad. One global instance lives from library load; all of it runs on the host's
/// main thread.
///
/// From the load message until the engine is gone the library holds a reference to itself, so a host that
/// frees it without an unload message leaves it in place, running. The next load message then ends the old
/// engine and makes a new one; the unload message ends it and drops the reference.
///
/// Load and unload message are refused with kRetError, and nothing changes, while the engine is in use: a
/// tick or another of these messages is on the stack, and a host call below it, or the load's dialog, runs
/// the message loop.
class CAutoCAD2011App : public AcRxArxApp {
public:
  CAutoCAD2011App();
  ~CAutoCAD2011App() override;

  /// Registers the commands, then starts the engine and its threads. Returns kRetError, with nothing
  /// registered, if the engine can't be made.
  AcRx::AppRetCode On_kInitAppMsg(void* pkt) override;
  /// Removes the commands, then destroys the engine, so that no command runs on a destroyed one.
  AcRx::AppRetCode On_kUnloadAppMsg(void* pkt) override;
  void RegisterServerComponents() override;

  /// Returns true while the unload message, on the host's main thread, waits for the thread that drops our
  /// reference. Asked while the library is being unmapped, it means that ours was the last one: the host had
  /// freed its own before. On any thread.
  bool isFreeing() const { return mIsFreeing; }
  /// Lets that message return, and waits 100 ms for it to leave the library's code.
  void letMessageLeave();

  std::unique_ptr<OvAutoCad> mOvAutoCadP;
  HMODULE mModuleInstance; // the reference to the plug-in's own library, null until the load message

private:
  bool isEngineInUse() const;
  void endEngine();
  void holdLibrary();
  void freeLibrary();

  bool mIsInMessage; // the load or the unload message is on the stack
  std::atomic<bool> mIsFreeing;
  std::atomic<bool> mIsLastReference;
};

#endif
