#ifndef FAULT_LOOP_H
#define FAULT_LOOP_H

#include <functional>
#include <set>
#include <string>

#include <gtest/gtest.h>

#include "calls.h"

namespace rig {

/// Runs an action again and again, with its n-th call into the stand-ins failing, then with that call
/// throwing, for every n that the action reaches. Gives the names of the operations that were struck. prepare
/// sets the scene, before each run and outside the reach of the fault action   must let no exception out
/// check    looks at what is left, with the order taken back; operation is where the fault struck
inline std::set<std::string>
forEachFault(const std::function<void()>& prepare, const std::function<void()>& action,
             const std::function<void(const std::string& operation, bool isThrow)>& check) {
  constexpr int kFarTooMany = 100000;
  std::set<std::string> struck;
  for (const bool isThrow : {false, true}) {
    for (int n = 1; n < kFarTooMany; ++n) {
      prepare();
      if (isThrow)
        calls::throwAny(n);
      else
        calls::failAny(n);
      action();
      const std::string operation = calls::lastFault();
      calls::clear();
      if (operation.empty())
        break;
      struck.insert(operation);
      SCOPED_TRACE(testing::Message() << operation << (isThrow ? " throws" : " fails") << " as call " << n);
      check(operation, isThrow);
      if (testing::Test::HasFailure())
        return struck; // one such report is enough
    }
  }
  return struck;
}

/// Runs an action whose own caller would catch what it throws.
inline void guarded(const std::function<void()>& action) {
  try {
    action();
  } catch (const calls::InjectedFault&) {
  }
}

} // namespace rig

#endif
