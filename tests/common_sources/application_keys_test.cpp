// What keys type at the host's command line: menu macros, and what is no key. The transcripts hold the view
// keys.

#include "calls.h"
#include "engine_rig.h"
#include "event_codes.h"

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

} // namespace
