#include "host_player.h"

#include "acgs.h"
#include "host.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <sstream>
#include <thread>

namespace {

using testing::ElementsAre;

class FakeControls : public program::Controls {
public:
  const std::vector<program::ControlInfo>& infos() const override { return mInfos; }
  std::vector<program::ScrollState> states() const override {
    program::ScrollState state;
    state.mVertical = mPosition;
    return {state};
  }
  void point(session::Pointer where) override { mPointer = where; }

  std::vector<program::ControlInfo> mInfos{{"tree", "SysTreeView32", {0, 9, 3}, {}}};
  session::Pointer mPointer = session::Pointer::none;
  std::atomic<int> mPosition{0};
};

class HostPlayerTest : public testing::Test {
protected:
  HostPlayerTest() {
    host::reset();
    host::add(std::make_unique<AcDbPoint>(AcGePoint3d(10, 0, 0)));
    host::add(std::make_unique<AcDbLine>(AcGePoint3d(0, 0, 0), AcGePoint3d(20, 10, 30)));
    mRecorderP = std::make_unique<program::Recorder>(mControls);
    mDescriptor.addRequirement(AcGsKernelDescriptor::k3DDrawing);
  }

  FakeControls mControls;
  std::unique_ptr<program::Recorder> mRecorderP;
  AcGsKernelDescriptor mDescriptor;
};

TEST_F(HostPlayerTest, PlaysWhatIsDueOnce) {
  const session::Session session = session::parse(
      "1 host type ONE\n1 device key 3\n1.5 host select line\n1.5 host layout on\n1.5 host pointer edit\n"
      "1.5 host look 1 2 3 4 5 6 0 0 1\n2 host type THREE\n2 device away 3.5\n",
      "t");
  std::ostringstream log;
  program::HostPlayer player(session, mControls, *mRecorderP, log);
  EXPECT_DOUBLE_EQ(player.end(), 5.5) << "an absence belongs to the session";
  for (const auto& [seconds, typed] : {std::make_pair(0.99, 0), {1.5, 1}, {1.7, 1}, {9, 2}}) {
    player.play(seconds);
    const auto history = host::history();
    EXPECT_EQ(std::count_if(history.begin(), history.end(), [](const auto& line) { return line.isTyped; }),
              typed);
  }
  EXPECT_THAT(host::selected(), ElementsAre(host::entityId(2))) << "the first line, not the first object";
  EXPECT_TRUE(host::isLayout());
  EXPECT_EQ(mControls.mPointer, session::Pointer::edit);
  EXPECT_EQ(host::storedView().target.z, 6);
}

// Frames that come faster than anyone could see are joined, but no motion is lost.
TEST_F(HostPlayerTest, DenseFramesKeepTheWholeMotion) {
  for (int i = 0; i < 5000; ++i) {
    AcDbObjectPointer<AcDbEntity>(host::entityId(1), AcDb::kForWrite)
        ->transformBy(AcGeMatrix3d::translation({1, 0, 0}));
    acgsObtainAcGsView(2, mDescriptor)->update();
  }
  AcGeMatrix3d all;
  for (const program::RecordedFrame& frame : mRecorderP->frames())
    for (const program::MovedGroup& group : frame.mMoved)
      all = group.mTransform * all;
  EXPECT_NEAR(all.translation().x, 5000, 1e-9);
  EXPECT_EQ(mRecorderP->shownFrames(), 5000);
  EXPECT_LT(mRecorderP->frames().size(), 2000u);
}

// The plug-in's time is what passes in its hands, not what the display takes.
TEST_F(HostPlayerTest, DisplayWaitIsNotThePlugIns) {
  AcGsView* const view = acgsObtainAcGsView(2, mDescriptor);
  host::setRefreshRate(1); // Hz
  mRecorderP->handOver();
  view->update();
  view->update();
  mRecorderP->handOver();
  std::this_thread::sleep_for(std::chrono::milliseconds(600));
  view->update();
  const std::vector<double>& times = mRecorderP->plugInTimes();
  ASSERT_EQ(times.size(), 3u);
  EXPECT_LT(times[1], 0.9);
  EXPECT_GE(times[2], 0.6);
}

// The main thread need not do anything for it.
TEST_F(HostPlayerTest, SeesScrollsWhileTheMainThreadWorks) {
  mControls.mPosition = 7;
  for (int i = 0; i < 1000 && mRecorderP->scrolls().size() < 2; ++i)
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  mRecorderP->look();
  const auto scrolls = mRecorderP->scrolls();
  ASSERT_EQ(scrolls.size(), 2u) << "one entry for each change, none without";
  EXPECT_EQ(scrolls[1].mValue[0].mVertical, 7);
}

} // namespace
