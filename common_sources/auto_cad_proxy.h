#ifndef AUTO_CAD_PROXY_H
#define AUTO_CAD_PROXY_H

#include <atomic>
#include <cstdint>
#include <string>
#include <vector>

#include <windows.h>

#include <arxHeaders.h>

#include "relaxed.h"

class OvAutoCad;
namespace motion {
struct ScreenFrame;
}

// Values of mViewMode.
constexpr std::int32_t kMode2D = 1; // the layout itself
constexpr std::int32_t kMode3D = 2; // everything else

/// The bridge between the device's event state and the host: the timer pump, and the operations that turn a
/// sample of the cap into motion of views, objects and controls, and a key into text at the command line.
///
/// Owned by OvAutoCad, created and destroyed on the host's main thread. Every operation runs there, inside
/// TimerProc, except where another thread is named. No exception reaches the host: it ends in the operation
/// or in one further up, which logs "Error ", its own name and "()" and gives up the current step; both
/// transformSelections log the same name, and scrollTreesAndLists logs nothing. An exception of loadMenufile
/// ends in TimerProc and stops the pump.
///
/// The cap is at rest or moving (mCapIsMoving, set and reset through handleDeviceCap):
///
///            deflected, not taken by scrolling
///     rest ------------------------------------> moving
///          <------------------------------------
///            all six axes inside the threshold
///
/// The first sample of a movement runs while the state is still rest. On the way back handleCapIsReleased
/// unlocks the document and, in 3D, writes the view into the drawing.
class AutoCadProxy {
public:
  /// Has the host load the menu reader and arms the first timer.
  /// ovAutoCadP  not owned, has to outlive this object
  explicit AutoCadProxy(OvAutoCad* ovAutoCadP);
  ~AutoCadProxy();
  AutoCadProxy(const AutoCadProxy&) = delete;
  AutoCadProxy& operator=(const AutoCadProxy&) = delete;

  // Pump, dispatch and mode: auto_cad_proxy.cpp

  /// Returns true while TimerProc is on the stack, also inside a message loop that runs below it.
  static bool isInTick();
  /// Runs passes back to back, keys before cap, until mMaxContMoveTime is over, or one pass at rest. A pass
  /// that has begun is completed.
  void doTransform();
  /// Serves both key slots, the key first. A slot is emptied after its action has run.
  void handleDeviceKeys();
  /// Acts on the motion sample, once. Returns false if every axis is inside the threshold.
  bool handleDeviceCap();
  /// Reads the host's mode into mViewMode and returns it: 1 = 2D, 2 = 3D.
  std::int32_t retrieveMode();
  /// Returns the mode's name, "Unknown" if the menu file hasn't named it. On any thread.
  std::string getModeName() const;
  /// Takes a rotation code apart into mRotMode, mKeepHorizon and mHoverMode. On any thread.
  void setRotMode(std::int32_t code);

  // The commands' toggles: each negates its setting and returns the new value.
  bool toggleRotationCenter();
  bool toggleRotationAxis();
  bool toggleScrollMode();

  // 3D view: host/view_motion.cpp

  /// Moves the selection or the view by one deflected sample, and has the view updated once.
  void handleCapIsDeflectedIn3DMode(short x, short y, short z, short a, short b, short c);
  /// Ends a movement: releases the document lock and, in 3D, writes the view into the drawing. Does nothing
  /// at rest.
  void handleCapIsReleased(std::int32_t mode);
  /// Obtains the graphics view of the current viewport, null on a failure, and the viewport's number.
  void retrieveViewParams(AcGsView*& view, std::int32_t& viewport);

  /// Moves the view along the three screen axes, one after the other; the third zooms, unless the view
  /// hovers.
  /// dx, dy, dz  sample values divided by mTraSensBase
  void moveXYZ(AcGsView* view, double dx, double dy, double dz, const AcGeVector3d& xAxis,
               const AcGeVector3d& yAxis, const AcGeVector3d& zAxis, std::int32_t rotMode, bool isPerspective,
               bool hoverMode);
  /// Shifts eye and target together along one axis; the direction of view stays.
  /// view   may be null: nothing happens then
  /// value  signed step in units of the view's size, sqrt(field height * field width)
  /// axis   direction of the step, unit vector, world coordinates
  /// A failure of the host is logged as "Error move3D()" and loses this step only.
  void move3D(AcGsView* view, double value, const AcGeVector3d& axis, bool hoverMode, bool isPerspective);

  /// Turns eye, target and up vector of the view about an axis through a centre.
  /// angle      radians, before the mode's sign
  /// axisIndex  0, 1, 2 for the sample's values A, B, C
  /// axis       unit vector; overwritten with world Z for the second value of a kept horizon
  void rotate(AcGsView* view, double angle, std::int32_t axisIndex, const AcGePoint3d& centre,
              AcGeVector3d& axis, std::int32_t rotMode, bool keepHorizon, bool isPerspective);

  /// Reads the view and computes its screen frame (motion/view_step.h). Returns false on a failure of the
  /// host.
  bool calcScreenAxesRelativeToObject(AcGsView* view, AcGeVector3d& xAxis, AcGeVector3d& yAxis,
                                      AcGeVector3d& zAxis);

  // Selection: host/selection.cpp

