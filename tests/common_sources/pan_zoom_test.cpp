// The flat view of a layout under the cap.

#include <limits>

#include "calls.h"
#include "engine_rig.h"
#include "fault_loop.h"

using Lines = std::vector<std::string>;

namespace {

class PanZoom : public EngineTest {
protected:
  void SetUp() override {
    EngineTest::SetUp();
    plugin().mScrollTreeAndList = false;
    mTraSensBase = proxy().mTraSensBase;
    host::setLayout(true);
  }
  void TearDown() override {
    release();
    EXPECT_EQ(host::held().locks, 0);
    EXPECT_EQ(host::writesWithoutLock(), 0);
    proxy().mTraSensBase = mTraSensBase;
    EngineTest::TearDown();
  }

  /// A viewport of 300 by 200 that shows a height of 100 about a centre.
  static void showLayout(double x = 0, double y = 0) {
    host::LayoutState state;
    state.centre = {x, y};
    host::setLayoutState(state);
  }
  static void expectLayout(double x, double y, double viewHeight) {
    EXPECT_NEAR(host::layout().centre.x, x, 1e-9);
    EXPECT_NEAR(host::layout().centre.y, y, 1e-9);
    EXPECT_NEAR(host::layout().viewHeight, viewHeight, 1e-9);
  }

