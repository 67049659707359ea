// Selected objects under the cap, and what the selection gives the motion of views: screen frame, centre and
// axis. The traces and transcripts hold how far things move, and in which order the host is asked.

#include <cmath>
#include <limits>
#include <set>

#include "call_log.h"
#include "engine_rig.h"
#include "motion/movement.h"

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
  static void selectLine(const AcGePoint3d& from, const AcGePoint3d& to) {
    host::add(rig::line(from, to));
    host::selectNumbers({host::entityCount()});
  }
  static void selectTwoLines() {
    host::add(rig::line({10, 0, 0}, {12, 0, 0}));
    host::add(rig::line({20, 0, 0}, {22, 0, 0}));
    host::selectAll();
  }
};

TEST_F(SelectedObjects, OneWithoutExtentsDoesNotCountForTheCentre) {
  selectTwoLines();
  host::setHasNoExtents(host::entityId(1));
  EXPECT_TRUE(pass(0, 0, 0, 0, 0, 500)); // a radian
  EXPECT_EQ(takeRecords(), (Lines{"TMP selCenterPoint: 21, 0, 0", "INF Cap moving."}));
  EXPECT_EQ(text(start(1)), text(AcGePoint3d(21 - 11 * std::cos(1), -11 * std::sin(1), 0)));
  release();
  // No extents at all: about the origin, not about a centre of some time before.
  motion::movement.selCenterPoint = AcGePoint3d(5, 5, 5);
  const AcGePoint3d before = start(1);
  host::selectNumbers({1});
  EXPECT_TRUE(pass(0, 0, 0, 0, 0, 500));
  EXPECT_EQ(text(start(1)), text(AcGePoint3d(before.x * std::cos(1) - before.y * std::sin(1),
                                             before.x * std::sin(1) + before.y * std::cos(1), 0)));
}

TEST_F(SelectedObjects, NameThatCannotBeHadCostsThatObjectOnly) {
  selectTwoLines();
  call_log::failAt("acedSSName", 1); // in the centre, which is then the origin
  EXPECT_TRUE(pass(0, 0, 0, 0, 0, 500));
  EXPECT_EQ(text(start(1)), text(AcGePoint3d(10 * std::cos(1), 10 * std::sin(1), 0)));
  EXPECT_FALSE(motion::movement.selCenterValid);
  call_log::clear();
  const AcGePoint3d first = start(1);
  const AcGePoint3d second = start(2);
  call_log::failAt("acedSSName", 3); // the motion of the first
  EXPECT_TRUE(pass(10, 0, 0));
  call_log::clear();
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
  selectTwoLines();
  call_log::throwAt("transformBy", 2);
  EXPECT_TRUE(pass(10, 0, 0));
  call_log::clear();
  EXPECT_EQ(text(start(1)), "15.00000 0.00000 0.00000") << "what has moved stays moved";
  EXPECT_EQ(text(start(2)), "20.00000 0.00000 0.00000");
  EXPECT_EQ(host::held().selectionSets + host::held().openForWrite, 0);
  EXPECT_EQ(host::held().locks, 1);
  EXPECT_EQ(host::viewCounts().setViews, 1);
  EXPECT_EQ(takeRecords(), (Lines{"TMP selCenterPoint: 16, 0, 0", "ERR Error transformSelection()",
                                  "INF Move x-Direction, value: 0.0005", "INF Cap moving."}));
}