  /// Reads direction and start of the selected line. Returns true if exactly one object is selected, and that
  /// is a line. While the cap moves, only the bool of the last reading is returned; axis and point aren't
  /// touched, and the host isn't asked.
  bool getSelObjectAxis(AcGeVector3d& axis, AcGePoint3d& point);
  /// Computes the mean of the midpoints of the selected objects' extents. Returns false if there is none.
  /// set  a selection set of the caller's; null: what the user has selected. While the cap moves, a call with
  ///      null returns the bool of the last reading; the centre isn't touched, and the host isn't asked.
  bool getSelObjectsCenter(const Adesk::Int64* set, AcGePoint3d& centre);

  // Motion of selected objects: host/object_motion.cpp

  /// Moves and turns the selected objects as one rigid body. Returns true if the selection took the sample.
  /// x, ..., c  sample values, device counts
  bool transformSelection3d(double x, double y, double z, double a, double b, double c,
                            const AcGeVector3d& xAxis, const AcGeVector3d& yAxis, const AcGeVector3d& zAxis,
                            bool hoverMode, bool keepHorizon);
  /// Moves the selected objects in world X and Y. Returns true if the selection took the sample.
  bool transformSelection2d(double x, double y);

  // Flat view of a layout: host/layout.cpp

  /// Moves the selection, or pans and zooms the layout, by one deflected sample.
  void handleCapIsDeflectedIn2DMode(short x, short y, short z);
  /// Moves the view's centre, by fractions of the view's width and height.
  void pan2D(double dx, double dy);
  /// Scales the view's height by a factor of 1 + dz, held within 0.8 and 1.2.
  void zoom2D(double dz);

  // Controls under the pointer: controls/scrolling.cpp

  /// Scrolls the control under the pointer. Returns false if the sample goes on to the view.
  bool scrollTreesAndLists(int x, int y, int z);
  /// Returns the smallest visible window at a point of the screen, or null.
  HWND windowUnderPoint(POINT point);

  // Keys: keys/

  /// Types the menu macro of a key at the command line; logs an error if it has none. keyEvent is 0 or more.
  void execApplFunction(int keyEvent);
  /// Types the command of a view key.
  void execSpecialApplFunction(int eventCode);
  /// Reads mode names and macros, if the menu file is there. Success shows in mMenuIsLoaded.
  void loadMenufile();
  /// Has the host load the menu reader. If the folder of the menu file is missing, shows a dialog and waits
  /// until the user has closed it.
  void StartDotNETPlugin();

  /// The plug-in's own library, kept from its process-attach call; null in programs that have it linked in.
  static HINSTANCE mPlugInLibrary;

  OvAutoCad* mOvAutoCadP; // settings and shared event state

  // Copied from the settings once, at construction.
  std::int32_t mTraSensBase;      // divisor of X, Y and Z, device counts
  std::int32_t mRotSensBase;      // divisor of A, B and C, device counts per radian
  std::uint32_t mMaxContMoveTime; // milliseconds, the time box of doTransform
  bool mUseInt3dIntrfce;          // the cap is ignored, the menu reader isn't started

  Relaxed<std::int32_t> mViewMode; // 1 = 2D, 2 = 3D, 0 before the first pass; index into mModes
  bool mCapIsMoving;
  std::vector<std::string> mModes; // names; the reading thread reads them once mMenuIsLoaded is set
  // Macros, by key index. Empty until the menu file has been read: a key then only logs an error.
  std::vector<std::string> mMenuEntries;
  Relaxed<bool> mIsPumpRunning; // TimerProc arms the timer again while set
  bool mIsDocLocked;            // we hold the lock of the document

  // Written by the threads of the device link, through setRotMode and retrieveRotMode.
  Relaxed<std::int32_t> mRotMode; // 0 to 3
  Relaxed<bool> mZoomAllAfterView;
  Relaxed<bool> mKeepHorizon;
  Relaxed<bool> mHoverMode;

  bool mObjectMoveMode; // the cap moves the selected objects
  // The menu file has supplied a mode name, and mModes no longer changes. Stored with release and loaded with
  // acquire, so that a thread that sees it set may read mModes.
  std::atomic<bool> mMenuIsLoaded;
  UINT_PTR mTimerId; // the timer that is armed now

private:
  /// Chooses centre and axes for a sample and turns the view about them. The axes are overwritten.
  void rotateView(AcGsView* view, short a, short b, short c, motion::ScreenFrame& frame, bool isPerspective);
  /// Moves the selected objects by the matrix that matrixOf computes for the selection. Returns false if
  /// there is no document or no selection. Lets exceptions of the host through.
  template <class MatrixOf> bool transformSelection(bool isToRedraw, const MatrixOf& matrixOf);
  /// Locks the document for writing; the lock is kept until the cap is released.
  void lockDocument(AcApDocManager& manager, AcApDocument* documentP);
  /// Releases our lock of the current document, if we hold one.
  void unlockDocument();
  /// Returns the host's document manager. Throws if there is none, as a failing host call does.
  static AcApDocManager& documentManager();

  AcApDocument* mLockedDocumentP; // of mIsDocLocked; may be gone, so it is used only if it is current
};

/// The one object, null before its construction and after its destruction. Timer callback and commands reach
/// it through this, since neither receives it as an argument.
extern AutoCadProxy* gAutoCadProxyP;

/// The timer callback. Ignores its arguments.
void CALLBACK TimerProc(HWND window, UINT message, UINT_PTR id, DWORD time);

#endif
