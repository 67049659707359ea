// Views moved by samples of the cap, through handleDeviceCap: what the host's view holds afterwards, what the
// host was asked for and in which order, and what becomes of a sample when the host fails.

#include <limits>

#include "calls.h"
#include "engine_rig.h"

using rig::text;

namespace {

struct Sample {
  int x, y, z, a, b, c;
};

class ViewMotion : public EngineTest {
protected:
  void look(bool isPerspective = false) {
    host::setView(rig::viewFrom({0, 0, 100}, {0, 0, 0}, {0, 1, 0}, 40, 10, isPerspective));
  }
  void move(const Sample& s) { EXPECT_TRUE(pass(s.x, s.y, s.z, s.a, s.b, s.c)); }
};

TEST_F(ViewMotion, TranslationMovesEyeAndTargetByTheSizeOfTheView) {
  struct Case {
    int rotCode;
    bool isPerspective;
    Sample sample;
    const char* eye;
    const char* target;
    double width;
  };
  const Case cases[] = {
      {0, false, {1000, 0, 0, 0, 0, 0}, "-5.00000 0.00000 100.00000", "-5.00000 0.00000 0.00000", 40},
      {0, false, {0, -2000, 0, 0, 0, 0}, "0.00000 10.00000 100.00000", "0.00000 10.00000 0.00000", 40},
      {2, false, {1000, 0, 0, 0, 0, 0}, "5.00000 0.00000 100.00000", "5.00000 0.00000 0.00000", 40},
      {3, true, {0, 1000, 0, 0, 0, 0}, "0.00000 5.00000 100.00000", "0.00000 5.00000 0.00000", 40},
      {0, false, {0, 0, 1000, 0, 0, 0}, "0.00000 0.00000 100.00000", "0.00000 0.00000 0.00000", 40 / 1.05},
      {0, false, {0, 0, 8000, 0, 0, 0}, "0.00000 0.00000 100.00000", "0.00000 0.00000 0.00000", 40 / 1.2},
      {0, true, {0, 0, -1000, 0, 0, 0}, "0.00000 0.00000 100.00000", "0.00000 0.00000 0.00000", 40 / 0.95},
      {0, false, {0, 0, -8000, 0, 0, 0}, "0.00000 0.00000 100.00000", "0.00000 0.00000 0.00000", 40 / 0.8},
      {2, false, {0, 0, 1000, 0, 0, 0}, "0.00000 0.00000 100.00000", "0.00000 0.00000 0.00000", 40 / 0.95},
      // Hovering: straight down the line of sight has no part in world X and Y. In parallel projection it
      // zooms.
      {4, true, {0, 0, 1000, 0, 0, 0}, "0.00000 0.00000 100.00000", "0.00000 0.00000 0.00000", 40},
      {4, false, {0, 0, 1000, 0, 0, 0}, "0.00000 0.00000 100.00000", "0.00000 0.00000 0.00000", 40 / 0.95},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(testing::Message() << "code " << c.rotCode << " sample " << c.sample.x << " " << c.sample.y
                                    << " " << c.sample.z << (c.isPerspective ? " perspective" : ""));
    look(c.isPerspective);
    proxy().setRotMode(c.rotCode);
    move(c.sample);
    EXPECT_EQ(text(host::view().position), c.eye);
    EXPECT_EQ(text(host::view().target), c.target);
    EXPECT_NEAR(host::view().fieldWidth, c.width, 1e-9);
    EXPECT_EQ(host::view().perspective, c.isPerspective);
    release();
  }
}

TEST_F(ViewMotion, HoveringInPerspectiveKeepsTheEyesHeightOnAllAxes) {
  // Looking down at 45 degrees along world Y.
  const AcGeVector3d up(0, std::sqrt(0.5), std::sqrt(0.5));
  for (const Sample& s : {Sample{0, 1000, 0, 0, 0, 0}, Sample{0, 0, 1000, 0, 0, 0}}) {
    host::setView(rig::viewFrom({0, -100, 100}, {0, 0, 0}, up, 40, 10, true));
    proxy().setRotMode(104);
    move(s);
    EXPECT_NEAR(host::view().position.z, 100, 1e-12);
    EXPECT_NEAR(host::view().target.z, 0, 1e-12);
    // "camhover": the camera follows the cap, up and back; the step isn't made longer for what was dropped.
    const double expected = s.y != 0 ? 5 * std::sqrt(0.5) : -5 * std::sqrt(0.5);
    EXPECT_NEAR(host::view().position.y, -100 + expected, 1e-9);
    release();
  }
  // Without hover the same sample climbs.
  host::setView(rig::viewFrom({0, -100, 100}, {0, 0, 0}, up, 40, 10, true));
  proxy().setRotMode(2);
  move({0, 1000, 0, 0, 0, 0});
  EXPECT_NEAR(host::view().position.z, 100 + 5 * std::sqrt(0.5), 1e-9);
}

TEST_F(ViewMotion, RotationTurnsAboutTheModesCentre) {
  struct Case {
    int rotCode;
    bool isPerspective;
    Sample sample;
    const char* eye;
    const char* target;
    const char* up;
  };
  const Case cases[] = {
      {0,
       false,
       {0, 0, 0, 1000, 0, 0},
       "0.00000 9.98334 99.50042",
       "0.00000 0.00000 0.00000",
       "0.00000 0.99500 -0.09983"},
      {0,
       false,
       {0, 0, 0, 0, 1000, 0},
       "-9.98334 0.00000 99.50042",
       "0.00000 0.00000 0.00000",
       "0.00000 1.00000 0.00000"},
      {0,
       false,
       {0, 0, 0, 0, 0, 1000},
       "0.00000 0.00000 100.00000",
       "0.00000 0.00000 0.00000",
       "0.09983 0.99500 0.00000"},
      {2,
       true,
       {0, 0, 0, 1000, 0, 0},
       "0.00000 0.00000 100.00000",
       "0.00000 9.98334 0.49958",
       "0.00000 0.99500 0.09983"},
      {2,
       true,
       {0, 0, 0, 0, 1000, 0},
       "0.00000 0.00000 100.00000",
       "-9.98334 0.00000 0.49958",
       "0.00000 1.00000 0.00000"},
      {3,
       true,
       {0, 0, 0, 1000, 0, 0},
       "0.00000 -9.98334 99.50042",
       "0.00000 0.00000 0.00000",
       "0.00000 0.99500 0.09983"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(testing::Message() << "code " << c.rotCode << " sample " << c.sample.a << " " << c.sample.b
                                    << " " << c.sample.c);
    look(c.isPerspective);
    proxy().setRotMode(c.rotCode);
    move(c.sample);
    EXPECT_EQ(text(host::view().position), c.eye);
    EXPECT_EQ(text(host::view().target), c.target);
    EXPECT_EQ(text(host::view().up), c.up);
    release();
  }
  // The world's origin serves "objorigin" always and "camstandard" in parallel projection.
  for (const int code : {1, 2}) {
    host::setView(rig::viewFrom({10, 0, 100}, {10, 0, 0}, {0, 1, 0}));
    proxy().setRotMode(code);
    move({0, 0, 0, 0, 0, 1000});
    EXPECT_NEAR(host::view().target.x, 10 * std::cos(0.1), 1e-9) << code;
    EXPECT_NEAR(host::view().target.y, (code == 1 ? -10 : 10) * std::sin(0.1), 1e-9) << code;
    release();
  }
}

TEST_F(ViewMotion, TranslationComesFirstAndMovesTheCentre) {
  look();
  calls::startRecording();
  move({1000, 0, 0, 1000, 0, 0});
  EXPECT_EQ(text(host::view().position), "-5.00000 9.98334 99.50042");
  EXPECT_EQ(text(host::view().target), "-5.00000 0.00000 0.00000");
  EXPECT_EQ(text(host::view().up), "0.00000 0.99500 -0.09983");
  EXPECT_EQ(host::viewCounts().updates, 1);
  EXPECT_EQ(takeRecords(), (std::vector<std::string>{"INF Move x-Direction, value: 0.05",
                                                     "DBG Rotate Axis: 0.1(0)", "INF Cap moving."}));
}

TEST_F(ViewMotion, AxesOfARotationStayThoseOfTheSamplesStart) {
  look();
  move({0, 0, 0, 3000, 2000, 1000});
  // The same three turns, by the rule for one turn, about the axes before the first.
  AcGePoint3d eye(0, 0, 100);
  AcGeVector3d up(0, 1, 0);
  const std::pair<double, AcGeVector3d> turns[] = {{0.3, {-1, 0, 0}}, {-0.2, {0, 1, 0}}, {-0.1, {0, 0, 1}}};
  for (const auto& [angle, axis] : turns) {
    const auto turn = [angle = angle, axis = axis](const AcGeVector3d& v) {
      return v * std::cos(angle) + axis.crossProduct(v) * std::sin(angle) +
             axis * (axis.dotProduct(v) * (1 - std::cos(angle)));
    };
    eye = AcGePoint3d(0, 0, 0) + turn(eye - AcGePoint3d(0, 0, 0));
    up = turn(up);
  }
  EXPECT_EQ(text(host::view().position, 9), text(eye, 9));
  EXPECT_EQ(text(host::view().up, 9), text(up, 9));
}

TEST_F(ViewMotion, KeepHorizonTurnsAboutWorldZAndDropsTheRoll) {
  const AcGeVector3d up(0, std::sqrt(0.5), std::sqrt(0.5));
  host::setView(rig::viewFrom({0, -100, 100}, {0, 0, 0}, up));
  proxy().setRotMode(10);
  move({0, 0, 0, 0, 1000, 500});
  EXPECT_NEAR(host::view().position.x, -100 * std::sin(0.1), 1e-9);
  EXPECT_NEAR(host::view().position.y, -100 * std::cos(0.1), 1e-9);
  EXPECT_NEAR(host::view().position.z, 100, 1e-9);
  EXPECT_EQ(takeRecords(), (std::vector<std::string>{"DBG Rotate Axis: -0.1(1)", "INF Cap moving."}));
  release();
  // Upside down the sense is reversed, so that the picture turns as before.
  host::setView(rig::viewFrom({0, -100, 100}, {0, 0, 0}, up * -1));
  move({0, 0, 0, 0, 1000, 0});
  EXPECT_NEAR(host::view().position.x, 100 * std::sin(0.1), 1e-9);
  EXPECT_NEAR(host::view().up.z, -std::sqrt(0.5), 1e-9);
}

TEST_F(ViewMotion, SelectionGivesTheCentreInEveryModeUnlessItsToggleIsOff) {
  host::add(rig::line({10, 20, 0}, {30, 20, 0})); // middle (20, 20, 0)
  host::add(rig::line({0, 0, 0}, {0, 10, 0}));    // middle (0, 5, 0): mean (10, 12.5, 0)
  host::selectNumbers({1, 2});
  for (const int code : {0, 1, 2, 3}) {
    look();
    proxy().setRotMode(code);
    move({0, 0, 0, 0, 0, 1000});
    // The centre stays where it is: the target's distance from it too, and it has turned by 0.1.
    const double sign = code < 2 ? -1 : 1;
    const double angle = sign * 0.1;
    EXPECT_NEAR(host::view().target.x, 10 - 10 * std::cos(angle) + 12.5 * std::sin(angle), 1e-9) << code;
    EXPECT_NEAR(host::view().target.y, 12.5 - 10 * std::sin(angle) - 12.5 * std::cos(angle), 1e-9) << code;
    release();
  }
  plugin().mToggleRotationCenter = false;
  look();
  proxy().setRotMode(0);
  calls::startRecording();
  move({0, 0, 0, 0, 0, 1000});
  EXPECT_EQ(text(host::view().target), "0.00000 0.00000 0.00000");
  for (const std::string& call : calls::recorded())
    EXPECT_NE(call.substr(0, 9), "acedSSGet");
}

TEST_F(ViewMotion, SelectedLineTakesItsShareOfEachValue) {
  plugin().mToggleRotationAxis = true;
  host::add(rig::line({1, 2, 3}, {4, 2, 7})); // direction (0.6, 0, 0.8)
  host::selectNumbers({1});
  look();
  move({0, 0, 0, 7, 50, 5});
  EXPECT_EQ(takeRecords(), (std::vector<std::string>{"DBG Rotate Axis: -0.0004(0)",
                                                     "DBG Rotate Axis: -0.0004(2)", "INF Cap moving."}));
  release();
  // About the line through its start: a view from there keeps its place.
  host::setView(rig::viewFrom({1, 2, 3}, {1, 2, -97}, {0, 1, 0}));
  move({0, 0, 0, 0, 0, 1000});
  EXPECT_EQ(text(host::view().position), "1.00000 2.00000 3.00000");
  EXPECT_NE(text(host::view().target), "1.00000 2.00000 -97.00000");
  release();
  // Reversed, the same cap turns the same way: share and axis both change their sign.
  const host::ViewState before = host::view();
  move({0, 0, 0, 100, 0, 900});
  const host::ViewState forwards = host::view();
  release();
  host::setView(before);
  host::add(rig::line({4, 2, 7}, {1, 2, 3}));
  host::selectNumbers({2});
  move({0, 0, 0, 100, 0, 900});
  EXPECT_EQ(text(host::view().target, 9), text(forwards.target, 9));
  EXPECT_EQ(text(host::view().up, 9), text(forwards.up, 9));
}

TEST_F(ViewMotion, LineUprightToTheSamplesAxesTurnsNothing) {
  plugin().mToggleRotationAxis = true;
  host::add(rig::line({0, 0, 0}, {0, 0, 5}));
  host::selectNumbers({1});
  look();
  move({0, 0, 0, 500, 900, 0});
  EXPECT_EQ(host::viewCounts().setViews, 0);
  EXPECT_EQ(host::viewCounts().updates, 1);
}

TEST_F(ViewMotion, KeepHorizonOverridesTheSelectedLineForTheSecondValue) {
  plugin().mToggleRotationAxis = true;
  host::add(rig::line({5, 0, 0}, {5, 3, -4})); // direction (0, 0.6, -0.8): leans down
  host::selectNumbers({1});
  look();
  proxy().setRotMode(10);
  move({0, 0, 0, 0, 1000, 1000});
  // Share of B is 600, so -0.06, negated since the line leans down; C is dropped; world Z through (5, 0, 0).
  EXPECT_NEAR(host::view().target.x, 5 - 5 * std::cos(0.06), 1e-9);
  EXPECT_NEAR(host::view().target.y, -5 * std::sin(0.06), 1e-9);
}

TEST_F(ViewMotion, SelectionIsReadOncePerDeflection) {
  host::add(rig::line({10, 0, 0}, {10, 0, 0}));
  host::add(rig::line({50, 0, 0}, {50, 0, 0}));
  look();
  host::selectNumbers({1});
  move({0, 0, 0, 0, 0, 100});
  host::selectNumbers({2});
  calls::startRecording();
  move({0, 0, 0, 0, 0, 100});
  for (const std::string& call : calls::stopRecording())
    EXPECT_NE(call.substr(0, 6), "acedSS") << call;
  const double distance = (host::view().target - AcGePoint3d(10, 0, 0)).length();
  EXPECT_NEAR(distance, 10, 1e-9) << "still about the first object";
  release();
  look();
  move({0, 0, 0, 0, 0, 100});
  EXPECT_NEAR((host::view().target - AcGePoint3d(50, 0, 0)).length(), 50, 1e-9);
}

TEST_F(ViewMotion, FirstRotationBehindATranslationUsesTheDeflectionBefore) {
  host::add(rig::line({10, 0, 0}, {10, 0, 0}));
  look();
  host::selectNumbers({1});
  move({0, 0, 0, 0, 0, 100}); // valid from here on
  release();
  host::selectNumbers({});
  look();
  move({100, 0, 0, 0, 0, 0});
  look();
  move({0, 0, 0, 0, 0, 1000});
  EXPECT_NEAR((host::view().target - AcGePoint3d(10, 0, 0)).length(), 10, 1e-9);
  EXPECT_NEAR(host::view().target.y, 10 * std::sin(0.1), 1e-9);
}

// ---- order of calls, release, failures ----

TEST_F(ViewMotion, OneSampleAsksTheHostInThisOrder) {
  plugin().mScrollTreeAndList = false;
  look();
  calls::startRecording();
  move({1000, 0, 1000, 1000, 0, 0});
  const std::vector<std::string> expected = {"acedGetVar tilemode",
                                             "acedGetVar cvport", // mode
                                             "acedGetVar CVPORT",
                                             "acgsObtainAcGsView 2",
                                             "position",
                                             "target",
                                             "upVector",
                                             "isPerspective", // frame
                                             "position",
                                             "target",
                                             "fieldWidth",
                                             "fieldHeight",
                                             "upVector",
                                             "setView", // along x
                                             "zoom 1.05",
                                             "acedSSGet I",
                                             "target", // no selection: the view's target
                                             "position",
                                             "target",
                                             "upVector",
                                             "fieldHeight",
                                             "fieldWidth",
                                             "setView",
                                             "update"};
  EXPECT_EQ(calls::stopRecording(), expected);
  calls::startRecording();
  release();
  EXPECT_EQ(calls::stopRecording(),
            (std::vector<std::string>{"acedGetVar tilemode", "acedGetVar cvport", "acedGetVar CVPORT",
                                      "acgsObtainAcGsView 2", "isValid", "acgsSetViewParameters 2 1 1 0"}));
  EXPECT_EQ(text(host::storedView().position), text(host::view().position));
  calls::startRecording();
  release();
  EXPECT_EQ(calls::stopRecording(), (std::vector<std::string>{"acedGetVar tilemode", "acedGetVar cvport"}));
}

TEST_F(ViewMotion, DrawingTakesTheViewOverAtReleaseOnly) {
  look();
  host::setStoredView(host::view());
  for (int i = 0; i < 5; ++i)
    move({100, 0, 0, 0, 50, 0});
  EXPECT_EQ(text(host::storedView().position), "0.00000 0.00000 100.00000");
  takeRecords();
  release();
  EXPECT_EQ(text(host::storedView().position, 9), text(host::view().position, 9));
  EXPECT_EQ(takeRecords(), (std::vector<std::string>{"TRC Cap released."}));
  release();
  EXPECT_EQ(host::viewCounts().storedViews, 1);
  EXPECT_EQ(takeRecords(), (std::vector<std::string>{}));
}

TEST_F(ViewMotion, FailuresDropWhatTheyTouchAndNothingElse) {
  struct Case {
    const char* what;
    std::function<void()> order;
    std::vector<std::string> records;
    int setViews;
    int updates;
  };
  const Case cases[] = {
      {"no CVPORT",
       [] { calls::failAt("acedGetVar", 3); },
       {"ERR System variable 'CVPORT'could not be retrieved! rc = -5001",
        "ERR ViewP could not be retrieved!"},
       0,
       0},
      {"no view",
       [] { calls::failAt("acgsObtainAcGsView", 1); },
       {"ERR AcGsView object could not be retrieved!", "ERR ViewP could not be retrieved!"},
       0,
       0},
      {"no frame",
       [] { calls::throwAt("upVector", 1); },
       {"ERR Error calcScreenAxesRelativeToObject()"},
       0,
       0},
      {"projection throws",
       [] { calls::throwAt("isPerspective", 1); },
       {"ERR Error handleCapIsDeflectedIn3DMode()"},
       0,
       0},
      {"move throws",
       [] { calls::throwAt("setView", 1); },
       {"INF Move x-Direction, value: 0.05", "ERR Error move3D()", "INF Move y-Direction, value: 0.05",
        "DBG Rotate Axis: 0.1(0)"},
       2,
       1},
      {"zoom throws",
       [] { calls::throwAt("zoom", 1); },
       {"INF Move x-Direction, value: 0.05", "INF Move y-Direction, value: 0.05",
        "INF Move z-Direction, value: 0.05", "ERR Error moveXYZ()", "DBG Rotate Axis: 0.1(0)"},
       3,
       1},
      {"rotation throws",
       [] { calls::throwAt("setView", 3); },
       {"INF Move x-Direction, value: 0.05", "INF Move y-Direction, value: 0.05", "DBG Rotate Axis: 0.1(0)",
        "ERR Error rotate()"},
       2,
       1},
      {"update throws",
       [] { calls::throwAt("update", 1); },
       {"INF Move x-Direction, value: 0.05", "INF Move y-Direction, value: 0.05", "DBG Rotate Axis: 0.1(0)",
        "ERR Error handleCapIsDeflectedIn3DMode()"},
       3,
       0},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    look();
    const host::ViewCounts before = host::viewCounts();
    takeRecords();
    c.order();
    move({1000, 1000, std::string(c.what) == "zoom throws" ? 1000 : 0, 1000, 0, 0});
    calls::clear();
    std::vector<std::string> expected = c.records;
    expected.push_back("INF Cap moving."); // the deflection counts as one in any case
    EXPECT_EQ(takeRecords(), expected);
    EXPECT_EQ(host::viewCounts().setViews - before.setViews, c.setViews);
    EXPECT_EQ(host::viewCounts().updates - before.updates, c.updates);
    const host::ViewCounts broken = host::viewCounts();
    move({1000, 0, 0, 0, 0, 0});
    EXPECT_EQ(host::viewCounts().setViews - broken.setViews, 1) << "the next sample proceeds normally";
    release();
  }
}

TEST_F(ViewMotion, ReleaseGoesIdleWhateverTheHostDoes) {
  struct Case {
    std::function<void()> order;
    std::vector<std::string> records;
  };
  const Case cases[] = {
      {[] { host::setViewValid(false); }, {"ERR viewP not valid!", "TRC Cap released."}},
      {[] { calls::throwAt("isValid", 1); }, {"ERR Error handleCapIsReleased()", "TRC Cap released."}},
      {[] { calls::throwAt("acgsSetViewParameters", 1); },
       {"ERR Error handleCapIsReleased()", "TRC Cap released."}},
      {[] { calls::failAt("acgsSetViewParameters", 1); }, {"TRC Cap released."}},
      {[] { calls::failAt("acgsObtainAcGsView", 1); },
       {"ERR AcGsView object could not be retrieved!", "TRC Cap released."}},
  };
  for (const Case& c : cases) {
    look();
    move({100, 0, 0, 0, 0, 0});
    takeRecords();
    c.order();
    release();
    calls::clear();
    host::setViewValid(true);
    EXPECT_EQ(takeRecords(), c.records);
    EXPECT_FALSE(proxy().mCapIsMoving);
  }
  EXPECT_EQ(host::viewCounts().storedViews, 0);
}

// ---- what must never reach a view ----

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
  move({1000, 0, 0, 0, 0, 0});
  EXPECT_EQ(host::viewCounts().setViews, before + 1);
  EXPECT_EQ(text(host::view().position), "0.00000 0.00000 100.00000");
}

TEST_F(ViewMotion, DivisorsOfZeroActAsTheDefaults) {
  restart({{"transSensBase", "0"}, {"rotSensBase", "none"}});
  look();
  EXPECT_TRUE(pass(1000, 0, 0, 1000, 0, 0));
  EXPECT_EQ(text(host::view().position), "-5.00000 9.98334 99.50042");
}

} // namespace
