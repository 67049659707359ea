#ifndef MODEL_CHECK_H
#define MODEL_CHECK_H

#include "engine.h"

#include <cstdint>
#include <deque>
#include <set>

namespace model {

/// The values of the settings file, and the toggles as they are now.
struct Settings {
  int traSensBase = 20000;
  int rotSensBase = 10000;
  int maxContMoveTime = 500;
  int minThreshold = 0;
  bool useInt3dIntrfce = false;
  bool toggleRotationCenter = true;
  bool toggleRotationAxis = false;
  bool scrollTreeAndList = true;
  bool objectMoveMode = false;
  std::set<std::string> loggedTypes; // empty: nothing is known of the log, and no record is compared
};

/// What a rotation code of the device says.
struct RotationSettings {
  int rotMode = 0;
  bool keepHorizon = false;
  bool hoverMode = false;
  bool zoomAllAfterView = false;
};
RotationSettings rotationSettings(int code, bool zoomAllAfterView);

/// Entry and end, counted over all threads.
struct Span {
  std::int64_t entered = 0;
  std::int64_t ended = 0;
};

/// One tick of the timer: its calls and the records that it left.
struct Tick {
  std::vector<Call> calls;
  std::vector<Span> spans; // of the calls
  Span span;
  std::vector<Record> records;
  double seconds = 0; // since the session's start
};

/// Makes choices, and other ones when it is asked again.
class Chooser {
public:
  /// Gives 0 to count - 1, 0 first.
  int pick(int count);
  /// The choices up to now stay.
  void freeze() { mFrozen = mNext; }
  /// Starts over with the next choices in turn; false if there are none.
  bool advance();
  /// Starts over with no choices made.
  void clear();

private:
  struct Choice {
    int value;
    int count;
  };
  std::vector<Choice> mChoices;
  std::size_t mNext = 0;
  std::size_t mFrozen = 0;
};

/// A value that another thread stored, some time between its delivery and that thread's next call.
template <class Value> struct Stored {
  Value value;
  int thread = 0;
  std::int64_t delivered = 0;
  std::int64_t certain = 0; // 0 while the thread hasn't called again
};
template <class Value> using History = std::deque<Stored<Value>>;

/// Holds the ticks of a session against the model. What other threads wrote meanwhile is chosen so that it
/// fits.
class Check : private Inputs {
public:
  explicit Check(const Settings& settings);

  // What comes before a tick and during it, in the order of its ends.
  void motionDelivered(int thread, std::int64_t order, const std::array<short, 6>& axes);
  void eventDelivered(std::int64_t order, int code);
  void rotationDelivered(int thread, std::int64_t order, const RotationSettings& settings);
  /// The thread makes another call: what it was given before is stored.
  void entered(int thread, std::int64_t order);
  /// The first timer, which is armed outside of any tick.
  void timerArmed(double id) { mEngine.timerId = id; }
  /// A line of the command line; those of the toggle commands count.
  void printed(const std::wstring& text);
  /// The content of the menu file, once there is one.
  void menuFound(const std::string& path, const std::vector<std::string>& modes,
                 const std::vector<std::string>& menuBarValues);

  void tick(const Tick& tick);

  std::int64_t explained = 0;
  std::int64_t notObservable = 0;
  std::int64_t contradicted = 0;
  std::string firstContradiction;
  /// As in "1,593 passes: 1,590 explained, 3 not observable, 0 contradicted".
  std::string summary() const;

private:
  int traSensBase() const override { return mSettings.traSensBase; }
  int rotSensBase() const override { return mSettings.rotSensBase; }
  unsigned maxContMoveTime() const override { return static_cast<unsigned>(mSettings.maxContMoveTime); }
  bool useInt3dIntrfce() const override { return mSettings.useInt3dIntrfce; }
  int minThreshold() const override { return mSettings.minThreshold; }
  bool toggleRotationCenter() const override { return mSettings.toggleRotationCenter; }
  bool toggleRotationAxis() const override { return mSettings.toggleRotationAxis; }
  bool scrollTreeAndList() const override { return mSettings.scrollTreeAndList; }
  bool objectMoveMode() const override { return mSettings.objectMoveMode; }
  short axis(int index) override;
  int pendingKey() override;
  int pendingSpecial() override;
  int rotMode() override { return rotation().rotMode; }
  bool keepHorizon() override { return rotation().keepHorizon; }
  bool hoverMode() override { return rotation().hoverMode; }
  bool zoomAllAfterView() override { return rotation().zoomAllAfterView; }
  void keyServed() override;
  void specialServed() override;
  bool menuFile(std::string& path, std::vector<std::string>& modes,
                std::vector<std::string>& menuBarValues) override;

  using Slot = std::vector<std::pair<std::int64_t, int>>; // deliveries that may still be pending
  /// The tick's time between the call that is made next and the one before.
  Span now() const;
  template <class Value> std::pair<std::size_t, int> candidates(const History<Value>& history) const;
  const RotationSettings& rotation();
  int pending(const Slot& slot, std::size_t& chosen, int none);
  void resume(const Tick& tick);

  Settings mSettings;
  Engine mEngine;
  Chooser mChooser;
  History<std::array<short, 6>> mMotions;
  History<RotationSettings> mRotations;
  Slot mKeys, mSpecials;
  bool mIsMenuThere = false;
  std::string mMenuPath;
  std::vector<std::string> mModes, mMenuBarValues;

  // Of the tick that is being played.
  const Tick* mTickP = nullptr;
  const Replay* mReplayP = nullptr;
  int mPasses = 0;      // begun
  int mCommonEvent = 0; // of all axes of the sample; past the candidates: each has its own
  Slot mKeysLeft, mSpecialsLeft;
  std::size_t mChosenKey = 0, mChosenSpecial = 0;
};

} // namespace model

#endif
