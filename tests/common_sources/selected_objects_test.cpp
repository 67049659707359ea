// Selected objects under the cap, and what the selection gives the motion of views: screen frame, centre and
// axis. The traces and transcripts hold how far things move, and in which order the host is asked.

#include <cmath>
#include <limits>

#include "calls.h"
#include "engine_rig.h"
#include "fault_loop.h"
#include "motion/motion_state.h"

using Lines = std::vector<std::string>;
using rig::text;

namespace {

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

TEST_F(SelectedObjects, WorkedExamples) {
  struct Case {
    int rotCode;
    AcGePoint3d from, to;
    int sample[6];
    const char* end; // of the line
  };
  const AcGePoint3d low(-1, -1, -1), high(1, 1, 1);
  const Case cases[] = {
      // Of the rotation code only the flags count: camera modes turn no sign here.
      {0, {9, 20, 0}, {11, 20, 0}, {10, 20, -4, 0, 0, 100}, "15.98007 30.19867 -2.00000"},
      {3, {9, 20, 0}, {11, 20, 0}, {10, 20, -4, 0, 0, 100}, "15.98007 30.19867 -2.00000"},
      // Hovering drops world Y, also without perspective; a level horizon the third turn.
      {100, {9, 20, 0}, {11, 20, 0}, {10, 20, -4, 0, 0, 100}, "15.98007 20.19867 -2.00000"},
      {10, {9, 20, 0}, {11, 20, 0}, {10, 20, -4, 0, 0, 100}, "16.00000 30.00000 -2.00000"},
      {0, low, high, {0, 0, 0, 100, 0, 0}, "1.00000 0.78140 1.17874"},
      {0, low, high, {0, 0, 0, 0, 100, 0}, "1.17874 1.00000 0.78140"},
      {0, low, high, {0, 0, 0, 0, 0, 100}, "0.78140 1.17874 1.00000"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.end);
    proxy().setRotMode(c.rotCode);
    selectLine(c.from, c.to);
    EXPECT_TRUE(pass(c.sample[0], c.sample[1], c.sample[2], c.sample[3], c.sample[4], c.sample[5]));
    EXPECT_EQ(text(end(host::entityCount())), c.end);
    release();
  }
  EXPECT_EQ(host::viewCounts().setViews, 0);
  EXPECT_EQ(host::viewCounts().updates, 7) << "the picture is shown anew, once for each sample";
}

TEST_F(SelectedObjects, OneWithoutExtentsDoesNotCountForTheCentre) {
  host::add(rig::line({10, 0, 0}, {12, 0, 0}));
  host::add(rig::line({30, 0, 0}, {32, 0, 0}));
  host::selectAll();
  host::setHasNoExtents(host::entityId(1));
  EXPECT_TRUE(pass(0, 0, 0, 0, 0, 500)); // a radian
  EXPECT_EQ(takeRecords(), (Lines{"TMP selCenterPoint: 31, 0, 0", "INF Cap moving."}));
  EXPECT_EQ(text(start(1)), text(AcGePoint3d(31 - 21 * std::cos(1), -21 * std::sin(1), 0)));
  release();
  // No extents at all: about the origin, not about a centre of some time before.
  motion::selCenterPoint = AcGePoint3d(5, 5, 5);
  const AcGePoint3d before = start(1);
  host::selectNumbers({1});
  EXPECT_TRUE(pass(0, 0, 0, 0, 0, 500));
  EXPECT_EQ(text(start(1)), text(AcGePoint3d(before.x * std::cos(1) - before.y * std::sin(1),
                                             before.x * std::sin(1) + before.y * std::cos(1), 0)));
}

TEST_F(SelectedObjects, NameThatCannotBeHadCostsThatObjectOnly) {
  host::add(rig::line({10, 0, 0}, {12, 0, 0}));
  host::add(rig::line({20, 0, 0}, {22, 0, 0}));
  host::selectAll();
  calls::failAt("acedSSName", 1); // in the centre, which is then the origin
  EXPECT_TRUE(pass(0, 0, 0, 0, 0, 500));
  EXPECT_EQ(text(start(1)), text(AcGePoint3d(10 * std::cos(1), 10 * std::sin(1), 0)));
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
  struct Case {
    bool isLayout;
    bool isObjectMode;
    std::set<std::string> operations; // that a fault has to reach
  };
  const std::set<std::string> objectOperations = {"acedSSGet",       "acedSSLength", "acedSSName",
                                                  "acdbGetObjectId", "transformBy",  "acedSSFree"};
  const std::set<std::string> panOperations = {"width", "viewHeight", "setViewCenter", "setViewHeight",
                                               "updateDisplay"};
  for (const Case& c : {Case{false, true, objectOperations}, Case{true, true, objectOperations},
                        Case{true, false, panOperations}}) {
    SCOPED_TRACE(testing::Message() << "layout " << c.isLayout << ", objects " << c.isObjectMode);
    const auto prepare = [&] {
      host::reset();
      host::setLayout(c.isLayout);
      proxy().mObjectMoveMode = c.isObjectMode;
      proxy().mIsDocLocked = false;
      proxy().mCapIsMoving = false;
      proxy().mViewMode = c.isLayout ? 1 : 2;
      lookFromAbove();
      selectLine({10, 0, 0}, {12, 0, 0});
    };
    std::set<std::string> struck = rig::forEachFault(
        prepare, [&] { rig::guarded([&] { pass(2000, -1000, 2000, 0, 0, 30); }); },
        [&](const std::string& operation, bool isThrow) {
          const host::Held held = host::held();
          EXPECT_EQ(held.selectionSets, operation == "acedSSFree" && !isThrow ? 1 : 0);
          const int left = held.openForRead + held.openForWrite;
          EXPECT_TRUE(left == 0 || operation == "close") << "the host's own doing";
          release();
          EXPECT_EQ(host::held().locks, 0);
          EXPECT_FALSE(proxy().mIsDocLocked || proxy().mCapIsMoving);
          if (left != 0)
            return;
          // The next movement is whole.
          lookFromAbove(); // the view may have moved in the objects' place
          const AcGePoint3d before = start(1);
          const double centre = host::layout().centre.x;
          EXPECT_TRUE(pass(40, 0, 0));
          EXPECT_NEAR(start(1).x - before.x, !c.isObjectMode ? 0 : c.isLayout ? 0.002 : 20, 1e-9);
          EXPECT_EQ(host::layout().centre.x != centre, !c.isObjectMode);
          release();
          EXPECT_EQ(host::held().locks, 0);
        });
    ASSERT_FALSE(HasFailure());
    std::set<std::string> expected = c.operations;
    expected.insert({"acdbOpenObject", "close", "lockDocument", "curDocument", "acDocManagerPtr"});
    for (const std::string& operation : expected)
      EXPECT_EQ(struck.count(operation), 1u) << operation;
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

// ---- what the selection gives the views ----

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

TEST_F(SelectedObjects, CentreIsTheMeanOfTheMiddles) {
  host::add(std::make_unique<AcDbCircle>(AcGePoint3d(4, 5, 6), AcGeVector3d(0, 0, 1), 2.0));
  host::add(rig::line({0, 0, 0}, {2, 3, 4}));
  AcGePoint3d centre(9, 9, 9);
  EXPECT_FALSE(proxy().getSelObjectsCenter(nullptr, centre));
  EXPECT_FALSE(motion::selCenterValid);
  host::selectNumbers({1, 2});
  EXPECT_TRUE(proxy().getSelObjectsCenter(nullptr, centre));
  EXPECT_EQ(text(centre, 2), "2.50 3.25 4.00");
  EXPECT_TRUE(motion::selCenterValid);
  EXPECT_EQ(takeRecords(), Lines{"TMP selCenterPoint: 2.5, 3.25, 4"});

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
  calls::failAt("acedSSName", 1);
  EXPECT_FALSE(proxy().getSelObjectsCenter(set, centre));
  EXPECT_FALSE(motion::selCenterValid);
  EXPECT_EQ(host::held().selectionSets, 1) << "the caller's, to be freed by him";
  acedSSFree(set);
  proxy().mCapIsMoving = false;
}

TEST_F(SelectedObjects, AxisAndCentreThatTheHostRefuses) {
  host::add(rig::line({1, 2, 3}, {1, 6, 6}));
  host::selectNumbers({1});
  AcGeVector3d axis;
  AcGePoint3d point;
  struct Case {
    const char* operation;
    bool isThrow;
    bool axisStays, centreStays; // valid, if it was so before
  };
  // A throw before the object is open leaves the flag of the axis alone, and any that of the centre.
  const Case cases[] = {{"acedSSGet", false, false, false},      {"acedSSLength", false, false, false},
                        {"acedSSName", false, false, false},     {"acdbGetObjectId", false, false, false},
                        {"acdbOpenObject", false, false, false}, {"acedSSName", true, true, true},
                        {"acdbOpenObject", true, true, true},    {"close", true, true, true}};
  for (const Case& c : cases) {
    SCOPED_TRACE(c.operation);
    const auto order = [&c] { c.isThrow ? calls::throwAt(c.operation, 1) : calls::failAt(c.operation, 1); };
    motion::selAxisValid = motion::selCenterValid = true;
    order();
    EXPECT_FALSE(proxy().getSelObjectAxis(axis, point));
    EXPECT_EQ(motion::selAxisValid, c.axisStays);
    calls::clear();
    EXPECT_EQ(takeRecords(), c.isThrow ? Lines{"ERR Error getSelObjectAxis()"} : Lines{});
    order();
    EXPECT_FALSE(proxy().getSelObjectsCenter(nullptr, point));
    EXPECT_EQ(motion::selCenterValid, c.centreStays);
    calls::clear();
    EXPECT_EQ(takeRecords(), c.isThrow ? Lines{"ERR Error getSelObjectsCenter()"} : Lines{});
    EXPECT_EQ(host::held().selectionSets + host::held().openForRead, 0);
  }
  motion::selAxisValid = true;
  calls::throwAt("getEndPoint", 1);
  EXPECT_FALSE(proxy().getSelObjectAxis(axis, point));
  EXPECT_FALSE(motion::selAxisValid);
}

} // namespace
