// What keys type at the host's command line: menu macros, and the commands of the view keys.

#include "calls.h"
#include "engine_rig.h"
#include "event_codes.h"
#include "fault_loop.h"

using Lines = std::vector<std::string>;

namespace {

constexpr char kZoomAll[] = "sendStringToExecute \"'_ZOOM _ALL \" 0 0 1";

class ApplicationKeys : public EngineTest {
protected:
  /// What is typed while an action runs, each as the journal shows it.
  template <class Action> Lines typed(const Action& action) {
    calls::startRecording();
    action();
    Lines found;
    for (const std::string& call : calls::stopRecording()) {
      if (call.compare(0, 4, "send") == 0)
        found.push_back(call);
    }
    return found;
  }
  Lines typedFor(const std::string& macro) {
    proxy().mMenuEntries = {"not this", macro};
    return typed([this] { proxy().execApplFunction(1); });
  }
  Lines typedForView(int code) {
    return typed([this, code] { proxy().execSpecialApplFunction(code); });
  }
};

TEST_F(ApplicationKeys, MacroIsTypedTokenByToken) {
  const std::string cancel = "sendStringToExecute \"\\e\\e\" 1 0 1";
  const auto line = [](const std::string& text) { return "sendStringToExecute \"" + text + "\\n\" 1 0 1"; };
  const auto menu = [&line](const std::string& text) { return line("(command (menucmd \"" + text + "\"))"); };
  const std::pair<const char*, Lines> cases[] = {
      {"A;;M=B;C", {cancel, line("A"), line(""), menu("M=B"), line("C")}},
      {"A", {cancel, line("A")}},
      {"A;B", {cancel, line("A"), line("B")}},
      {"A;B;", {cancel, line("A"), line("B")}}, // no Enter for what isn't there
      {"A;B;;", {cancel, line("A"), line("B"), line("")}},
      {";A", {cancel, line(""), line("A")}},
      {";", {cancel, line("")}},
      {"", {}}, // not even the cancel
      {"M=", {cancel, menu("M=")}},
      {"M=$(getvar,tilemode)", {cancel, menu("M=$(getvar,tilemode)")}},
      {"M", {cancel, line("M")}},
      {"m=B", {cancel, line("m=B")}},
      {" M=B", {cancel, line(" M=B")}},
      {" A ;\tB ", {cancel, line(" A "), line("\tB ")}}, // as it stands
      {"AM=B", {cancel, line("AM=B")}},
  };
  for (const auto& [macro, expected] : cases)
    EXPECT_EQ(typedFor(macro), expected) << "'" << macro << "'";
}

TEST_F(ApplicationKeys, IndexBehindTheTableIsAnErrorInTheLog) {
  proxy().mMenuEntries = {"A", "B", "C"};
  EXPECT_EQ(typed([this] { proxy().execApplFunction(0); }).size(), 2u);
  EXPECT_EQ(typed([this] { proxy().execApplFunction(2); }).size(), 2u);
  EXPECT_EQ(takeRecords(), Lines{});
  EXPECT_EQ(typed([this] { proxy().execApplFunction(3); }), Lines{});
  EXPECT_EQ(typed([this] { proxy().execApplFunction(0x7FFFFFFF); }), Lines{});
  proxy().mMenuEntries.clear(); // no menu file yet
  plugin().mPendingKey = 0;
  EXPECT_EQ(typed([this] { proxy().handleDeviceKeys(); }), Lines{});
  EXPECT_EQ(plugin().mPendingKey, -1) << "the key is lost";
  EXPECT_EQ(takeRecords(), (Lines{"ERR keyEvent (3') too big (max. is 2)!",
                                  "ERR keyEvent (2147483647') too big (max. is 2)!",
                                  "ERR keyEvent (0') too big (max. is -1)!"}));
}

TEST_F(ApplicationKeys, ViewKeysTypeTheirCommand) {
  const std::pair<int, const char*> views[] = {{0x20009, "FRONT"}, {0x2000A, "RIGHT"}, {0x2000B, "TOP"},
                                               {0x20016, "BACK"},  {0x20017, "LEFT"},  {0x20018, "BOTTOM"}};
  for (const auto& [code, name] : views) {
    const std::string command = "sendStringToExecute \"'_-VIEW _" + std::string(name) + " \" 0 0 1";
    proxy().mZoomAllAfterView = false;
    for (const int mode : {0, 2}) {
      proxy().mViewMode = mode;
      EXPECT_EQ(typedForView(code), Lines{command});
    }
    proxy().mZoomAllAfterView = true;
    EXPECT_EQ(typedForView(code), (Lines{command, kZoomAll}));
    proxy().mViewMode = 1; // a layout
    EXPECT_EQ(typedForView(code), Lines{});
  }
  EXPECT_EQ(takeRecords(), Lines{});
}

TEST_F(ApplicationKeys, ZoomKeyTypesOneCommandInAnyMode) {
  for (const bool zoomAllAfterView : {false, true}) {
    proxy().mZoomAllAfterView = zoomAllAfterView;
    proxy().mViewMode = 2;
    EXPECT_EQ(typedForView(0x2000C), Lines{kZoomAll});
    proxy().mViewMode = 1;
    EXPECT_EQ(typedForView(0x2000C), Lines{"sendStringToExecute \"_ZOOM _ALL \" 0 0 1"});
  }
}

TEST_F(ApplicationKeys, UnknownViewCodeIsAnErrorInTheLog) {
  proxy().mViewMode = 2;
  EXPECT_EQ(typedForView(0x2000D), Lines{});
  proxy().mZoomAllAfterView = true;
  EXPECT_EQ(typedForView(1), Lines{kZoomAll}) << "the zoom follows all the same";
  EXPECT_EQ(takeRecords(),
            (Lines{"ERR Unknown special command '131085' found!", "ERR Unknown special command '1' found!"}));
  proxy().mViewMode = 1;
  EXPECT_EQ(typedForView(1), Lines{});
  EXPECT_EQ(takeRecords(), Lines{}) << "on a layout nobody asks for views";
}

TEST_F(ApplicationKeys, ViewIsTheOneOfTheModeReadBefore) {
  plugin().mPendingSpecial = kViewTopEvent;
  host::setLayout(true);
  EXPECT_EQ(typed([this] { proxy().doTransform(); }).size(), 1u)
      << "keys come before the cap, which reads the mode";
  plugin().mPendingSpecial = kViewTopEvent;
  EXPECT_EQ(typed([this] { proxy().doTransform(); }), Lines{});
  EXPECT_EQ(plugin().mPendingSpecial, 0);
}

TEST_F(ApplicationKeys, CommandsRunInTheHostLater) {
  host::add(rig::line({0, 0, 0}, {10, 10, 10}));
  proxy().mMenuEntries = {"_CIRCLE;5,5;2"};
  host::type(L"_LINE\n");
  host::runQueue();
  plugin().mPendingKey = 0;
  plugin().mPendingSpecial = kViewFrontEvent;
  proxy().handleDeviceKeys();
  EXPECT_EQ(host::entityCount(), 1) << "typed, not yet run";
  host::runQueue();
  EXPECT_EQ(host::entityCount(), 2);
  EXPECT_NE(dynamic_cast<const AcDbCircle*>(host::entity(2)), nullptr);
  EXPECT_EQ(host::historyText().substr(0, 46), "> _LINE\n> <ESC><ESC>\n*Cancel*\n> _CIRCLE\n> 5,5\n");
  EXPECT_EQ(rig::text((host::view().position - host::view().target).normalize(), 3), "0.000 -1.000 0.000");
}

TEST_F(ApplicationKeys, NothingIsTypedWithoutAHost) {
  proxy().mMenuEntries = {"A"};
  host::setHasDocumentManager(false);
  EXPECT_EQ(typed([this] { proxy().execApplFunction(0); }), Lines{});
  EXPECT_EQ(typedForView(kViewTopEvent), Lines{});
  host::setHasDocumentManager(true);
  host::setHasDocument(false);
  proxy().execApplFunction(0);
  proxy().execSpecialApplFunction(kViewTopEvent);
  EXPECT_EQ(host::queueLength(), 0);
}

TEST_F(ApplicationKeys, NoFaultOfTheHostLosesAKeyByAThrow) {
  const auto prepare = [this] {
    host::reset();
    proxy().mMenuEntries = {"A;B"};
    proxy().mZoomAllAfterView = true;
    proxy().mViewMode = 2;
    plugin().mPendingKey = 0;
    plugin().mPendingSpecial = kViewTopEvent;
  };
  const std::set<std::string> struck = rig::forEachFault(
      prepare, [this] { proxy().handleDeviceKeys(); },
      [&](const std::string&, bool isThrow) {
        // A call that merely fails is the host's affair; the key counts as served.
        EXPECT_EQ(plugin().mPendingSpecial != 0, isThrow);
        takeRecords();
        const bool isKeyLeft = plugin().mPendingKey == 0;
        EXPECT_EQ(typed([this] { proxy().handleDeviceKeys(); }).size(), isThrow ? (isKeyLeft ? 5u : 2u) : 0u);
        EXPECT_EQ(plugin().mPendingKey, -1);
        EXPECT_EQ(plugin().mPendingSpecial, 0);
        EXPECT_EQ(takeRecords(), Lines{});
      });
  EXPECT_EQ(struck, (std::set<std::string>{"acDocManagerPtr", "curDocument", "sendStringToExecute"}));
}

} // namespace
