// Selected objects under the cap, and what the selection gives the motion of views: screen frame, centre and
// axis.

#include <algorithm>
#include <cmath>
#include <limits>

#include "calls.h"
#include "engine_rig.h"
#include "fault_loop.h"
#include "motion/motion_state.h"

using Lines = std::vector<std::string>;
using rig::text;

namespace {

/// A point turned by the right-hand rule about an axis through a centre, by the rule for one turn.
AcGePoint3d turned(const AcGePoint3d& p, double angle, const AcGeVector3d& axis, const AcGePoint3d& centre) {
  const AcGeVector3d v = p - centre;
  return centre + v * std::cos(angle) + axis.crossProduct(v) * std::sin(angle) +
         axis * (axis.dotProduct(v) * (1 - std::cos(angle)));
}

class SelectedObjects : public EngineTest {
protected:
  void SetUp() override {
    EngineTest::SetUp();
    plugin().mScrollTreeAndList = false;
    proxy().mObjectMoveMode = true;
    lookFromAbove();
  }
  void TearDown() override {
    release();
    EXPECT_EQ(host::held().locks, 0);
    EXPECT_EQ(host::writesWithoutLock(), 0);
    EngineTest::TearDown();
  }

  void lookFromAbove() { host::setView(rig::viewFrom({0, 0, 100}, {0, 0, 0}, {0, 1, 0})); }
  /// From the front and above, at 45 degrees.
  void lookDown() {
    host::setView(rig::viewFrom({0, -100, 100}, {0, 0, 0}, {0, std::sqrt(0.5), std::sqrt(0.5)}));
  }
  static AcGePoint3d start(int number) {
    return static_cast<const AcDbLine*>(host::entity(number))->startPoint();
  }
  static AcGePoint3d end(int number) {
    return static_cast<const AcDbLine*>(host::entity(number))->endPoint();
  }
  static void selectLine(const AcGePoint3d& from, const AcGePoint3d& to) {
    host::add(rig::line(from, to));
    host::selectNumbers({host::entityCount()});
  }
};

TEST_F(SelectedObjects, StepIsAFixedAmountForEachCount) {
  struct Case {
    int rotCode;
    const char* end;
  };
  // Of the rotation code only the flags count: camera modes turn no sign here.
  for (const Case& c :
       {Case{0, "15.98007 30.19867 -2.00000"}, Case{1, "15.98007 30.19867 -2.00000"},
        Case{2, "15.98007 30.19867 -2.00000"}, Case{3, "15.98007 30.19867 -2.00000"},
        Case{100, "15.98007 20.19867 -2.00000"}, // hovering drops world Y, also without perspective
        Case{10, "16.00000 30.00000 -2.00000"}}) {
    SCOPED_TRACE(c.rotCode);
    proxy().setRotMode(c.rotCode);
    selectLine({9, 20, 0}, {11, 20, 0});
    EXPECT_TRUE(pass(10, 20, -4, 0, 0, 100));
    EXPECT_EQ(text(end(host::entityCount())), c.end);
    release();
  }
  EXPECT_EQ(host::viewCounts().setViews, 0);
  EXPECT_EQ(host::viewCounts().zooms, 0);
  EXPECT_EQ(host::viewCounts().updates, 6) << "the picture is shown anew, once for each sample";
}

TEST_F(SelectedObjects, TurnsReadAsSeenInThePicture) {
  struct Case {
    int a, b, c;
    const char* end;
  };
  for (const Case& c :
       {Case{100, 0, 0, "1.00000 0.78140 1.17874"}, Case{0, 100, 0, "1.17874 1.00000 0.78140"},
        Case{0, 0, 100, "0.78140 1.17874 1.00000"}}) {
    selectLine({-1, -1, -1}, {1, 1, 1});
    EXPECT_TRUE(pass(0, 0, 0, c.a, c.b, c.c));
    EXPECT_EQ(text(end(host::entityCount())), c.end);
    release();
  }
}

TEST_F(SelectedObjects, ThirdTurnComesFirstAndTheShiftLast) {
  lookDown();
  const double h = std::sqrt(0.5);
  const AcGeVector3d left(-1, 0, 0), up(0, h, h), towards(0, -h, h);
  const AcGePoint3d centre(2, 3, 4);
  selectLine({1, 1, 1}, {3, 5, 7});
  EXPECT_TRUE(pass(7, -8, 9, 300, -200, 400));
  AcGePoint3d expected = turned({3, 5, 7}, 0.8, towards, centre);
  expected = turned(expected, -0.4, up, centre);
  expected = turned(expected, -0.6, left, centre);
  expected = expected + left * (7 * -0.5) + up * (-8 * 0.5) + towards * (9 * 0.5);
  EXPECT_EQ(text(end(1), 9), text(expected, 9));
  release();
  // A kept horizon: world Y for the second turn, no third one.
  proxy().setRotMode(10);
  selectLine({1, 1, 1}, {3, 5, 7});
  EXPECT_TRUE(pass(0, 0, 0, 300, -200, 400));
  expected = turned(turned({3, 5, 7}, -0.4, {0, 1, 0}, centre), -0.6, left, centre);
  EXPECT_EQ(text(end(2), 9), text(expected, 9));
}

TEST_F(SelectedObjects, SeveralMoveAsOneAboutThePlainMeanOfTheirMiddles) {
  host::add(rig::line({0, 0, 0}, {0, 2, 0})); // middle (0, 1, 0)
  host::add(rig::line({0, 0, 0}, {2, 4, 0})); // middle (1, 2, 0)
  host::add(
      std::make_unique<AcDbCircle>(AcGePoint3d(20, 3, 0), AcGeVector3d(0, 0, 1), 10.0)); // however large
  host::add(rig::line({100, 100, 0}, {200, 200, 0}));                                    // not selected
  host::selectNumbers({1, 2, 3});
  const AcGePoint3d centre(7, 2, 0);
  EXPECT_TRUE(pass(0, 0, 0, 0, 0, 500));
  EXPECT_EQ(text(end(1)), text(turned({0, 2, 0}, 1, {0, 0, 1}, centre)));
  EXPECT_EQ(text(end(2)), text(turned({2, 4, 0}, 1, {0, 0, 1}, centre)));
  EXPECT_EQ(text(static_cast<const AcDbCircle*>(host::entity(3))->center()),
            text(turned({20, 3, 0}, 1, {0, 0, 1}, centre)));
  EXPECT_EQ(text(end(4)), "200.00000 200.00000 0.00000");
}

TEST_F(SelectedObjects, SelectionIsReadAnewWithEachSample) {
  host::add(rig::line({0, 0, 0}, {2, 0, 0}));
  host::add(rig::line({50, 0, 0}, {52, 0, 0}));
  EXPECT_TRUE(pass(10, 0, 0));
  EXPECT_EQ(host::viewCounts().setViews, 1) << "nothing selected: the view, as with the mode off";
  EXPECT_EQ(host::held().locks, 0);
  host::selectNumbers({1});
  EXPECT_TRUE(pass(10, 0, 0));
  EXPECT_EQ(host::held().locks, 1) << "taken with the first object that moves";
  EXPECT_TRUE(pass(10, 0, 0));
  EXPECT_EQ(host::held().locks, 1);
  EXPECT_EQ(text(start(1)), "10.00000 0.00000 0.00000");
  // The centre goes with the objects: a turn now is about where they are.
  EXPECT_TRUE(pass(0, 0, 0, 0, 0, 500));
  EXPECT_EQ(text(start(1)), text(turned({10, 0, 0}, 1, {0, 0, 1}, {11, 0, 0})));
  host::selectNumbers({2});
  EXPECT_TRUE(pass(10, 0, 0));
  EXPECT_EQ(text(start(2)), "55.00000 0.00000 0.00000");
  host::selectNumbers({});
  EXPECT_EQ(host::viewCounts().setViews, 1);
  EXPECT_TRUE(pass(10, 0, 0));
  EXPECT_EQ(host::viewCounts().setViews, 2);
  takeRecords();
  release();
  EXPECT_EQ(takeRecords(), Lines{"TRC Cap released."});
  EXPECT_EQ(host::held().locks, 0);
  EXPECT_FALSE(proxy().mIsDocLocked);
}

TEST_F(SelectedObjects, HostIsAskedInThisOrder) {
  selectLine({0, 0, 0}, {2, 0, 0});
  calls::startRecording();
  pass(10, 0, 0);
  const Lines all = calls::stopRecording();
  const Lines expected = {
      "acDocManagerPtr", "curDocument",     "acedSSGet I",          "acedSSLength",
      "acedSSLength", // centre
      "acedSSName 0",    "acdbGetObjectId", "acdbOpenObject read",  "getGeomExtents", "close",
      "lockDocument 4", // motion
      "acedSSName 0",    "acdbGetObjectId", "acdbOpenObject write", "transformBy",    "close",
      "acedSSFree",      "update"};
  EXPECT_EQ((Lines{std::find(all.begin(), all.end(), "acDocManagerPtr"), all.end()}), expected);
}

TEST_F(SelectedObjects, WhatCannotMoveIsPassedOver) {
  for (int i = 0; i < 4; ++i)
    host::add(rig::line({i * 10.0, 0, 0}, {i * 10.0 + 2, 0, 0}));
  host::selectAll();
  host::setCannotBeOpened(host::entityId(1));
  host::setHasNoExtents(host::entityId(2));
  host::setRefusesTransform(host::entityId(3));
  EXPECT_TRUE(pass(10, 0, 0, 0, 0, 500));
  // The centre is that of the two whose extents can be had, (26, 0, 0).
  EXPECT_EQ(text(start(1)), "0.00000 0.00000 0.00000");
  EXPECT_EQ(text(start(2)), text(turned({10, 0, 0}, 1, {0, 0, 1}, {26, 0, 0}) + AcGeVector3d(5, 0, 0)));
  EXPECT_EQ(text(start(3)), "20.00000 0.00000 0.00000");
  EXPECT_EQ(text(start(4)), text(turned({30, 0, 0}, 1, {0, 0, 1}, {26, 0, 0}) + AcGeVector3d(5, 0, 0)));
  EXPECT_EQ(takeRecords(), (Lines{"TMP selCenterPoint: 26, 0, 0", "INF Cap moving."}));
  release();
  // No extents at all: about the origin, not about a centre of some time before.
  motion::selCenterPoint = AcGePoint3d(5, 5, 5);
  host::setHasNoExtents(host::entityId(4));
  host::selectNumbers({4});
  const AcGePoint3d before = start(4);
  EXPECT_TRUE(pass(0, 0, 0, 0, 0, 500));
  EXPECT_EQ(text(start(4)), text(turned(before, 1, {0, 0, 1}, {0, 0, 0})));
  EXPECT_EQ(host::viewCounts().setViews, 0);
}

TEST_F(SelectedObjects, NameThatCannotBeHadCostsThatObjectOnly) {
  host::add(rig::line({10, 0, 0}, {12, 0, 0}));
  host::add(rig::line({20, 0, 0}, {22, 0, 0}));
  host::selectAll();
  calls::failAt("acedSSName", 1); // in the centre, which is then the origin
  EXPECT_TRUE(pass(0, 0, 0, 0, 0, 500));
  EXPECT_EQ(text(start(1)), text(turned({10, 0, 0}, 1, {0, 0, 1}, {0, 0, 0})));
  EXPECT_FALSE(motion::selCenterValid);
  calls::clear();
  const AcGePoint3d first = start(1);
  const AcGePoint3d second = start(2);
  calls::failAt("acedSSName", 3); // the motion of the first
  EXPECT_TRUE(pass(10, 0, 0));
  calls::clear();
  EXPECT_EQ(text(start(1)), text(first));
  EXPECT_EQ(text(start(2)), text(second + AcGeVector3d(5, 0, 0)));
}

TEST_F(SelectedObjects, WithoutADocumentTheViewMoves) {
  selectLine({0, 0, 0}, {2, 0, 0});
  host::setHasDocument(false);
  EXPECT_TRUE(pass(10, 0, 0));
  host::setHasDocument(true);
  host::setHasDocumentManager(false);
  EXPECT_TRUE(pass(10, 0, 0));
  host::setHasDocumentManager(true);
  EXPECT_EQ(host::viewCounts().setViews, 2);
  EXPECT_EQ(text(start(1)), "0.00000 0.00000 0.00000");
}

TEST_F(SelectedObjects, LayoutMovesThemInWorldXAndY) {
  host::setLayout(true);
  host::add(rig::line({0, 0, 0}, {2, 0, 0}));
  host::add(rig::line({5, 5, 5}, {6, 6, 6}));
  host::add(rig::line({7, 7, 7}, {8, 8, 8}));
  host::selectAll();
  host::setCannotBeOpened(host::entityId(2));
  lookDown(); // whatever the 3D view shows
  proxy().setRotMode(113);
  calls::startRecording();
  EXPECT_TRUE(pass(1000, -2000, 3000, 4000, 5000, 6000));
  const Lines all = calls::stopRecording();
  EXPECT_EQ(text(start(1)), "0.05000 -0.10000 0.00000");
  EXPECT_EQ(text(start(2)), "5.00000 5.00000 5.00000");
  EXPECT_EQ(text(end(3)), "8.05000 7.90000 8.00000");
  EXPECT_EQ(
      (Lines{std::find(all.begin(), all.end(), "acedSSName 0"), all.end()}),
      (Lines{"acedSSName 0", "acdbGetObjectId", "acdbOpenObject write", "transformBy", "close",
             "acedRedraw 1", "acedSSName 1", "acdbGetObjectId", "acdbOpenObject write", // nothing to redraw
             "acedSSName 2", "acdbGetObjectId", "acdbOpenObject write", "transformBy", "close",
             "acedRedraw 1", "acedSSFree"}));
  // Neither pan nor zoom, not even for the third value.
  EXPECT_EQ(host::layout().centre.x, 0);
  EXPECT_EQ(host::layout().viewHeight, 100);
  EXPECT_EQ(host::held().locks, 1);
  EXPECT_EQ(takeRecords(), Lines{"INF Cap moving."});
  EXPECT_TRUE(pass(1000, 0, 0));
  EXPECT_EQ(host::held().locks, 1);
  release();
  EXPECT_EQ(takeRecords(), (Lines{"TRC Document unlocked", "TRC Cap released."}));
}

TEST_F(SelectedObjects, ThrowInTheMiddleLeavesNothingHeldAndMovesTheView) {
  host::add(rig::line({10, 0, 0}, {12, 0, 0}));
  host::add(rig::line({20, 0, 0}, {22, 0, 0}));
  host::selectAll();
  calls::throwAt("transformBy", 2);
  EXPECT_TRUE(pass(10, 0, 0));
  calls::clear();
  EXPECT_EQ(text(start(1)), "15.00000 0.00000 0.00000") << "what has moved stays moved";
  EXPECT_EQ(text(start(2)), "20.00000 0.00000 0.00000");
  EXPECT_EQ(host::held().selectionSets + host::held().openForWrite, 0);
  EXPECT_EQ(host::held().locks, 1);
  EXPECT_EQ(host::viewCounts().setViews, 1);
  EXPECT_EQ(takeRecords(), (Lines{"TMP selCenterPoint: 16, 0, 0", "ERR Error transformSelection()",
                                  "INF Move x-Direction, value: 0.0005", "INF Cap moving."}));
}

TEST_F(SelectedObjects, NoFaultOfTheHostOutlivesTheMovement) {
  for (const bool isLayout : {false, true}) {
    SCOPED_TRACE(isLayout ? "layout" : "model");
    const auto prepare = [&] {
      host::reset();
      host::setLayout(isLayout);
      proxy().mIsDocLocked = false;
      proxy().mCapIsMoving = false;
      lookFromAbove();
      host::add(rig::line({10, 0, 0}, {12, 0, 0}));
      host::add(rig::line({20, 0, 0}, {22, 0, 0}));
      host::selectAll();
    };
    const std::set<std::string> struck = rig::forEachFault(
        prepare, [&] { rig::guarded([&] { pass(10, 20, 0, 0, 0, 30); }); },
        [&](const std::string& operation, bool isThrow) {
          const host::Held held = host::held();
          EXPECT_EQ(held.selectionSets, operation == "acedSSFree" && !isThrow ? 1 : 0);
          EXPECT_EQ(held.openForRead + held.openForWrite, operation == "close" && !isThrow ? 1 : 0);
          release();
          EXPECT_EQ(host::held().locks, 0);
          EXPECT_FALSE(proxy().mIsDocLocked || proxy().mCapIsMoving);
          if (operation == "close" && !isThrow)
            return;        // the host has an object of its own open, which nobody can move
          lookFromAbove(); // the view may have moved in their place
          const AcGePoint3d before = start(2);
          EXPECT_TRUE(pass(40, 0, 0));
          EXPECT_EQ(text(start(2)), text(before + AcGeVector3d(isLayout ? 0.002 : 20, 0, 0)));
          release();
          EXPECT_EQ(host::held().locks, 0);
        });
    ASSERT_FALSE(HasFailure());
    for (const char* const operation :
         {"acedSSGet", "acedSSLength", "acedSSName", "acdbGetObjectId", "acdbOpenObject", "transformBy",
          "close", "acedSSFree", "lockDocument", "curDocument", "acDocManagerPtr"})
      EXPECT_EQ(struck.count(operation), 1u) << operation;
    EXPECT_EQ(struck.count("acedRedraw"), isLayout ? 1u : 0u);
    EXPECT_EQ(struck.count("getGeomExtents"), isLayout ? 0u : 1u);
  }
  host::reset();
}

TEST_F(SelectedObjects, NoObjectGetsANumberThatIsNone) {
  const double inf = std::numeric_limits<double>::infinity();
  const double nan = std::numeric_limits<double>::quiet_NaN();
  selectLine({0, 0, 0}, {2, 0, 0});
  for (const host::ViewState& state : {rig::viewFrom({nan, 0, 100}, {0, 0, 0}, {0, 1, 0}),
                                       rig::viewFrom({0, 0, 100}, {0, inf, 0}, {0, 1, 0}),
                                       rig::viewFrom({0, 0, 100}, {0, 0, 0}, {0, 0, nan})}) {
    host::setView(state);
    EXPECT_TRUE(pass(100, 100, 100, 100, 100, 100));
    release();
  }
  lookFromAbove();
  // Middles whose sum no number holds.
  host::add(rig::line({1.5e308, 0, 0}, {1.5e308, 1, 0}));
  host::add(rig::line({1.5e308, 0, 0}, {1.5e308, 1, 0}));
  host::selectAll();
  EXPECT_TRUE(pass(0, 0, 0, 100, 100, 100));
  EXPECT_TRUE(std::isfinite(start(1).x)) << text(start(1));
}

TEST_F(SelectedObjects, HundredThousandOfThem) {
  constexpr int kCount = 100000;
  for (int i = 0; i < kCount; ++i)
    host::add(rig::line({i * 1.0, 0, 0}, {i * 1.0, 1, 0}));
  host::selectAll();
  EXPECT_TRUE(pass(0, 10, 0));
  for (const int number : {1, kCount / 2, kCount})
    EXPECT_EQ(text(start(number)), text(AcGePoint3d(number - 1, 5, 0)));
  release();
  host::setLayout(true);
  EXPECT_TRUE(pass(0, 20000, 0));
  for (const int number : {1, kCount / 2, kCount})
    EXPECT_EQ(text(start(number)), text(AcGePoint3d(number - 1, 6, 0)));
}

// ---- what the selection gives the views ----

TEST_F(SelectedObjects, FrameIsTheViewsOwn) {
  host::setView(rig::viewFrom({0, 0, 100}, {0, 0, 0}, {0, 3, 4}));
  AcGsView* view = nullptr;
  std::int32_t viewport = 0;
  proxy().retrieveViewParams(view, viewport);
  ASSERT_NE(view, nullptr);
  AcGeVector3d x, y, z;
  EXPECT_TRUE(proxy().calcScreenAxesRelativeToObject(view, x, y, z));
  EXPECT_EQ(text(x), "-1.00000 0.00000 0.00000") << "to the left of the picture";
  EXPECT_EQ(text(y), "0.00000 0.60000 0.80000") << "as it is, upright to the line of sight or not";
  EXPECT_EQ(text(z), "0.00000 0.00000 1.00000");
  calls::throwAt("upVector", 1);
  EXPECT_FALSE(proxy().calcScreenAxesRelativeToObject(view, x, y, z));
  calls::clear();
  EXPECT_EQ(takeRecords(), Lines{"ERR Error calcScreenAxesRelativeToObject()"});
}

TEST_F(SelectedObjects, AxisIsThatOfOneLine) {
  host::add(rig::line({1, 2, 3}, {1, 6, 6}));
  host::add(rig::line({5, 5, 5}, {5, 5, 5})); // no length, no direction
  host::add(std::make_unique<AcDbCircle>(AcGePoint3d(4, 5, 6), AcGeVector3d(0, 0, 1), 2.0));
  host::add(std::make_unique<AcDbPolyline>(std::vector<AcDbPolyline::Vertex>{{0, 0, 0}, {3, 0, 0}}, false));
  struct Case {
    std::vector<int> selected;
    bool isAxis;
  };
  for (const Case& c : {Case{{1}, true}, Case{{}, false}, Case{{1, 2}, false}, Case{{1}, true},
                        Case{{2}, false}, Case{{3}, false}, Case{{4}, false}}) {
    SCOPED_TRACE(testing::PrintToString(c.selected));
    host::selectNumbers(c.selected);
    AcGeVector3d axis(7, 7, 7);
    AcGePoint3d point(8, 8, 8);
    EXPECT_EQ(proxy().getSelObjectAxis(axis, point), c.isAxis);
    EXPECT_EQ(motion::selAxisValid, c.isAxis);
    EXPECT_EQ(text(axis, 1), c.isAxis ? "0.0 0.8 0.6" : "7.0 7.0 7.0");
    EXPECT_EQ(text(point, 1), c.isAxis ? "1.0 2.0 3.0" : "8.0 8.0 8.0");
    EXPECT_EQ(host::held().selectionSets, 0);
    // While the cap moves the answer stands, and nobody is asked.
    proxy().mCapIsMoving = true;
    host::selectNumbers({c.isAxis ? 3 : 1});
    calls::startRecording();
    EXPECT_EQ(proxy().getSelObjectAxis(axis, point), c.isAxis);
    EXPECT_EQ(calls::stopRecording(), Lines{});
    proxy().mCapIsMoving = false;
  }
}

TEST_F(SelectedObjects, AxisThatTheHostRefuses) {
  host::add(rig::line({1, 2, 3}, {1, 6, 6}));
  host::selectNumbers({1});
  AcGeVector3d axis;
  AcGePoint3d point;
  for (const char* const operation :
       {"acedSSGet", "acedSSLength", "acedSSName", "acdbGetObjectId", "acdbOpenObject"}) {
    motion::selAxisValid = true;
    calls::failAt(operation, 1);
    EXPECT_FALSE(proxy().getSelObjectAxis(axis, point)) << operation;
    EXPECT_FALSE(motion::selAxisValid) << operation;
    calls::clear();
  }
  EXPECT_EQ(takeRecords(), Lines{});
  // A throw before the object is open leaves the flag alone.
  motion::selAxisValid = true;
  for (const char* const operation : {"acedSSName", "acdbOpenObject"}) {
    calls::throwAt(operation, 1);
    EXPECT_FALSE(proxy().getSelObjectAxis(axis, point));
    EXPECT_TRUE(motion::selAxisValid) << operation;
  }
  calls::throwAt("getEndPoint", 1);
  EXPECT_FALSE(proxy().getSelObjectAxis(axis, point));
  EXPECT_FALSE(motion::selAxisValid);
  EXPECT_EQ(takeRecords(), Lines(3, "ERR Error getSelObjectAxis()"));
  EXPECT_EQ(host::held().selectionSets + host::held().openForRead, 0);
}

TEST_F(SelectedObjects, CentreIsTheMeanOfTheMiddles) {
  host::add(std::make_unique<AcDbCircle>(AcGePoint3d(4, 5, 6), AcGeVector3d(0, 0, 1), 2.0));
  host::add(rig::line({0, 0, 0}, {2, 3, 4}));
  AcGePoint3d centre(9, 9, 9);
  EXPECT_FALSE(proxy().getSelObjectsCenter(nullptr, centre));
  EXPECT_FALSE(motion::selCenterValid);
  host::selectNumbers({1});
  EXPECT_TRUE(proxy().getSelObjectsCenter(nullptr, centre));
  EXPECT_EQ(text(centre, 2), "4.00 5.00 6.00");
  host::selectNumbers({1, 2});
  EXPECT_TRUE(proxy().getSelObjectsCenter(nullptr, centre));
  EXPECT_EQ(text(centre, 2), "2.50 3.25 4.00");
  EXPECT_TRUE(motion::selCenterValid);
  EXPECT_EQ(takeRecords(), (Lines{"TMP selCenterPoint: 4, 5, 6", "TMP selCenterPoint: 2.5, 3.25, 4"}));
  EXPECT_EQ(host::held().selectionSets, 0);

  // While the cap moves, the last answer, unless the caller has a set of his own.
  proxy().mCapIsMoving = true;
  host::selectNumbers({2});
  calls::startRecording();
  EXPECT_TRUE(proxy().getSelObjectsCenter(nullptr, centre));
  EXPECT_EQ(calls::stopRecording(), Lines{});
  EXPECT_EQ(text(centre, 2), "2.50 3.25 4.00");
  ads_name set = {};
  ASSERT_EQ(acedSSGet(L"I", nullptr, nullptr, nullptr, set), RTNORM);
  EXPECT_TRUE(proxy().getSelObjectsCenter(set, centre));
  EXPECT_EQ(text(centre, 2), "1.00 1.50 2.00");
  EXPECT_EQ(host::held().selectionSets, 1) << "the caller's, to be freed by him";
  calls::failAt("acedSSName", 1);
  EXPECT_FALSE(proxy().getSelObjectsCenter(set, centre));
  EXPECT_FALSE(motion::selCenterValid);
  EXPECT_EQ(host::held().selectionSets, 1);
  calls::clear();
  acedSSFree(set);
  proxy().mCapIsMoving = false;
}

TEST_F(SelectedObjects, CentreThatTheHostRefuses) {
  host::add(rig::line({2, 2, 2}, {2, 2, 2}));
  host::add(rig::line({0, 0, 0}, {2, 3, 4}));
  host::selectAll();
  AcGePoint3d centre;
  motion::selCenterValid = true;
  calls::failAt("acedSSName", 2);
  EXPECT_FALSE(proxy().getSelObjectsCenter(nullptr, centre));
  EXPECT_FALSE(motion::selCenterValid);
  EXPECT_EQ(text(centre, 1), "2.0 2.0 2.0") << "what was summed up";
  calls::clear();
  motion::selCenterValid = true;
  calls::failAt("acedSSLength", 1);
  EXPECT_FALSE(proxy().getSelObjectsCenter(nullptr, centre)) << "a set of nothing has no centre";
  calls::clear();
  EXPECT_EQ(takeRecords(), Lines{});
  motion::selCenterValid = true;
  calls::throwAt("getGeomExtents", 2);
  EXPECT_FALSE(proxy().getSelObjectsCenter(nullptr, centre));
  EXPECT_TRUE(motion::selCenterValid);
  calls::clear();
  EXPECT_EQ(takeRecords(), Lines{"ERR Error getSelObjectsCenter()"});
  EXPECT_EQ(host::held().selectionSets + host::held().openForRead, 0);
}

} // namespace
