#include "panel.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

namespace devlink {

bool Panel::take(const session::Action& action) {
  using session::Verb;
  switch (action.mVerb) {
  case Verb::gain:
    mGain[action.mAxis] = action.mValue;
    return true;
  case Verb::deadzone:
    mDeadZone[action.mAxis] = action.mValue;
    return true;
  case Verb::swap:
    std::swap(mSource[action.mAxis], mSource[action.mOtherAxis]);
    return true;
  case Verb::dominant:
    mIsDominant = action.mIsOn;
    return true;
  default:
    return false;
  }
}

Axes Panel::apply(const Axes& hand) const {
  using Limits = std::numeric_limits<Axes::value_type>;
  std::array<double, 6> values{};
  double strongest = 0;
  for (std::size_t i = 0; i < values.size(); ++i) {
    const double count = hand[mSource[i]];
    values[i] = std::copysign(std::max(0.0, std::fabs(count) - mDeadZone[i]), count);
    strongest = std::max(strongest, std::fabs(values[i]));
  }
  Axes out{};
  bool isStrongestFound = false;
  for (std::size_t i = 0; i < values.size(); ++i) {
    const bool isStrongest = !isStrongestFound && std::fabs(values[i]) == strongest;
    isStrongestFound = isStrongestFound || isStrongest;
    if (mIsDominant && !isStrongest)
      continue;
    const double value = std::round(values[i] * mGain[i]);
    out[i] = static_cast<Axes::value_type>(std::clamp<double>(value, Limits::min(), Limits::max()));
  }
  return out;
}

} // namespace devlink
