#ifndef MODEL_CHECK_H
#define MODEL_CHECK_H

#include "engine.h"

#include <deque>
#include <optional>

namespace model {

/// Returns the inputs from ROT_MODE on, as a rotation code of the device sets them.
std::vector<int> rotationValues(int code, bool zoomAllAfterView);

/// One tick of the timer: its calls and the records that it left.
struct Tick {
  std::vector<Call> calls;
  std::vector<std::string> records;
  std::int64_t entered = 0, ended = 0; // in the order of all entries and ends
  double seconds = 0;                  // since the session's start
};

/// What a pass was given, by the choice that explains it; of several choices, the one with the newest values.
struct Pass {
  std::array<int, INPUTS> values{}; // as the engine used them; what it didn't read is as in the pass before
  std::int64_t entered = 0, ended = 0; // in the order of all entries and ends
  std::vector<int> served;             // codes of the events
  bool isIdle = false;   // its tick only read the time and the mode, and left the engine as it was
  bool endsTick = false; // because the tick's time was up

  /// Returns a rotation code that says the same as the values.
  int rotationCode() const;
};

/// Compares the ticks of a session with the model. What other threads wrote meanwhile is chosen so that it
/// fits. The first contradiction ends the check, since the plug-in's state is unknown from then on.
class Check : private Inputs {
public:
  /// onPass  called with each pass of a tick that is explained, in order
  explicit Check(const Settings& settings, std::function<void(const Pass&)> onPass);

  // Calls before a tick and during it, in the order of their ends.
  /// A thread received the values of a sample, or those of a rotation code.
  void delivered(int thread, std::int64_t order, Input first, const std::vector<int>& values);
  void eventDelivered(std::int64_t order, int code);
  /// The thread makes another call, so it has stored what it received before.
  void entered(int thread, std::int64_t order);
  /// The first timer, which is armed outside of any tick.
  void timerArmed(double id) { mKnown.engine.timerId = id; }
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
  int read(std::size_t input) override;
  int pending(Slot slot) override;
  void served(Slot slot) override;
  const MenuFile* menuFile() override { return mMenu && pick(2) == 0 ? &*mMenu : nullptr; }

  int pick(int count);
  bool advance();
  void accept();
  std::pair<std::int64_t, std::int64_t> now() const;

  /// What another thread stored, some time between its delivery and that thread's next call.
  struct Stored {
    int value = 0, thread = 0;
    std::int64_t delivered = 0, certain = 0; // certain: 0 while the thread hasn't called again
  };
  /// What ticks change.
  struct State {
    Engine engine;
    std::array<std::vector<std::pair<std::int64_t, int>>, 2> events; // by slot: order and code
    std::vector<Pass> passes; // the last one of the tick before, then those begun
  };

  Settings mSettings;
  std::function<void(const Pass&)> mOnPass;
  State mKnown;
  std::array<std::deque<Stored>, INPUTS> mStored;
  std::optional<MenuFile> mMenu;

  // Of the tick that is being played.
  State mTried;
  const Tick* mTickP = nullptr;
  const Replay* mReplayP = nullptr;
  std::vector<std::pair<int, int>> mChoices; // value and count of each
  std::size_t mNext = 0, mFrozen = 0;        // choice; those before the frozen one stay
  int mCommonEvent = 0;     // of all axes of the sample; past the candidates: each has its own
  std::ptrdiff_t mGone = 0; // events, once the pending one is served
};

} // namespace model

#endif
