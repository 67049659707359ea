// One scripted session through every path of the plug-in, repeated with the k-th call of each host and
// Windows operation failing, then throwing, for every k that the session reaches; and the same for the device
// library.
//
// After each run the plug-in must have given everything back, and a clean session must end as the first did.

#include <functional>

#include "event_codes.h"
#include "session.h"
#include "trial.h"

namespace {

using Faults = SessionTest;

TEST_F(Faults, SurvivesEachHostFailure) {
  std::int64_t reached = 0;
  call_log::startCounting();
  {
    Session session;
    session.play();
    reached = call_log::count();
    call_log::clear();
    session.unload();
    ASSERT_GT(reached, 300);
    RecordProperty("calls", static_cast<int>(reached));
  }
  Trial trial("Each call of the host and of Windows in a session through all paths fails, then throws");
  std::set<std::string> struck;
  for (std::int64_t k = 1; k <= reached; ++k) {
    for (const bool isThrow : {false, true}) {
      Session session;
      if (isThrow)
        call_log::throwAt({}, k);
      else
        call_log::failAt({}, k);
      session.play();
      const std::string faulted = call_log::lastFault();
      call_log::clear();
      SCOPED_TRACE(testing::Message() << faulted << (isThrow ? " throws" : " fails") << " as call " << k);
      ASSERT_NE(faulted, "");
      struck.insert(faulted);
      const bool isPumpStopped = hasError("Error TimerProc()") || hasError("Error AutoCadProxy()");
      // Only a throw at the level of the timer callback, or no timer, stops the pump.
      EXPECT_EQ(session.isPumpRunning(), !isPumpStopped || faulted == "KillTimer");
      EXPECT_TRUE(!isPumpStopped || faulted == "SetTimer" || (isThrow && faulted == "KillTimer"));
      EXPECT_TRUE(isPumpStopped || faulted != "SetTimer");
      session.unload();
      expectBalance(faulted);
      trial.count(faulted + " as call " + std::to_string(k), !HasFailure());
      if (HasFailure())
        return; // one such report is enough
    }
    if (k % 20 == 0) {
      ASSERT_EQ(cleanOutcome(), mClean) << "after call " << k;
    }
  }
  trial.detail(std::to_string(reached) + " calls of " + std::to_string(struck.size()) + " operations");
  for (const char* const operation :
       {"acedGetVar", "setView", "zoom", "update", "acedSSGet", "acdbOpenObject", "transformBy",
        "lockDocument", "unlockDocument", "sendStringToExecute", "setViewCenter", "SendMessageW", "SetTimer",
        "KillTimer", "addCommand", "acgsSetViewParameters"})
    EXPECT_EQ(struck.count(operation), 1u) << "the session no longer reaches " << operation;
}

TEST_F(Faults, SurvivesEachDeviceFailure) {
  const char* const functions[] = {"ovConnect",    "ovDisconnect",          "ovGetDevNum",  "ovGetDevInfo",
                                   "ovFetchEvent", "ovGetAdvancedSettings", "ovSetApplMode"};
  Trial trial("Each function of the device library fails, then throws, at its first calls");
  for (const char* const function : functions) {
    for (int call = 0; call < 8; ++call) {
      const bool isThrow = call % 2 != 0;
      SCOPED_TRACE(testing::Message()
                   << function << (isThrow ? " throws" : " fails") << " after " << call / 2);
      fake_devlink::reset();
      fake_devlink::fail(function, {1, call / 2, isThrow});
      fake_devlink::pushMotion({5, 0, 0, 0, 0, 0});
      fake_devlink::pushEvent(kRotationSettingsEvent1);
      fake_devlink::pushEvent(kAnnounceModeEvent);
      fake_devlink::pushMotion({0, 0, 0, 0, 0, 0});
      Session session;
      session.play();
      ASSERT_TRUE(fake_devlink::waitUntilTaken()) << "the reading thread has stopped";
      EXPECT_TRUE(session.isPumpRunning());
      session.unload();
      expectBalance("");
      trial.count(std::string(function) + " at call " + std::to_string(call), !HasFailure());
    }
  }
  fake_devlink::reset();
  EXPECT_EQ(cleanOutcome(), mClean);
}

} // namespace
