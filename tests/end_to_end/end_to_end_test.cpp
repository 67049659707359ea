// The three programs in one session. What the device did must be found in the host's report.

#include <array>
#include <cmath>
#include <regex>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "daemon_process.h"
#include "environment.h"

namespace {

using nlohmann::json;
using testing::Contains;
using testing::HasSubstr;

class EndToEnd : public testing::Test {
protected:
  /// Plays the host's lines of a session to its end. Returns the exit status.
  int runHost(const std::string& module = OV_MODULE, const std::vector<std::string>& more = {}) {
    std::vector<std::string> arguments = {OV_DRAWING, "--session", mFolder.native("a.session")};
    arguments.insert(arguments.end(), {"--module", module, "--out", mFolder.native("out")});
    arguments.insert(arguments.end(), {"--device-record", mFolder.native("record")});
    arguments.insert(arguments.end(), {"--refresh", "100", "--hold-seconds", "0.5"});
    arguments.insert(arguments.end(), more.begin(), more.end());
    Process host(OV_ACAD, arguments, mFolder.native("acad.txt"));
    const int status = host.wait(60);
    mOutput = mFolder.read("acad.txt");
    return status;
  }
  /// The same with a daemon that plays the device's lines.
  int runBoth(const std::string& session, const std::string& module = OV_MODULE) {
    DaemonProcess daemon(mFolder, session);
    rig::setEnvironment("OV_DEVLINK_PORT", daemon.port());
    const int status = runHost(module);
    EXPECT_EQ(daemon.wait(10), 0) << "the daemon ends after its session";
    return status;
  }
  json report() const { return json::parse(mFolder.read("out/session.json")); }

