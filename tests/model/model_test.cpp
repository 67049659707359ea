// The plug-in's engine against the model, over random sequences.
//
// OV_SEED=N plays sequence N alone, OV_COUNT=N plays the first N.

#include <cstdlib>
#include <random>

#include "sequence.h"

namespace {

constexpr int kSequences = 700;

/// Plays a sequence, which is the same with every compiler. Returns the first difference, empty if there is none.
std::string play(int seed) {
  std::mt19937 numbers(static_cast<unsigned>(seed));
  rig::Sequence sequence([&numbers](unsigned count) { return static_cast<unsigned>(numbers() % count); });
  for (int tick = 1; tick <= rig::kTicks; ++tick)
    if (const std::string found = sequence.tick(); !found.empty())
      return "tick " + std::to_string(tick) + ": " + found;
  return sequence.end();
}

TEST(Model, ExplainsEverySequence) {
  const char* const seed = std::getenv("OV_SEED");
  const char* const count = std::getenv("OV_COUNT");
  const int first = seed ? std::atoi(seed) : 1;
  const int last = seed ? first : count ? std::atoi(count) : kSequences;
  for (int number = first; number <= last; ++number)
    ASSERT_EQ(play(number), "") << "Repeat it: OV_SEED=" << number << " " << OV_PROGRAM;
}

} // namespace
