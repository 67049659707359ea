// The flat view of a layout under the cap. The traces and transcripts hold the order of calls, and passes
// that follow each other.

#include <functional>
#include <limits>

#include "call_log.h"
#include "engine_rig.h"

using Lines = std::vector<std::string>;

namespace {

class PanZoom : public EngineTest {
protected:
  void SetUp() override {
    EngineTest::SetUp();
    plugin().mScrollTreeAndList = false;
    host::setLayout(true);
  }
  void TearDown() override {
    release();
    EXPECT_EQ(host::held().locks, 0);
    EXPECT_EQ(host::writesWithoutLock(), 0);
    EngineTest::TearDown();
  }

  /// A viewport of 300 by 200 that shows a height of 100 about the origin.
  static void showLayout() { host::setLayoutState({}); }
};

TEST_F(PanZoom, WhatTheHostRefusesCostsItsOwnStepAThrowTheRestOfThePass) {
  const std::string noPointer = "ERR AcDbObjectPointer could not be retrieved!";
  struct Case {
    std::function<void()> order;
    double centreX, viewHeight;
    Lines records;
  };
  const Case cases[] = {
      {[] { call_log::failAt("acdbOpenObject", 1); }, 0, 90, {noPointer}},
      {[] { call_log::failAt("acedActiveViewportId", 2); }, -15, 100, {noPointer}},
      {[] { host::setCannotBeOpened(host::viewportId()); }, 0, 100, {noPointer, noPointer}},
      {[] { call_log::throwAt("setViewCenter", 1); }, 0, 100, {"ERR Error handleCapIsDeflectedIn2DMode()"}},
      {[] {}, -15, 90, {}},
  };
  for (const Case& c : cases) {
    showLayout();
    c.order();
    EXPECT_TRUE(pass(2000, 0, 2000));
    call_log::clear();
    host::setCannotBeOpened(host::viewportId(), false);
    EXPECT_NEAR(host::layout().centre.x, c.centreX, 1e-9);
    EXPECT_NEAR(host::layout().viewHeight, c.viewHeight, 1e-9);
    Lines expected = c.records;
    expected.insert(expected.begin(), "TRC Document locked");
    expected.push_back("INF Cap moving.");
    EXPECT_EQ(takeRecords(), expected);
    EXPECT_EQ(host::held().openForWrite, 0);
    EXPECT_EQ(host::held().locks, 1);
    release();
    EXPECT_EQ(takeRecords(), (Lines{"TRC Document unlocked", "TRC Cap released."}));
  }
}

TEST_F(PanZoom, NoViewportGetsANumberThatIsNone) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  for (const auto& [height, viewHeight] :
       {std::pair<double, double>{0, 100}, {200, nan}, {nan, 100}, {200, 1e308}}) {
    host::LayoutState state;
    state.height = height;
    state.viewHeight = viewHeight;
    host::setLayoutState(state);
    EXPECT_TRUE(pass(32767, 32767, -32768));
    EXPECT_TRUE(pass(-32768, 32767, -32768));
  }
  // However long it goes on.
  showLayout();
  for (int i = 0; i < 8000; ++i)
    pass(0, 0, 4000);
  EXPECT_GT(host::layout().viewHeight, 0);
  for (int i = 0; i < 12000; ++i)
    pass(0, 0, -4000);
  EXPECT_LE(host::layout().viewHeight, std::numeric_limits<double>::max());
}

} // namespace
