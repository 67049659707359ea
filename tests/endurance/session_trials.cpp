// Whole sessions, from load to unload, in any number.

#include "session.h"
#include "trial.h"
#include "usage.h"

namespace {

using Sessions = SessionTest;

TEST_F(Sessions, KeepNoResources) {
  Trial trial("Sessions through all paths, each from load to unload");
  const std::int64_t sessions = scaled(200, 10000);
  std::unique_ptr<Usage> beforeP;
  for (std::int64_t i = 0; i < sessions && !HasFailure(); ++i) {
    {
      Session session(true);
      session.play();
      session.unload();
      fake_devlink::reset(); // forgets the calls
    }
    const bool isSame = Session::outcome() == mClean;
    expectBalance("");
    if (i == sessions / 10)
      beforeP = std::make_unique<Usage>();
    trial.count("session " + std::to_string(i), isSame && !HasFailure());
  }
  trial.count("usage from the first tenth to the end", Usage().isBackTo(*beforeP));
}

} // namespace
