#include "recorder.h"

#include <algorithm>
#include <chrono>

namespace program {

namespace {

/// Without a display's pace there may be any number of frames. This number a second is kept, more for a moment
/// after rest; each other one is joined to the one before it.
constexpr double kFramesPerSecond = 250;
constexpr double kMostAtOnce = 500;
/// A longer gap than this between frames is rest, seconds.
constexpr double kLongestGap = 0.25;
/// How often the controls are looked at.
constexpr std::chrono::milliseconds kScrollInterval{33};
/// Frames that are kept at most, nearly an hour and a half of motion at 60 Hz; later ones are joined to the last.
constexpr std::size_t kMaxFrames = 300000;

bool isSamePoint(const AcGePoint3d& a, const AcGePoint3d& b) {
  return a.x == b.x && a.y == b.y && a.z == b.z;
}

bool isSameLayout(const host::LayoutState& a, const host::LayoutState& b) {
  return a.centre.x == b.centre.x && a.centre.y == b.centre.y && a.viewHeight == b.viewHeight;
}

bool isSameEntries(const AcGeMatrix3d& a, const AcGeMatrix3d& b) {
  return std::equal(&a.entry[0][0], &a.entry[0][0] + 16, &b.entry[0][0]);
}

/// Groups objects that follow each other and were moved by the same matrix. A selection moves as one, so there are
/// few groups.
std::vector<MovedGroup> grouped(const std::vector<host::Moved>& moved) {
  std::vector<MovedGroup> groups;
  for (const host::Moved& m : moved) {
    if (groups.empty() || !isSameEntries(groups.back().mTransform, m.transform))
      groups.push_back({host::documentNumber(), {}, m.transform});
    groups.back().mObjects.push_back(m.entity);
  }
  return groups;
}

} // namespace

void joinMotion(std::vector<MovedGroup>& earlier, const std::vector<MovedGroup>& later) {
  if (earlier.size() == 1 && later.size() == 1 && earlier[0].mDrawing == later[0].mDrawing &&
      earlier[0].mObjects == later[0].mObjects) {
    earlier[0].mTransform = later[0].mTransform * earlier[0].mTransform;
    return;
  }
  // Groups are applied in order, so a later one for the same object simply follows.
  earlier.insert(earlier.end(), later.begin(), later.end());
}

bool isSameView(const host::ViewState& a, const host::ViewState& b) {
  return isSamePoint(a.position, b.position) && isSamePoint(a.target, b.target) && a.up.x == b.up.x &&
         a.up.y == b.up.y && a.up.z == b.up.z && a.fieldWidth == b.fieldWidth &&
         a.fieldHeight == b.fieldHeight && a.perspective == b.perspective;
}

ScrollWatch::ScrollWatch(const Controls& controls) : mControls(controls) {
  look();
  mThread = std::thread(&ScrollWatch::run, this);
}

ScrollWatch::~ScrollWatch() {
  {
    const std::lock_guard<std::mutex> lock(mMutex);
    mIsToEnd = true;
  }
  mWake.notify_all();
  mThread.join();
}

void ScrollWatch::run() {
  std::unique_lock<std::mutex> lock(mMutex);
  while (!mWake.wait_for(lock, kScrollInterval, [this] { return mIsToEnd; })) {
    lock.unlock();
    look();
    lock.lock();
  }
}

void ScrollWatch::look() {
  std::vector<ScrollState> states = mControls.states();
  const std::lock_guard<std::mutex> lock(mMutex);
  if (!mScrolls.empty() && mScrolls.back().mValue == states)
    return;
  mScrolls.push_back({unixNow(), std::move(states)});
  if (mOnScrolled)
    mOnScrolled(mScrolls.back().mValue);
}

void ScrollWatch::onScrolled(std::function<void(const std::vector<ScrollState>&)> listener) {
  const std::lock_guard<std::mutex> lock(mMutex);
  mOnScrolled = std::move(listener);
}

std::vector<Timestamped<std::vector<ScrollState>>> ScrollWatch::scrolls() const {
  const std::lock_guard<std::mutex> lock(mMutex);
  return mScrolls;
}

Recorder::Recorder(Controls& controls) : mControls(controls), mStart(unixNow()), mScrollWatch(controls) {
  mFrames.push_back({mStart, host::documentNumber(), host::isLayout(), host::view(), host::layout(), {}, 0});
  takeNewObjects(0);
  host::setFrameSink([this](const host::Frame& frame) { onFrame(frame); }, [this] { handOver(); });
}

Recorder::~Recorder() {
  host::setFrameSink(nullptr);
}

void Recorder::begin() {
  mStart = unixNow();
  mFrames.front().mUnixSeconds = mStart;
}

void Recorder::onFrame(const host::Frame& frame) {
  double plugInSeconds = std::chrono::duration<double>(Steady::now() - mHandedOver).count();
  const double now = unixNow();
  mControls.show(frame);
  ++mShownFrames;
  if (mIsTyping) {
    plugInSeconds = 0;
  } else {
    if (mPlugInTimes.size() < kMaxFrames)
      mPlugInTimes.push_back(plugInSeconds);
    const double gap = now - mLastCapFrame;
    if (mCapFrames > 0 && gap < kLongestGap) {
      mBusySeconds += gap;
      ++mBusyFrames;
    }
    ++mCapFrames;
    mLastCapFrame = now;
  }
  const RecordedFrame& last = mFrames.back();
  if (host::documentNumber() == last.mDrawing &&
      (frame.is2d ? !isSameLayout(frame.layout, last.mLayout) : !isSameView(frame.view, last.mView)))
    mHasViewMoved = true;
  mHaveObjectsMoved = mHaveObjectsMoved || !frame.moved.empty();
  // A frame holds only the state of what is shown.
  keep({now, host::documentNumber(), frame.is2d, frame.is2d ? host::view() : frame.view,
        frame.is2d ? frame.layout : host::layout(), grouped(frame.moved), plugInSeconds});
}

void Recorder::keep(RecordedFrame frame) {
  RecordedFrame& last = mFrames.back();
  mCredit = std::min(kMostAtOnce, mCredit + std::max(0.0, frame.mUnixSeconds - mLastKeep) * kFramesPerSecond);
  mLastKeep = frame.mUnixSeconds;
  const bool isSameTab = frame.mDrawing == last.mDrawing && frame.mIs2d == last.mIs2d;
  if ((mCredit < 1 && isSameTab) || mFrames.size() >= kMaxFrames) {
    last.mDrawing = frame.mDrawing;
    last.mIs2d = frame.mIs2d;
    last.mView = frame.mView;
    last.mLayout = frame.mLayout;
    joinMotion(last.mMoved, frame.mMoved);
    last.mPlugInSeconds += frame.mPlugInSeconds;
  } else {
    mCredit -= 1;
    mFrames.push_back(std::move(frame));
  }
  if (mOnShown)
    mOnShown(mFrames.size() - 1);
}

void Recorder::look() {
  const double now = unixNow();
  const RecordedFrame& last = mFrames.back();
  RecordedFrame frame{now, host::documentNumber(), host::isLayout(), host::view(), host::layout(), {}, 0};
  takeNewObjects(now - mStart);
  if (frame.mDrawing != last.mDrawing || frame.mIs2d != last.mIs2d || !isSameView(frame.mView, last.mView) ||
      !isSameLayout(frame.mLayout, last.mLayout))
    keep(std::move(frame));
  mScrollWatch.look();
}

void Recorder::takeNewObjects(double seconds) {
  const auto number = static_cast<std::size_t>(host::documentNumber());
  const bool isNew = number > mDrawings.size();
  mDrawings.resize(std::max(mDrawings.size(), number));
  mDrawings[number - 1].takeNew(isNew ? 0 : seconds);
}

void Recorder::caption(const std::string& text) {
  mCaptions.push_back({unixNow(), text});
}

void Recorder::pointer(session::Pointer where) {
  mPointers.push_back({unixNow(), where});
}

void Recorder::selection() {
  std::vector<int> numbers;
  for (const AcDbObjectId& id : host::selected())
    numbers.push_back(host::entityNumber(id));
  mSelections.push_back({unixNow(), std::move(numbers)});
}

} // namespace program