  std::int32_t mTraSensBase = 0;
};

TEST_F(PanZoom, DrawingFollowsTheCap) {
  struct Case {
    int x, y, z;
    double centreX, centreY, viewHeight;
  };
  const Case cases[] = {
      {2000, -1000, 0, -15, 5, 100},
      {-2000, 1000, 0, 15, -5, 100},
      {1, 0, 0, -0.0075, 0, 100},
      {0, 0, 2000, 0, 0, 90},
      {0, 0, -2000, 0, 0, 110},
      {0, 0, -6000, 0, 0, 120},
      {0, 0, 4000, 0, 0, 80},
      {0, 0, 30000, 0, 0, 80},
      {0, 0, -4000, 0, 0, 120},
      {0, 0, -32768, 0, 0, 120},
      {2000, -1000, 2000, -15, 5, 90}, // the pan is that of the view before the zoom
      {32767, -32768, 0, -245.7525, 163.84, 100},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(testing::Message() << c.x << " " << c.y << " " << c.z);
    showLayout();
    EXPECT_TRUE(pass(c.x, c.y, c.z, 3000, 3000, 3000));
    expectLayout(c.centreX, c.centreY, c.viewHeight);
    release();
  }
  EXPECT_EQ(host::viewCounts().setViews, 0);
  EXPECT_EQ(host::viewCounts().storedViews, 0);
}

TEST_F(PanZoom, PassesAddUpUnderOneLock) {
  showLayout(7, 8);
  int frames = 0;
  host::setFrameSink([&frames](const host::Frame& frame) { frames += frame.is2d ? 1 : 0; });
  for (int i = 0; i < 3; ++i) {
    EXPECT_TRUE(pass(2000, 0, 2000));
    EXPECT_EQ(host::held().locks, 1);
  }
  expectLayout(7 - 15 - 15 * 0.9 - 15 * 0.81, 8, 72.9);
  EXPECT_EQ(frames, 6) << "each change shows at once";
  EXPECT_EQ(takeRecords(), (Lines{"TRC Document locked", "INF Cap moving."}));
  calls::startRecording();
  release();
  EXPECT_EQ(calls::stopRecording(), (Lines{"acedGetVar tilemode", "acedGetVar cvport", "acDocManagerPtr",
                                           "curDocument", "unlockDocument"}));
  EXPECT_EQ(takeRecords(), (Lines{"TRC Document unlocked", "TRC Cap released."}));
}

TEST_F(PanZoom, HostIsAskedInThisOrder) {
  calls::startRecording();
  EXPECT_TRUE(pass(2000, 0, 2000));
  EXPECT_EQ(calls::stopRecording(), (Lines{"acedGetVar tilemode",
                                           "acedGetVar cvport",
                                           "acDocManagerPtr",
                                           "curDocument",
                                           "lockDocument 4",
                                           "acedActiveViewportId",
                                           "acdbOpenObject write",
                                           "width",
                                           "height",
                                           "viewHeight",
                                           "viewCenter",
                                           "setViewCenter -15 0",
                                           "updateDisplay",
                                           "close",
                                           "acedActiveViewportId",
                                           "acdbOpenObject write",
                                           "viewHeight",
                                           "setViewHeight 90",
                                           "updateDisplay",
                                           "close"}));
  // What isn't deflected isn't touched.
  calls::startRecording();
  EXPECT_TRUE(pass(0, 0, 2000));
  EXPECT_TRUE(pass(0, 0, 0, 500, 0, 0));
  for (const std::string& call : calls::stopRecording())
    EXPECT_NE(call.substr(0, 13), "setViewCenter");
}

TEST_F(PanZoom, RotationAloneTakesTheLockAndMovesNothing) {
  EXPECT_TRUE(pass(0, 0, 0, 500, 0, 0));
  expectLayout(0, 0, 100);
  EXPECT_EQ(takeRecords(), (Lines{"TRC Document locked", "INF Cap moving."}));
  EXPECT_EQ(host::held().locks, 1);
}

TEST_F(PanZoom, SmallValuesActBesideADeflectedOne) {
  plugin().mMinThreshold = 1000;
  showLayout();
  EXPECT_TRUE(pass(200, 0, 0, 2000, 0, 0));
  expectLayout(-1.5, 0, 100);
}

TEST_F(PanZoom, SensitivityIsADivisor) {
  const std::pair<int, double> cases[] = {
      {10000, -30}, {40000, -7.5}, {-20000, 15}, {0, -15}}; // 0: as the default
  for (const auto& [base, centre] : cases) {
    showLayout();
    proxy().mTraSensBase = base;
    EXPECT_TRUE(pass(2000, 0, 0));
    expectLayout(centre, 0, 100);
    release();
  }
}

TEST_F(PanZoom, ViewportThatCannotBeHadCostsItsOwnStepOnly) {
  calls::failAt("acdbOpenObject", 1);
  EXPECT_TRUE(pass(2000, 0, 2000));
  expectLayout(0, 0, 90);
  EXPECT_EQ(takeRecords(), (Lines{"TRC Document locked", "ERR AcDbObjectPointer could not be retrieved!",
                                  "INF Cap moving."}));
  calls::clear();
  calls::failAt("acedActiveViewportId", 2);
  EXPECT_TRUE(pass(2000, 0, 2000));
  expectLayout(-13.5, 0, 90);
  EXPECT_EQ(takeRecords(), Lines{"ERR AcDbObjectPointer could not be retrieved!"});
  calls::clear();
  host::setCannotBeOpened(host::viewportId());
  EXPECT_TRUE(pass(2000, 0, 2000));
  expectLayout(-13.5, 0, 90);
  EXPECT_EQ(takeRecords(), (Lines{"ERR AcDbObjectPointer could not be retrieved!",
                                  "ERR AcDbObjectPointer could not be retrieved!"}));
  host::setCannotBeOpened(host::viewportId(), false);
  EXPECT_TRUE(pass(2000, 0, 0));
  expectLayout(-27, 0, 90);
}

TEST_F(PanZoom, ThrowDropsTheRestOfThePass) {
  calls::throwAt("setViewCenter", 1);
  EXPECT_TRUE(pass(2000, 0, 2000));
  calls::clear();
  expectLayout(0, 0, 100);
  EXPECT_EQ(takeRecords(),
            (Lines{"TRC Document locked", "ERR Error handleCapIsDeflectedIn2DMode()", "INF Cap moving."}));
  EXPECT_EQ(host::held().openForWrite, 0);
  EXPECT_EQ(host::held().locks, 1);
}

TEST_F(PanZoom, NoFaultOfTheHostOutlivesTheMovement) {
  const auto prepare = [this] {
    host::reset();
    host::setLayout(true);
    proxy().mIsDocLocked = false;
    proxy().mCapIsMoving = false;
    proxy().mViewMode = 1;
  };
  const auto expectCleanMovement = [this] {
    showLayout();
    EXPECT_TRUE(pass(2000, -1000, 2000));
    expectLayout(-15, 5, 90);
    release();
  };
  std::set<std::string> struck = rig::forEachFault(
      prepare, [this] { rig::guarded([this] { pass(2000, -1000, 2000); }); },
      [&](const std::string& operation, bool) {
        const bool staysOpen = operation == "close"; // the host's own doing
        EXPECT_EQ(host::held().openForWrite, staysOpen ? 1 : 0);
        release();
        EXPECT_EQ(host::held().locks, 0);
        EXPECT_FALSE(proxy().mIsDocLocked || proxy().mCapIsMoving);
        if (!staysOpen)
          expectCleanMovement();
        EXPECT_EQ(host::held().locks, 0);
      });
  ASSERT_FALSE(HasFailure());
  for (const char* const operation : {"lockDocument", "acedActiveViewportId", "acdbOpenObject", "width",
                                      "height", "viewHeight", "viewCenter", "setViewCenter", "setViewHeight",
                                      "updateDisplay", "close", "curDocument", "acDocManagerPtr"})
    EXPECT_EQ(struck.count(operation), 1u) << operation;

  // A fault in the release itself: the cap goes idle, and the next movement is whole. A lock that the host
  // didn't take back stays.
  struck = rig::forEachFault(
      [&] {
        prepare();
        pass(2000, 0, 0);
        setSample(0, 0, 0);
      },
      [this] { rig::guarded([this] { proxy().handleDeviceCap(); }); },
      [&](const std::string& operation, bool isThrow) {
        if (operation != "acedGetVar") {
          EXPECT_FALSE(proxy().mCapIsMoving);
          EXPECT_EQ(proxy().mIsDocLocked, isThrow) << "set as long as the lock may be held";
          EXPECT_EQ(host::held().locks, 1);
        }
        expectCleanMovement();
        EXPECT_FALSE(proxy().mIsDocLocked || proxy().mCapIsMoving);
        EXPECT_EQ(host::held().locks, isThrow || operation == "acedGetVar" ? 0 : 1);
      });
  EXPECT_EQ(struck,
            (std::set<std::string>{"acedGetVar", "acDocManagerPtr", "curDocument", "unlockDocument"}));
  host::reset();
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

TEST_F(PanZoom, ObjectModeWithNothingSelectedPansAndZooms) {
  proxy().mObjectMoveMode = true;
  EXPECT_TRUE(pass(2000, 0, 2000));
  expectLayout(-15, 0, 90);
  EXPECT_EQ(takeRecords(), (Lines{"TRC Document locked", "INF Cap moving."}));
}

} // namespace
