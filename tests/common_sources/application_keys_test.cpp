// What keys type at the host's command line: menu macros, and what is no key. The transcripts hold the view
// keys.

#include "call_log.h"
#include "engine_rig.h"

using Lines = std::vector<std::string>;

namespace {

class ApplicationKeys : public EngineTest {
protected:
  /// What is typed while an action runs, each as the journal shows it.
  template <class Action> Lines typed(const Action& action) {
    call_log::startRecording();
    action();
    Lines found;
    for (const std::string& call : call_log::stopRecording()) {
      if (call.compare(0, 4, "send") == 0)
        found.push_back(call);
    }
    return found;
  }
};

TEST_F(ApplicationKeys, MacroIsTypedTokenByToken) {
  const std::string cancel = "sendStringToExecute \"\\e\\e\" 1 0 1";
  const auto line = [](const std::string& text) { return "sendStringToExecute \"" + text + "\\n\" 1 0 1"; };
  const auto menu = [&line](const std::string& text) { return line("(command (menucmd \"" + text + "\"))"); };
  const std::pair<const char*, Lines> cases[] = {
      {"A;;M=B;C", {cancel, line("A"), line(""), menu("M=B"), line("C")}},
      {"A;B;", {cancel, line("A"), line("B")}}, // no Enter for what isn't there
      {"A;B;;", {cancel, line("A"), line("B"), line("")}},
      {";A", {cancel, line(""), line("A")}},
      {"", {}}, // not even the cancel
      {"M=", {cancel, menu("M=")}},
      {"m=B;M;AM=B", {cancel, line("m=B"), line("M"), line("AM=B")}},
      {" M=B ;\tB ", {cancel, line(" M=B "), line("\tB ")}},   // as it stands
      {"\xF6;M=\xF6", {cancel, line("\xF6"), menu("M=\xF6")}}, // an o with two dots in both code pages
  };
  for (const auto& [macro, expected] : cases) {
    proxy().mMenuEntries = {"not this", macro};
    EXPECT_EQ(typed([this] { proxy().execApplFunction(1); }), expected) << "'" << macro << "'";
  }
}

TEST_F(ApplicationKeys, WhatIsNoKeyIsAnErrorInTheLog) {
  proxy().mMenuEntries = {"A", "B", "C"};
  EXPECT_EQ(typed([this] { proxy().execApplFunction(2); }).size(), 2u);
  EXPECT_EQ(takeRecords(), Lines{});
  for (const int key : {3, 0x7FFFFFFF, 0}) {
    if (key == 0)
      proxy().mMenuEntries.clear(); // no menu file yet
    plugin().mPendingKey = key;
    EXPECT_EQ(typed([this] { proxy().handleDeviceKeys(); }), Lines{});
    EXPECT_EQ(plugin().mPendingKey, -1) << "the key is lost";
  }
  EXPECT_EQ(takeRecords(), (Lines{"ERR keyEvent (3') too big (max. is 2)!",
                                  "ERR keyEvent (2147483647') too big (max. is 2)!",
                                  "ERR keyEvent (0') too big (max. is -1)!"}));
  proxy().mZoomAllAfterView = true;
  const auto unknown = [this] { proxy().execSpecialApplFunction(1); };
  EXPECT_EQ(typed(unknown), Lines{"sendStringToExecute \"'_ZOOM _ALL \" 0 0 1"}) << "it follows all the same";
  EXPECT_EQ(takeRecords(), Lines{"ERR Unknown special command '1' found!"});
  proxy().mViewMode = 1;
  EXPECT_EQ(typed(unknown), Lines{});
  EXPECT_EQ(takeRecords(), Lines{}) << "on a layout nobody asks for views";
}

} // namespace