TEST_F(SelectedObjects, UnloadInTheMiddleOfAMovementGivesTheDocumentBack) {
  selectLine({0, 0, 0}, {2, 0, 0});
  EXPECT_TRUE(pass(10, 0, 0));
  EXPECT_EQ(host::held().locks, 1);
  restart();
  EXPECT_EQ(host::held().locks, 0);
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

// The lock of the document is given back whatever fails on the way, and the next movement is whole. That no
// fault reaches the host is shown for whole sessions elsewhere.
TEST_F(SelectedObjects, NoFaultOfTheHostOutlivesTheMovement) {
  std::set<std::string> struck;
  // Objects in the model and on the layout, then the layout itself.
  for (int n = 1, kind = 0; kind < 6; ++n) {
    const bool isThrow = kind % 2 != 0, isLayout = kind >= 2, isObjectMode = kind < 4;
    SCOPED_TRACE(testing::Message() << "call " << n << ", kind " << kind);
    host::reset();
    host::setLayout(isLayout);
    proxy().mObjectMoveMode = isObjectMode;
    proxy().mViewMode = isLayout ? 1 : 2;
    selectLine({10, 0, 0}, {12, 0, 0});
    isThrow ? call_log::throwAny(n) : call_log::failAny(n);
    try {
      pass(2000, -1000, 2000, 0, 0, 30);
    } catch (const call_log::InjectedFault&) { // the tick would catch it
    }
    const std::string operation = call_log::lastFault();
    call_log::clear();
    const host::Held held = host::held();
    EXPECT_EQ(held.selectionSets, operation == "acedSSFree" && !isThrow ? 1 : 0);
    EXPECT_TRUE(held.openForRead + held.openForWrite == 0 || operation == "close") << "the host's own doing";
    release();
    EXPECT_EQ(host::held().locks, 0);
    EXPECT_FALSE(proxy().mIsDocLocked || proxy().mCapIsMoving);
    if (operation != "close") {
      lookFromAbove(); // the view may have moved in the objects' place
      const AcGePoint3d before = start(1);
      EXPECT_TRUE(pass(40, 0, 0));
      EXPECT_NEAR(start(1).x - before.x, !isObjectMode ? 0 : isLayout ? 0.002 : 20, 1e-9);
      release();
      EXPECT_EQ(host::held().locks, 0);
    }
    ASSERT_FALSE(HasFailure()) << operation;
    struck.insert(operation);
    if (operation.empty())
      n = (++kind, 0);
  }
  for (const char* const operation : {"lockDocument", "transformBy", "acedSSFree", "setViewHeight", "close"})
    EXPECT_EQ(struck.count(operation), 1u) << operation;
  host::reset();
}

// ---- what the selection gives the views ----

TEST_F(SelectedObjects, AxisIsThatOfOneLineAndCentreTheMeanOfTheMiddles) {
  host::add(rig::line({1, 2, 3}, {1, 6, 6}));
  host::add(rig::line({5, 5, 5}, {5, 5, 5}));
  host::add(std::make_unique<AcDbPolyline>(std::vector<AcDbPolyline::Vertex>{{0, 0, 0}, {3, 0, 0}}, false));
  AcGeVector3d axis(7, 7, 7);
  AcGePoint3d point(8, 8, 8);
  for (const std::vector<int>& selected : {std::vector<int>{}, {3}}) {
    host::selectNumbers(selected);
    motion::movement.selAxisValid = true;
    EXPECT_FALSE(proxy().getSelObjectAxis(axis, point) || motion::movement.selAxisValid);
    EXPECT_EQ(text(axis, 1) + ", " + text(point, 1), "7.0 7.0 7.0, 8.0 8.0 8.0");
  }
  host::selectNumbers({2}); // a line without a length is an axis, to which no turn has a share
  EXPECT_TRUE(proxy().getSelObjectAxis(axis, point) && motion::movement.selAxisValid);
  EXPECT_EQ(text(axis, 1) + ", " + text(point, 1), "0.0 0.0 0.0, 5.0 5.0 5.0");
  host::selectNumbers({1});
  EXPECT_TRUE(proxy().getSelObjectAxis(axis, point) && motion::movement.selAxisValid);
  EXPECT_EQ(text(axis, 1) + ", " + text(point, 1), "0.0 0.8 0.6, 1.0 2.0 3.0");

  host::selectNumbers({1, 2});
  EXPECT_TRUE(proxy().getSelObjectsCenter(nullptr, point));
  EXPECT_EQ(text(point, 2), "3.00 4.50 4.75");
  // While the cap moves, the last answer, unless the caller has a set of his own.
  proxy().mCapIsMoving = true;
  host::selectNumbers({2});
  EXPECT_TRUE(proxy().getSelObjectsCenter(nullptr, point));
  EXPECT_EQ(text(point, 2), "3.00 4.50 4.75");
  ads_name set = {};
  ASSERT_EQ(acedSSGet(L"I", nullptr, nullptr, nullptr, set), RTNORM);
  EXPECT_TRUE(proxy().getSelObjectsCenter(set, point));
  EXPECT_EQ(text(point, 2), "5.00 5.00 5.00");
  call_log::failAt("acedSSName", 1);
  EXPECT_FALSE(proxy().getSelObjectsCenter(set, point) || motion::movement.selCenterValid);
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
  };
  // A throw before the object is open leaves the flag of the axis alone, and any that of the centre.
  for (const Case& c : {Case{"acedSSGet", false}, Case{"acedSSLength", false}, Case{"acedSSName", false},
                        Case{"acdbGetObjectId", false}, Case{"acdbOpenObject", false},
                        Case{"acedSSName", true}, Case{"acdbOpenObject", true}, Case{"close", true}}) {
    SCOPED_TRACE(c.operation);
    motion::movement.selAxisValid = motion::movement.selCenterValid = true;
    for (const bool isAxis : {true, false}) {
      c.isThrow ? call_log::throwAt(c.operation, 1) : call_log::failAt(c.operation, 1);
      EXPECT_FALSE(isAxis ? proxy().getSelObjectAxis(axis, point)
                          : proxy().getSelObjectsCenter(nullptr, point));
      call_log::clear();
      const std::string record = isAxis ? "ERR Error getSelObjectAxis()" : "ERR Error getSelObjectsCenter()";
      EXPECT_EQ(takeRecords(), c.isThrow ? Lines{record} : Lines{});
    }
    EXPECT_EQ(motion::movement.selAxisValid, c.isThrow);
    EXPECT_EQ(motion::movement.selCenterValid, c.isThrow);
    EXPECT_EQ(host::held().selectionSets + host::held().openForRead, 0);
  }
  motion::movement.selAxisValid = true;
  call_log::throwAt("getEndPoint", 1);
  EXPECT_FALSE(proxy().getSelObjectAxis(axis, point));
  EXPECT_FALSE(motion::movement.selAxisValid);
}

} // namespace
