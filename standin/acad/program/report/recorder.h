#ifndef RECORDER_H
#define RECORDER_H

#include "controls.h"
#include "drawing_data.h"
#include "host.h"

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <mutex>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace program {

/// Returns seconds since 1970, UTC: the time of the daemon's record, too.
inline double unixNow() {
  return std::chrono::duration<double>(std::chrono::system_clock::now().time_since_epoch()).count();
}

/// Objects that moved together since the frame before, and how.
struct MovedGroup {
  /// Number of their drawing.
  int mDrawing = 1;
  /// Numbers of objects.
  std::vector<int> mObjects;
  AcGeMatrix3d mTransform;
};

/// Appends a later motion to an earlier one.
void joinMotion(std::vector<MovedGroup>& earlier, const std::vector<MovedGroup>& later);

struct RecordedFrame {
  double mUnixSeconds = 0;
  /// Number of the drawing that was current.
  int mDrawing = 1;
  bool mIs2d = false;
  host::ViewState mView;
  host::LayoutState mLayout;
  std::vector<MovedGroup> mMoved;
  /// What the plug-in took since the frame before; 0 if it had no part in it.
  double mPlugInSeconds = 0;
};

template <class Value> struct Timestamped {
  double mUnixSeconds = 0;
  Value mValue;
};

/// Looks at the controls many times a second, on a thread of its own: while the cap scrolls, the main thread
/// is in the plug-in for half a second at a time, and isn't notified of a scrolled control.
class ScrollWatch {
public:
  /// The controls must outlive the watch.
  explicit ScrollWatch(const Controls& controls);
  ~ScrollWatch();
  ScrollWatch(const ScrollWatch&) = delete;
  ScrollWatch& operator=(const ScrollWatch&) = delete;

  /// Looks now. May be called from any thread.
  void look();
  /// Returns the controls' positions each time that one had moved. May be called from any thread.
  std::vector<Timestamped<std::vector<ScrollState>>> scrolls() const;
  /// Calls the listener from now on when a control has moved, on the thread that saw it.
  void onScrolled(std::function<void(const std::vector<ScrollState>&)> listener);

private:
  void run();

  const Controls& mControls;
  mutable std::mutex mMutex;
  std::condition_variable mWake;
  bool mIsToEnd = false;
  std::vector<Timestamped<std::vector<ScrollState>>> mScrolls;
  std::function<void(const std::vector<ScrollState>&)> mOnScrolled;
  std::thread mThread;
};

/// Records what there is to see while a session runs: frames, captions, the pointer, the selection,
/// scroll positions, new objects. Belongs to the main thread.
class Recorder {
public:
  /// Starts with the view as it is, and receives the host's frames from then on.
  explicit Recorder(Controls& controls);
  ~Recorder();
  Recorder(const Recorder&) = delete;
  Recorder& operator=(const Recorder&) = delete;

  /// Starts the session's time: the plug-in's connection has just started the device's clock.
  void begin();
  /// Looks for what changes without a frame: views set by commands, the tab, new objects, scrolled controls.
  void look();
  void caption(const std::string& text);
  void pointer(session::Pointer where);
  void selection();
  /// While this is on, frames come from what is typed, and don't count as motion.
  void typing(bool isOn) { mIsTyping = isOn; }
  /// Notes that the host hands over control, most likely to the plug-in: its time counts from here, or from
  /// the end of a frame, until the next frame.
  void handOver() { mHandedOver = Steady::now(); }

  /// Calls the listener from now on with a frame's number, its index in frames(), when it is shown, and again when
  /// another frame is joined to it.
  void onShown(std::function<void(std::size_t number)> listener) { mOnShown = std::move(listener); }

  double start() const { return mStart; }
  const std::vector<RecordedFrame>& frames() const { return mFrames; }
  /// Returns the number of frames that the host showed, including those that came too fast to be kept.
  std::int64_t shownFrames() const { return mShownFrames; }
  /// Returns the number of frames that the cap caused.
  std::int64_t capFrames() const { return mCapFrames; }
  /// Returns the frames a second while frames of the cap followed each other; 0 if they never did.
  double framesPerSecond() const { return mBusySeconds > 0 ? mBusyFrames / mBusySeconds : 0; }
  /// Returns the plug-in's time for each frame of the cap, seconds. It includes the host calls, but not the drawing
  /// and its wait.
  const std::vector<double>& plugInTimes() const { return mPlugInTimes; }
  /// Returns whether a frame showed another view than the one before it.
  bool hasViewMoved() const { return mHasViewMoved; }
  /// Returns whether a frame showed an object elsewhere than the one before it.
  bool haveObjectsMoved() const { return mHaveObjectsMoved; }
  /// Returns the drawings that have been opened, by number - 1; closed ones stay.
  const std::vector<DrawingData>& drawings() const { return mDrawings; }
  const std::vector<Timestamped<std::string>>& captions() const { return mCaptions; }
  const std::vector<Timestamped<session::Pointer>>& pointers() const { return mPointers; }
  const std::vector<Timestamped<std::vector<int>>>& selections() const { return mSelections; }
  std::vector<Timestamped<std::vector<ScrollState>>> scrolls() const { return mScrollWatch.scrolls(); }
  void onScrolled(std::function<void(const std::vector<ScrollState>&)> listener) {
    mScrollWatch.onScrolled(std::move(listener));
  }

private:
  using Steady = std::chrono::steady_clock;

  void onFrame(const host::Frame& frame);
  void keep(RecordedFrame frame);
  void takeNewObjects(double seconds);

  Controls& mControls;
  double mStart = 0;
  std::vector<RecordedFrame> mFrames;
  std::int64_t mShownFrames = 0;
  std::int64_t mCapFrames = 0;
  bool mIsTyping = false;
  double mLastCapFrame = 0;
  /// Frames that may be kept now.
  double mCredit = 0;
  double mLastKeep = 0;
  double mBusySeconds = 0;
  std::int64_t mBusyFrames = 0;
  Steady::time_point mHandedOver = Steady::now();
  std::vector<double> mPlugInTimes;
  bool mHasViewMoved = false;
  bool mHaveObjectsMoved = false;
  std::vector<DrawingData> mDrawings;
  std::vector<Timestamped<std::string>> mCaptions;
  std::vector<Timestamped<session::Pointer>> mPointers;
  std::vector<Timestamped<std::vector<int>>> mSelections;
  std::function<void(std::size_t)> mOnShown;
  ScrollWatch mScrollWatch;
};

/// Returns whether two views are the same.
bool isSameView(const host::ViewState& a, const host::ViewState& b);

} // namespace program

#endif
