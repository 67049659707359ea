#ifndef MODEL_CHECK_H
#define MODEL_CHECK_H

#include "engine.h"

#include <cstdint>
#include <deque>
#include <functional>
#include <optional>
#include <set>
#include <tuple>

namespace model {

/// What a rotation code of the device says.
struct RotationSettings {
  int rotMode = 0;
  bool keepHorizon = false, hoverMode = false, zoomAllAfterView = false;
};
RotationSettings rotationSettings(int code, bool zoomAllAfterView);
/// Returns a code that says the same.
int rotationCode(const RotationSettings& settings);

/// Entry and end, counted over all threads.
struct Span {
  std::int64_t entered = 0, ended = 0;
};

/// One tick of the timer: its calls and the records that it left.
struct Tick {
  std::vector<Call> calls;
  std::vector<Span> spans; // of the calls
  Span span;
  std::vector<Record> records;
  double seconds = 0; // since the session's start
};

/// What a pass was given, by the choice that explains it: of several the one that takes the newest.
struct Pass {
  std::array<short, 6> axes{};         // as the engine used them; those of the pass before if it read none
  RotationSettings rotation;           // the newest, where the engine read none
  std::vector<int> served;             // codes of the events
  std::int64_t entered = 0, ended = 0; // in the order of all entries and ends
  bool isAtRest = false;
  bool isIdle = false; // its tick only read the time and the mode, and left the engine as it was
  bool isLast = false; // of its tick
};

/// Holds the ticks of a session against the model. What other threads wrote meanwhile is chosen so that it
/// fits. The first contradiction ends the check: what the plug-in's state is then isn't known.
class Check : private Inputs {
public:
  /// onPass  called with each pass of a tick that is explained, in order; may be empty
  explicit Check(const Settings& settings, std::function<void(const Pass&)> onPass = nullptr);

  // What comes before a tick and during it, in the order of its ends.
  void motionDelivered(int thread, std::int64_t order, const std::array<short, 6>& axes) {
    mMotions.push_back({axes, {}, thread, order});
  }
  void rotationDelivered(int thread, std::int64_t order, const RotationSettings& settings) {
    mRotations.push_back({{}, settings, thread, order});
  }
  void eventDelivered(std::int64_t order, int code);
  /// The thread makes another call: what it was given before is stored.
  void entered(int thread, std::int64_t order);
  /// The first timer, which is armed outside of any tick.
  void timerArmed(double id) { mEngine.timerId = id; }
  /// A line of the command line; those of the toggle commands count.
  void printed(const std::wstring& text);
  /// The content of the menu file, once there is one.
  void menuFound(const MenuFile& menu) { mMenu = menu; }

  void tick(const Tick& tick);

  std::int64_t explained = 0, notObservable = 0, contradicted = 0; // passes
  std::string firstContradiction;
  /// As in "1593 passes: 1590 explained, 2 not observable, 1 contradicted".
  std::string summary() const;

private:
  const Settings& settings() override { return mSettings; }
  short axis(int index) override;
  int pendingKey() override;
  int pendingSpecial() override { return pending(mLeft[1], 0); }
  int rotMode() override { return used().rotMode = rotation().rotMode; }
  bool keepHorizon() override { return used().keepHorizon = rotation().keepHorizon; }
  bool hoverMode() override { return used().hoverMode = rotation().hoverMode; }
  bool zoomAllAfterView() override { return used().zoomAllAfterView = rotation().zoomAllAfterView; }
  void keyServed() override { serve(mLeft[0], APPL_FUNC_START); }
  void specialServed() override { serve(mLeft[1], 0); }
  const MenuFile* menuFile() override { return mMenu && pick(2) == 0 ? &*mMenu : nullptr; }

  /// What another thread stored, some time between its delivery and that thread's next call.
  struct Stored {
    std::array<short, 6> axes;
    RotationSettings rotation;
    int thread = 0;
    std::int64_t delivered = 0, certain = 0; // certain: 0 while the thread hasn't called again
  };
  using History = std::deque<Stored>;

  /// Deliveries that may still be pending: order and code.
  struct Slot {
    std::vector<std::pair<std::int64_t, int>> deliveries;
    int chosen = 0; // how many are gone once the chosen one is served
  };

  int pick(int count);
  bool advance();
  Span now() const;
  std::pair<std::size_t, int> candidates(const History& history) const;
  const RotationSettings& rotation();
  int pending(Slot& slot, int none);
  void serve(Slot& slot, int firstCode);
  RotationSettings& used() { return mBegun.back().rotation; }
  void reportPasses();

  static constexpr int APPL_FUNC_START = 0x20020;
  Settings mSettings;
  std::function<void(const Pass&)> mOnPass;
  Engine mEngine;
  std::array<short, 6> mAxes{};        // of the last pass
  std::tuple<int, bool, bool> mBefore; // the engine's state before the last tick
  History mMotions, mRotations;
  std::array<Slot, 2> mSlots; // keys, special events
  std::optional<MenuFile> mMenu;

  // Of the tick that is being played.
  const Tick* mTickP = nullptr;
  const Replay* mReplayP = nullptr;
  std::vector<std::pair<int, int>> mChoices; // value and count of each
  std::size_t mNext = 0, mFrozen = 0;        // choice; those before the frozen one stay
  std::vector<Pass> mBegun;                  // passes
  int mCommonEvent = 0; // of all axes of the sample; past the candidates: each has its own
  std::array<Slot, 2> mLeft;
};

} // namespace model

#endif
