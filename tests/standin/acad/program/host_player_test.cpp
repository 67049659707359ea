#include "host_player.h"

#include "acgs.h"
#include "host.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cmath>
#include <sstream>
#include <thread>

namespace {

using testing::ElementsAre;
using testing::HasSubstr;

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
  void SetUp() override {
    host::reset();
    host::add(std::make_unique<AcDbCircle>(AcGePoint3d(10, 0, 0), AcGeVector3d(0, 0, 1), 5));
    host::add(std::make_unique<AcDbLine>(AcGePoint3d(0, 0, 0), AcGePoint3d(20, 10, 30)));
    mRecorderP = std::make_unique<program::Recorder>(mControls);
    mDescriptor.addRequirement(AcGsKernelDescriptor::k3DDrawing);
  }
  void TearDown() override {
    mRecorderP.reset();
    host::reset();
  }
  void play(const std::string& text, double seconds = 1000) {
    const session::Session session = session::parse(text, "test.session");
    ASSERT_TRUE(session.isGood()) << session.mErrors.front();
    program::HostPlayer(session, mControls, *mRecorderP, mLog).play(seconds);
  }
  std::vector<int> selected() const {
    std::vector<int> numbers;
    for (const AcDbObjectId& id : host::selected())
      numbers.push_back(host::entityNumber(id));
    return numbers;
  }

  FakeControls mControls;
  std::unique_ptr<program::Recorder> mRecorderP;
  AcGsKernelDescriptor mDescriptor;
  std::ostringstream mLog;
};

TEST_F(HostPlayerTest, PlaysWhatIsDueOnceAndInOrder) {
  const session::Session session = session::parse(
      "1 host type ONE\n1 device key 3\n1.5 host type TWO\n2 host type THREE\n2 device away 3.5\n", "t");
  program::HostPlayer player(session, mControls, *mRecorderP, mLog);
  EXPECT_DOUBLE_EQ(player.end(), 5.5) << "an absence belongs to the session";
  const std::pair<double, int> cases[] = {{0.99, 0}, {1.5, 2}, {1.7, 2}, {9, 3}};
  for (const auto& [seconds, typed] : cases) {
    player.play(seconds);
    EXPECT_EQ(host::queueLength(), typed);
  }
  host::runQueue();
  const std::string history = host::historyText();
  EXPECT_LT(history.find("> ONE"), history.find("> TWO"));
  EXPECT_LT(history.find("> TWO"), history.find("> THREE"));
}

TEST_F(HostPlayerTest, SelectsAndSetsTabPointerAndView) {
  play("0 host select line\n");
  EXPECT_THAT(selected(), ElementsAre(2)) << "the first line, not the first object";
  play("0 host select 2 77\n");
  EXPECT_THAT(selected(), ElementsAre(2));
  EXPECT_THAT(mLog.str(), HasSubstr("only 1 of these"));
  play("0 host select none\n0 host layout on\n0 host pointer edit\n0 host look 1 2 3 4 5 6 0 0 1\n"
       "0 host perspective on\n0 host caption So it goes\n");
  EXPECT_TRUE(selected().empty());
  ASSERT_EQ(mRecorderP->selections().size(), 3u);
  EXPECT_THAT(mRecorderP->selections()[0].mValue, ElementsAre(2));
  EXPECT_TRUE(host::isLayout());
  EXPECT_EQ(mControls.mPointer, session::Pointer::edit);
  for (const host::ViewState& view : {host::view(), host::storedView()}) {
    EXPECT_EQ(view.position.y, 2);
    EXPECT_EQ(view.target.z, 6);
    EXPECT_EQ(view.up.z, 1);
    EXPECT_TRUE(view.perspective);
  }
  EXPECT_EQ(mRecorderP->captions().at(0).mValue, "So it goes");
  // Views that no frame showed are seen at a look.
  mRecorderP->look();
  const std::size_t before = mRecorderP->frames().size();
  mRecorderP->look();
  EXPECT_EQ(mRecorderP->frames().size(), before) << "nothing has changed";
  host::ViewState view = host::view();
  view.fieldWidth = 77;
  host::setView(view);
  mRecorderP->look();
  ASSERT_EQ(mRecorderP->frames().size(), before + 1);
  EXPECT_EQ(mRecorderP->frames().back().mView.fieldWidth, 77);
}

TEST_F(HostPlayerTest, FirstViewShowsTheWholeDrawingAndFillsAGoodPart) {
  program::fitFirstView();
  const host::ViewState view = host::view();
  const AcGeVector3d look = (view.position - view.target).normalize();
  EXPECT_NEAR(look.dotProduct(view.up), 0, 1e-12);
  EXPECT_GT(view.up.z, 0.5) << "upright";
  const AcGeVector3d right = view.up.crossProduct(look);
  double widest = 0;
  for (int number = 1; number <= 2; ++number)
    for (const AcDbStroke& stroke : host::strokes(number))
      for (const AcGePoint3d& p : stroke)
        widest = std::max({widest, std::fabs(right.dotProduct(p - view.target)) / view.fieldWidth * 2,
                           std::fabs(view.up.dotProduct(p - view.target)) / view.fieldHeight * 2});
  EXPECT_GT(widest, 0.4);
  EXPECT_LT(widest, 0.95);
}

// Frames that come faster than anyone could see are joined, but no motion is lost.
TEST_F(HostPlayerTest, DenseFramesKeepTheWholeMotion) {
  for (int i = 0; i < 5000; ++i) {
    AcDbObjectPointer<AcDbEntity>(host::entityId(1), AcDb::kForWrite)
        ->transformBy(AcGeMatrix3d::translation({1, 0, 0}));
    acgsObtainAcGsView(2, mDescriptor)->update();
  }
  AcGeMatrix3d all;
  for (const program::RecordedFrame& frame : mRecorderP->frames()) {
    for (const program::MovedGroup& group : frame.mMoved) {
      EXPECT_THAT(group.mObjects, ElementsAre(1));
      all = group.mTransform * all;
    }
  }
  EXPECT_NEAR(all.translation().x, 5000, 1e-9);
  EXPECT_EQ(mRecorderP->shownFrames(), 5000);
  EXPECT_LT(mRecorderP->frames().size(), 2000u);
  EXPECT_FALSE(mRecorderP->hasViewMoved()) << "objects moved, the view did not";
}

// The plug-in's time is what passes in its hands, not what the display takes.
TEST_F(HostPlayerTest, WaitForTheDisplayIsNotThePlugInsTime) {
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
TEST_F(HostPlayerTest, ScrolledControlsAreSeenWhileTheMainThreadIsBusy) {
  for (int position = 1; position <= 3; ++position) {
    mControls.mPosition = position;
    const std::size_t wanted = static_cast<std::size_t>(position) + 1;
    for (int i = 0; i < 1000 && mRecorderP->scrolls().size() < wanted; ++i)
      std::this_thread::sleep_for(std::chrono::milliseconds(10));
    mRecorderP->look();
    mRecorderP->look();
    const auto scrolls = mRecorderP->scrolls();
    ASSERT_EQ(scrolls.size(), wanted) << "one entry for each change, none without";
    EXPECT_EQ(scrolls.back().mValue[0].mVertical, position);
  }
}

} // namespace