  rig::TempFolder mFolder;
  std::string mOutput;
};

/// Returns the frames of a deflection and the one before.
std::vector<json> framesOf(const json& report, const std::array<int, 6>& sample) {
  std::vector<json> out;
  const json& frames = report["frames"];
  for (std::size_t i = 1; i < frames.size(); ++i) {
    if (frames[i]["sample"] != json(sample))
      continue;
    if (out.empty())
      out.push_back(frames[i - 1]);
    out.push_back(frames[i]);
  }
  return out;
}

TEST_F(EndToEnd, SessionMovesViewAndObjects) {
  const int status = runBoth("0.6 device motion 0 0 0 0 500 0\n"
                             "1.2 device motion 0 0 0 0 0 0\n"
                             "1.4 device motion 0 0 1000 0 0 0\n"
                             "2.0 device motion 0 0 0 0 0 0\n"
                             "2.2 device view front\n"
                             "2.8 device key 0\n"
                             "3.2 host select 1\n"
                             "3.2 host type OV_Toggle_Object_Move_Mode\n"
                             "4.0 device motion 0 4 0 0 0 0\n"
                             "5.2 device motion 0 0 0 0 0 0\n"
                             "5.6 host type OV_Toggle_Object_Move_Mode\n"
                             "5.8 host pointer list\n"
                             "6.2 device motion 0 0 310 0 0 0\n"
                             "7.0 device motion 0 0 0 0 0 0\n"
                             "7.2 host pointer view\n"
                             "7.2 host layout on\n"
                             "8.2 device motion 300 0 0 0 0 0\n"
                             "9.4 device motion 0 0 0 0 0 0\n"
                             "9.6 host caption The end\n");
  ASSERT_EQ(status, 0) << mOutput;
  EXPECT_THAT(mOutput, HasSubstr("Device events  12 (10 motion"));
  const json session = report();
  EXPECT_EQ(session["result"], json({{"loaded", true},
                                     {"tookEvents", true},
                                     {"effects", "moved the view, moved objects, scrolled, typed"},
                                     {"unloaded", true}}));
  EXPECT_EQ(session["captions"][0]["text"], "The end");
  EXPECT_THAT(mFolder.read("out/report.html"), HasSubstr("\"text\":\"The end\""));

  // The camera goes by -500 / 10000 radian about the up vector.
  const std::vector<json> turned = framesOf(session, {0, 0, 0, 0, 500, 0});
  ASSERT_GT(turned.size(), 3u);
  for (std::size_t i = 1; i < turned.size(); ++i) {
    double square = 0, distance = 0;
    for (int k = 0; k < 3; ++k) {
      square += std::pow(turned[i]["eye"][k].get<double>() - turned[i - 1]["eye"][k].get<double>(), 2);
      distance += std::pow(turned[i]["eye"][k].get<double>() - turned[i]["target"][k].get<double>(), 2);
    }
    EXPECT_NEAR(std::sqrt(square / distance), 2 * std::sin(0.025), 1e-6) << "frame " << i;
    EXPECT_EQ(turned[i]["target"], turned[0]["target"]);
  }
  const std::vector<json> zoomed = framesOf(session, {0, 0, 1000, 0, 0, 0});
  ASSERT_GT(zoomed.size(), 3u);
  for (std::size_t i = 1; i < zoomed.size(); ++i)
    EXPECT_NEAR(zoomed[i - 1]["field"][0].get<double>() / zoomed[i]["field"][0].get<double>(), 1.05, 1e-9);

  // Each frame carries the sample that it was made from, not one that arrived before it was shown.
  const json& frames = session["frames"];
  for (std::size_t i = 1; i < frames.size() && frames[i]["t"] < 0.85; ++i) {
    if (frames[i]["sample"] == json({0, 0, 0, 0, 0, 0})) {
      EXPECT_EQ(frames[i]["eye"], frames[i - 1]["eye"]) << "frame " << i;
      EXPECT_EQ(frames[i]["field"], frames[i - 1]["field"]) << "frame " << i;
    }
  }

  const std::string history = mFolder.read("out/command_line.txt");
  EXPECT_THAT(history, HasSubstr("'_-VIEW _FRONT"));
  EXPECT_THAT(history, HasSubstr("=> Move Selected Object:  on"));
  std::vector<json> typed, events;
  for (const json& command : session["commands"])
    typed.push_back(command["text"]);
  EXPECT_THAT(typed, Contains("\x1b\x1b")) << "a key cancels what runs";
  for (const json& event : session["events"])
    events.push_back(event.value("name", ""));
  for (const char* const name : {"front", "key 0", "Model", "Layout"})
    EXPECT_THAT(events, Contains(name));

  // The roof goes up by 4 * 0.5 drawing units a pass, along the up vector of the front view.
  std::vector<json> moved;
  for (const json& frame : session["frames"])
    moved.insert(moved.end(), frame["moved"].begin(), frame["moved"].end());
  ASSERT_GT(moved.size(), 3u);
  EXPECT_EQ(moved[0]["objects"], json({1}));
  EXPECT_NEAR(moved[0]["matrix"][11].get<double>(), 2.0, 1e-9);

  const std::vector<json> panned = framesOf(session, {300, 0, 0, 0, 0, 0});
  ASSERT_GT(panned.size(), 3u);
  for (std::size_t i = 1; i < panned.size(); ++i)
    EXPECT_NEAR(panned[i]["centre"][0].get<double>() - panned[i - 1]["centre"][0].get<double>(),
                -300.0 / 20000 * 150, 1e-9);
#ifndef _WIN32
  // The simulated desktop has controls: the list has moved down, and the view hasn't.
  EXPECT_TRUE(framesOf(session, {0, 0, 310, 0, 0, 0}).empty());
  EXPECT_EQ(session["controls"][1]["name"], "list");
  EXPECT_GT(session["controls"][1]["positions"].back()[1].get<int>(), 0);
#endif
}

/// Returns the lines of a session that counts passes, counted from the first sample, since the number of passes
/// before it depends on when the menu file appears.
std::string fromFirstSample(const std::string& session) {
  std::smatch first;
  std::regex_search(session, first, std::regex("\np([0-9]+) +device"));
  const std::regex line("p([0-9]+) +(.*)");
  std::string out;
  for (std::sregex_iterator i(session.begin(), session.end(), line), end; i != end; ++i)
    out += std::to_string(std::max(0, std::stoi((*i)[1]) - std::stoi(first[1]))) + ' ' + (*i)[2].str() + '\n';
  return out;
}

// A saved session that counts passes ends at the same view, to the last bit, and is saved the same way again.
TEST_F(EndToEnd, CountedSessionRepeatsExactly) {
  ASSERT_EQ(runBoth("0.0 host setting minThreshold 3\n"
                    "0.3 device motion 3 0 0 20 50 0\n"
                    "0.6 device rotation 13 zoomall\n"
                    "0.9 device motion 0 0 40 0 20 30\n"
                    "1.1 device motion 0 0 0 0 0 2\n"
                    "1.2 device view top\n"
                    "1.5 host select 1\n"
                    "1.5 host type OV_Toggle_Object_Move_Mode\n"
                    "1.6 device motion 0 4 0 0 9 0\n"
                    "1.8 device motion 0 0 0 0 0 0\n"
                    "1.9 host type OV_Toggle_Object_Move_Mode\n"
                    "1.9 host pointer list\n"
                    "2.0 device motion 0 0 310 0 0 0\n"
                    "2.2 device motion 0 0 0 0 0 0\n"
                    "2.3 host pointer view\n"
                    "2.3 host layout on\n"
                    "2.4 device motion 300 0 0 0 0 0\n"
                    "2.6 device motion 0 0 0 0 0 0\n"
                    "2.7 host layout off\n"
                    "2.7 host type OV_Toggle_Rotation_Center\n"
                    "2.9 device motion 20 0 0 0 40 0\n"), // ends while the cap is deflected
            0)
      << mOutput;
  const json first = report();
  const std::string saved = mFolder.read("out/saved.session");
  EXPECT_THAT(saved, HasSubstr("host    tick"));

  DaemonProcess daemon(mFolder, "", "0",
                       {"--live", "--live-silence", "0", "--live-file", mFolder.native("device")});
  rig::setEnvironment("OV_DEVLINK_PORT", daemon.port());
  mFolder.write("a.session", saved);
  ASSERT_EQ(runHost(OV_MODULE, {"--device", daemon.line("device")}), 0) << mOutput;
  EXPECT_THAT(mOutput, HasSubstr(" 0 not observable, 0 contradicted"));
  EXPECT_EQ(fromFirstSample(mFolder.read("out/saved.session")), fromFirstSample(saved));
  const json again = report();
  for (const char* const key : {"eye", "target", "up", "field", "sample", "centre", "height"})
    EXPECT_EQ(again["frames"].back().value(key, json()), first["frames"].back().value(key, json())) << key;
  for (std::size_t i = 0; i < first["controls"].size(); ++i)
    EXPECT_EQ(again["controls"][i]["positions"].back()[1], first["controls"][i]["positions"].back()[1]);
}

// Each drawing has its own view, selection and lock, also while the cap is held. Host lines wait for a tick's end.
TEST_F(EndToEnd, SecondDrawingOpensInMidMovement) {
  ASSERT_EQ(runBoth("0.2 host select 1\n"
                    "0.2 host type OV_Toggle_Object_Move_Mode\n"
                    "0.4 device motion 0 4 0 0 0 0\n"
                    "1.4 host open " OV_DRAWING "\n"
                    "2.8 device motion 0 0 0 0 0 0\n"
                    "3.2 host drawing 1\n"
                    "3.4 device motion 0 0 0 0 50 0\n"
                    "4.2 host drawing 2\n"
                    "4.2 host close\n"
                    "5.0 device motion 0 0 0 0 0 0\n"),
            0)
      << mOutput;
  EXPECT_THAT(mOutput, HasSubstr("3.2 s  (house.dxf is locked)")) << "its unlocking met the other drawing";
  const json session = report();
  ASSERT_EQ(session["drawings"].size(), 2u);
  for (const json& drawing : session["drawings"])
    EXPECT_EQ(drawing["entities"], 77) << drawing["name"];
  std::vector<json> parts; // drawing, whether objects move, first and last view
  for (const json& frame : session["frames"]) {
    const json part = {frame["drawing"], !frame["moved"].empty()};
    if (parts.empty() || parts.back()[0] != part)
      parts.push_back({part, frame["eye"], frame["eye"]});
    parts.back()[2] = frame["eye"];
    for (const json& group : frame["moved"])
      EXPECT_EQ(group["drawing"], 1);
  }
  ASSERT_GE(parts.size(), 4u);
  const json kinds = {parts[0][0], parts[1][0], parts[2][0], parts[3][0]};
  EXPECT_EQ(kinds, json::parse("[[1, false], [1, true], [2, false], [1, false]]"));
  EXPECT_EQ(parts[1][1], parts[1][2]) << "the roof moves, not the view";
  EXPECT_NE(parts[2][1], parts[2][2]) << "nothing is selected there, so its view moves";
  EXPECT_EQ(parts[3][1], parts[0][2]) << "the first drawing has kept its view";
}

#ifdef OV_SDK_MODULE
TEST_F(EndToEnd, ModuleFromSdkFoldersMovesView) {
  EXPECT_EQ(runBoth("0.5 device motion 0 0 0 0 500 0\n0.8 device motion 0 0 0 0 0 0\n", OV_SDK_MODULE), 0);
  EXPECT_THAT(mOutput, HasSubstr("loaded, took events, moved the view, unloaded"));
}
#endif

TEST_F(EndToEnd, HostReportsMissingEvents) {
  rig::setEnvironment("OV_DEVLINK_PORT", "1");
  mFolder.write("a.session", "0.2 device motion 0 0 0 0 500 0\n");
  mFolder.write("record", "");
  EXPECT_EQ(runHost(), 1);
  EXPECT_THAT(mOutput, HasSubstr("loaded, took NO events, NOTHING came of them, unloaded"));
}

} // namespace
