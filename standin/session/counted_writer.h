#ifndef COUNTED_WRITER_H
#define COUNTED_WRITER_H

#include "session.h"

namespace session {

/// Writes a session that counts passes, from what happened: the same again ends at the same view. Passes at
/// rest that changed nothing aren't counted, so time at rest is gone. What no pass sees isn't written: events
/// that were lost or served none, the daemon's absence (its release is a sample like others), lines of a mode.
class CountedWriter {
public:
  /// What one pass saw and served.
  struct Pass {
    std::array<std::int16_t, 6> mAxes{};
    std::int32_t mRotationCode = 0;
    /// A view command is followed by zoom all.
    bool mZoomsAll = false;
    /// Codes of the events that were served.
    std::vector<int> mServed;
    /// The pass changed nothing.
    bool mIsIdle = false;
    /// The tick's time was up after it.
    bool mEndsTick = false;
  };

  /// A line of the host was done, without time and player; between two ticks.
  void host(const std::string& line) { write("host", line); }
  void pass(const Pass& pass);
  /// Returns the session up to now.
  std::string text() const;

private:
  void write(const char* who, const std::string& what);

  std::string mText;
  /// Number of the next pass.
  std::int64_t mNext = 1;
  Pass mLast;
};

} // namespace session

#endif
