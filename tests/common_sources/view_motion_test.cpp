// Views moved by samples of the cap, through handleDeviceCap: what the log tells, and what becomes of a
// sample when the host fails. The traces and transcripts hold the rest.

#include <functional>
#include <limits>

#include "call_log.h"
#include "engine_rig.h"

using rig::text;

namespace {

using Lines = std::vector<std::string>;

struct Sample {
  int x = 0, y = 0, z = 0, a = 0, b = 0, c = 0;
};

class ViewMotion : public EngineTest {
protected:
  void look() { host::setView(rig::viewFrom({0, 0, 100}, {0, 0, 0}, {0, 1, 0})); }
  void move(const Sample& s) { EXPECT_TRUE(pass(s.x, s.y, s.z, s.a, s.b, s.c)); }
};

TEST_F(ViewMotion, FailuresDropWhatTheyTouchAndNothingElse) {
  struct Case {
    const char* operation;
    int n; // of its calls
    bool isThrow;
    Lines records;
    int setViews;
    int updates;
  };
  const std::string x = "INF Move x-Direction, value: 0.05", y = "INF Move y-Direction, value: 0.05";
  const std::string z = "INF Move z-Direction, value: 0.05", turn = "DBG Rotate Axis: 0.1(0)";
  const std::string noView = "ERR ViewP could not be retrieved!";
  const std::string inSample = "ERR Error handleCapIsDeflectedIn3DMode()";
  const Case cases[] = {
      {"acedGetVar",
       3,
       false,
       {"ERR System variable 'CVPORT'could not be retrieved! rc = -5001", noView},
       0,
       0},
      {"acgsObtainAcGsView", 1, false, {"ERR AcGsView object could not be retrieved!", noView}, 0, 0},
      {"upVector", 1, true, {"ERR Error calcScreenAxesRelativeToObject()"}, 0, 0},
      {"isPerspective", 1, true, {inSample}, 0, 0},
      {"setView", 1, true, {x, "ERR Error move3D()", y, z, turn}, 2, 1},
      {"zoom", 1, true, {x, y, z, "ERR Error moveXYZ()", turn}, 3, 1},
      {"setView", 3, true, {x, y, z, turn, "ERR Error rotate()"}, 2, 1},
      {"update", 1, true, {x, y, z, turn, inSample}, 3, 0},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.operation);
    look();
    const host::ViewCounts before = host::viewCounts();
    takeRecords();
    if (c.isThrow)
      call_log::throwAt(c.operation, c.n);
    else
      call_log::failAt(c.operation, c.n);
    move({1000, 1000, 1000, 1000});
    call_log::clear();
    Lines expected = c.records;
    expected.push_back("INF Cap moving."); // the deflection counts as one in any case
    EXPECT_EQ(takeRecords(), expected);
    EXPECT_EQ(host::viewCounts().setViews - before.setViews, c.setViews);
    EXPECT_EQ(host::viewCounts().updates - before.updates, c.updates);
    const host::ViewCounts broken = host::viewCounts();
    move({1000});
    EXPECT_EQ(host::viewCounts().setViews - broken.setViews, 1) << "the next sample proceeds normally";
    release();
  }
}

TEST_F(ViewMotion, ReleaseGoesIdleWhateverTheHostDoes) {
  const std::string inRelease = "ERR Error handleCapIsReleased()";
  const std::pair<std::function<void()>, Lines> cases[] = {
      {[] { host::setViewValid(false); }, {"ERR viewP not valid!"}},
      {[this, axis = AcGeVector3d(0, 0, 1)]() mutable { // a view that is gone before its turn
         host::setViewValid(false);
         proxy().rotate(nullptr, 0.1, 0, {}, axis, 0, false, false);
       },
       {"DBG Rotate Axis: 0.1(0)", "ERR viewP not valid!"}},
      {[] { call_log::throwAt("isValid", 1); }, {inRelease}},
      {[] { call_log::throwAt("acgsSetViewParameters", 1); }, {inRelease}},
      {[] { call_log::failAt("acgsSetViewParameters", 1); }, {}},
      {[] { call_log::failAt("acgsObtainAcGsView", 1); }, {"ERR AcGsView object could not be retrieved!"}},
  };
  for (const auto& [order, records] : cases) {
    look();
    move({100});
    takeRecords();
    order();
    release();
    call_log::clear();
    host::setViewValid(true);
    Lines expected = records;
    expected.push_back("TRC Cap released.");
    EXPECT_EQ(takeRecords(), expected);
    EXPECT_FALSE(proxy().mCapIsMoving);
  }
  EXPECT_EQ(host::viewCounts().storedViews, 0);
}

TEST_F(ViewMotion, NoViewEverGetsANumberThatIsNone) {
  const double inf = std::numeric_limits<double>::infinity();
  const double nan = std::numeric_limits<double>::quiet_NaN();
  const host::ViewState states[] = {
      rig::viewFrom({0, 0, 100}, {0, 0, 0}, {0, 1, 0}, nan, 10),
      rig::viewFrom({0, 0, 100}, {0, 0, 0}, {0, 1, 0}, inf, inf),
      rig::viewFrom({0, 0, 100}, {0, 0, 0}, {0, 1, 0}, 40, -10),
      rig::viewFrom({0, 0, 100}, {0, 0, 0}, {0, 0, 1}), // up along the line of sight
      rig::viewFrom({0, 0, 0}, {0, 0, 0}, {0, 0, 0}),   // no direction, no up
      rig::viewFrom({1e308, 0, 100}, {-1e308, 0, 0}, {0, 1, 0}, 1e308, 1e308),
      rig::viewFrom({nan, 0, 100}, {0, 0, 0}, {0, 1, 0}),
  };
  for (const host::ViewState& state : states) {
    for (const int code : {0, 2, 13, 104}) {
      host::setView(state);
      proxy().setRotMode(code);
      move({32767, -32768, 100, 32767, -32768, 500});
      release();
    }
  }
  EXPECT_EQ(host::viewCounts().nonFiniteCalls, 0);
  // A field without a size gives a step of zero, and the view is set all the same.
  host::setView(rig::viewFrom({0, 0, 100}, {0, 0, 0}, {0, 1, 0}, 0, 10));
  const auto before = host::viewCounts().setViews;
  proxy().setRotMode(0);
  move({1000});
  EXPECT_EQ(host::viewCounts().setViews, before + 1);
  EXPECT_EQ(text(host::view().position), "0.00000 0.00000 100.00000");
}

} // namespace
