#include "process.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <array>
#include <chrono>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <sstream>
#include <thread>

namespace {

namespace fs = std::filesystem;
using nlohmann::json;
using testing::Contains;
using testing::HasSubstr;

using Vector = std::array<double, 3>;

Vector operator-(const Vector& a, const Vector& b) {
  return {a[0] - b[0], a[1] - b[1], a[2] - b[2]};
}
double dot(const Vector& a, const Vector& b) {
  return a[0] * b[0] + a[1] * b[1] + a[2] * b[2];
}
Vector cross(const Vector& a, const Vector& b) {
  return {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
}
double length(const Vector& a) {
  return std::sqrt(dot(a, a));
}

std::string contents(const fs::path& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

/// One run of daemon and host, in a folder of its own with a blank in its name.
class WholeTest : public testing::Test {
protected:
  void SetUp() override {
    const auto* const infoP = testing::UnitTest::GetInstance()->current_test_info();
    // The run's own clock in the name: test programs of several build trees may run at once.
    std::ostringstream name;
    name << "whole test " << infoP->name() << ' '
         << std::chrono::steady_clock::now().time_since_epoch().count();
    mFolder = fs::path(testing::TempDir()) / name.str();
    fs::create_directories(mFolder);
  }
  void TearDown() override {
    mDaemonP.reset();
    if (!HasFailure())
      fs::remove_all(mFolder);
  }

  std::string at(const std::string& name) const { return (mFolder / name).string(); }

  void writeSession(const std::string& text) { std::ofstream(at("a.session"), std::ios::binary) << text; }

  void startDaemon() {
    mDaemonP = std::make_unique<Process>(OV_DAEMON,
                                         std::vector<std::string>{at("a.session"), "--port", "0",
                                                                  "--port-file", at("port"), "--record",
                                                                  at("record"), "--start", "on-connect"},
                                         at("daemon.txt"));
    for (int i = 0; i < 1000 && mDaemonP->isRunning(); ++i) {
      const std::string port = contents(at("port"));
      if (!port.empty() && port.back() == '\n') {
        mPort = port.substr(0, port.find_last_not_of("\r\n") + 1);
        return;
      }
      std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    FAIL() << "the daemon didn't start: " << contents(at("daemon.txt"));
  }

  /// Runs the host to its end and gives its exit status.
  int runHost(const std::vector<std::string>& more = {}) {
    std::vector<std::string> arguments{
        OV_DRAWING,        "--session",  at("a.session"), "--module", mModule,          "--out", at("out"),
        "--device-record", at("record"), "--refresh",     "100",      "--hold-seconds", "0.5"};
    arguments.insert(arguments.end(), more.begin(), more.end());
    Process host(OV_ACAD, arguments, at("acad.txt"), {{"OV_DEVLINK_PORT", mPort.empty() ? "1" : mPort}});
    const int status = host.wait(60);
    mOutput = contents(at("acad.txt"));
    return status;
  }

  json data() const { return json::parse(contents(mFolder / "out" / "session.json"), nullptr, false); }

  fs::path mFolder;
  std::string mModule = OV_MODULE;
  std::unique_ptr<Process> mDaemonP;
  std::string mPort;
  std::string mOutput;
};

Vector vectorOf(const json& value) {
  return {value[0], value[1], value[2]};
}

/// The frames from the first to the last one of a deflection, and the one before.
std::vector<json> framesOf(const json& data, const std::array<int, 6>& sample) {
  std::vector<json> out;
  const json& frames = data["frames"];
  for (std::size_t i = 1; i < frames.size(); ++i) {
    if (frames[i]["sample"] == json(sample)) {
      if (out.empty())
        out.push_back(frames[i - 1]);
      out.push_back(frames[i]);
    }
  }
  return out;
}

// A whole session by the real programs: what the cap did must stand in the frames, step by step.
TEST_F(WholeTest, CapMovesTheViewAsTheDeviceSays) {
  writeSession("0.5 device motion 0 0 0 0 500 0\n"
               "0.8 device motion 0 0 0 0 0 0\n"
               "1.2 device motion 40 0 0 0 0 0\n"
               "1.5 device motion 0 0 0 0 0 0\n"
               "1.9 device motion 0 0 1000 0 0 0\n"
               "2.2 device motion 0 0 0 0 0 0\n"
               "2.4 host caption The end\n");
  startDaemon();
  ASSERT_EQ(runHost(), 0) << mOutput;
  const json session = data();
  ASSERT_TRUE(session.is_object());

  const std::vector<json> turned = framesOf(session, {0, 0, 0, 0, 500, 0});
  ASSERT_GT(turned.size(), 5u);
  for (std::size_t i = 1; i < turned.size(); ++i) {
    const Vector before = vectorOf(turned[i - 1]["eye"]) - vectorOf(turned[i - 1]["target"]);
    const Vector after = vectorOf(turned[i]["eye"]) - vectorOf(turned[i]["target"]);
    const Vector up = vectorOf(turned[i]["up"]);
    EXPECT_EQ(turned[i]["target"], turned[0]["target"]);
    EXPECT_NEAR(length(vectorOf(turned[i]["up"]) - vectorOf(turned[0]["up"])), 0, 1e-9);
    EXPECT_NEAR(length(after) / length(before), 1, 1e-9);
    // The camera goes by -500 / 10000 radian about the up vector, so the scene turns the other way.
    EXPECT_NEAR(std::atan2(dot(cross(before, after), up), dot(before, after)), -0.05, 1e-6) << "frame " << i;
  }

  const std::vector<json> shifted = framesOf(session, {40, 0, 0, 0, 0, 0});
  ASSERT_GT(shifted.size(), 5u);
  const double size = std::sqrt(shifted[0]["field"][0].get<double>() * shifted[0]["field"][1].get<double>());
  for (std::size_t i = 1; i < shifted.size(); ++i) {
    const Vector step = vectorOf(shifted[i]["eye"]) - vectorOf(shifted[i - 1]["eye"]);
    const Vector look = vectorOf(shifted[i]["eye"]) - vectorOf(shifted[i]["target"]);
    const Vector right = cross(vectorOf(shifted[i]["up"]), look);
    EXPECT_NEAR(dot(step, right) / length(right) / size, -40 * 5.0 / 20000, 1e-9) << "frame " << i;
    EXPECT_NEAR(length(step) / size, 40 * 5.0 / 20000, 1e-9);
  }

  const std::vector<json> zoomed = framesOf(session, {0, 0, 1000, 0, 0, 0});
  ASSERT_GT(zoomed.size(), 5u);
  for (std::size_t i = 1; i < zoomed.size(); ++i) {
    EXPECT_EQ(zoomed[i]["eye"], zoomed[0]["eye"]);
    EXPECT_NEAR(zoomed[i - 1]["field"][0].get<double>() / zoomed[i]["field"][0].get<double>(), 1.05, 1e-9);
  }

  EXPECT_EQ(session["result"],
            json({{"loaded", true}, {"tookEvents", true}, {"movedView", true}, {"unloaded", true}}));
  EXPECT_EQ(session["counts"]["motions"], 6);
  EXPECT_EQ(session["captions"][0]["text"], "The end");
  EXPECT_THAT(mOutput, HasSubstr("Device events  6 (6 motion"));
  EXPECT_THAT(contents(mFolder / "out" / "report.html"), HasSubstr("\"text\":\"The end\""));
  EXPECT_EQ(mDaemonP->wait(10), 0) << "the daemon ends by itself after the session: "
                                   << contents(at("daemon.txt"));
}

TEST_F(WholeTest, KeysCommandsObjectsControlsAndLayout) {
  writeSession("0.4 device view front\n"
               "0.8 device key 0\n"
               "1.0 host select 1\n"
               "1.0 host type OV_Toggle_Object_Move_Mode\n"
               "1.3 device motion 0 4 0 0 0 0\n"
               "1.5 device motion 0 0 0 0 0 0\n"
               "1.7 host type OV_Toggle_Object_Move_Mode\n"
               "1.8 host pointer list\n"
               "2.0 device motion 0 0 310 0 0 0\n"
               "2.3 device motion 0 0 0 0 0 0\n"
               "2.5 host pointer view\n"
               "2.5 host layout on\n"
               "2.7 device motion 300 0 0 0 0 0\n"
               "2.9 device motion 0 0 0 0 0 0\n"
               "3.1 host layout off\n"
               "3.1 host type OV_Toggle_Rotation_Center\n");
  startDaemon();
  ASSERT_EQ(runHost(), 0) << mOutput;
  const json session = data();
  ASSERT_TRUE(session.is_object());

  std::vector<std::string> typed;
  for (const json& command : session["commands"])
    typed.push_back(command["text"]);
  EXPECT_THAT(typed, Contains("'_-VIEW _FRONT "));
  EXPECT_THAT(typed, Contains("\x1b\x1b")) << "a key cancels what runs";
  const std::string history = contents(mFolder / "out" / "command_line.txt");
  EXPECT_THAT(history, HasSubstr("'_-VIEW _FRONT"));
  EXPECT_THAT(history, HasSubstr("=> Move Selected Object:  on"));

  // Settings are written at the unload message, with what the commands made of them.
  const std::string settings =
      contents(mFolder / "out" / "home" / "Orvaner" / "Applications" / "autocad_addin.ini");
  EXPECT_THAT(settings, testing::ContainsRegex("toggleRotationCenter *= *off"));

  // The roof goes up by 4 * 0.5 drawing units a pass, along the up vector of the front view.
  std::size_t moves = 0;
  for (const json& frame : session["frames"]) {
    for (const json& group : frame["moved"]) {
      EXPECT_EQ(group["objects"], json({1}));
      EXPECT_NEAR(group["matrix"][11].get<double>(), 2.0, 1e-9);
      EXPECT_NEAR(group["matrix"][3].get<double>(), 0.0, 1e-9);
      ++moves;
    }
  }
  EXPECT_GT(moves, 3u);

  const std::vector<json> panned = framesOf(session, {300, 0, 0, 0, 0, 0});
  ASSERT_GT(panned.size(), 3u);
  for (std::size_t i = 1; i < panned.size(); ++i) {
    EXPECT_EQ(panned[i]["mode"], 1);
    EXPECT_NEAR(panned[i]["centre"][0].get<double>() - panned[i - 1]["centre"][0].get<double>(),
                -300.0 / 20000 * 150, 1e-9);
    EXPECT_EQ(panned[i]["height"], panned[0]["height"]);
  }

  std::vector<std::string> keys;
  for (const json& event : session["events"]) {
    if (event["kind"] == "event")
      keys.push_back(event["name"]);
  }
  EXPECT_EQ(keys, (std::vector<std::string>{"front", "key 0"}));

  std::vector<std::string> modes;
  for (const json& event : session["events"]) {
    if (event["kind"] == "mode")
      modes.push_back(event["name"]);
  }
  EXPECT_THAT(modes, Contains("Model"));
  EXPECT_THAT(modes, Contains("Layout"));
#ifndef _WIN32
  // There the desktop has controls: the list has moved down, and no frame was shown meanwhile.
  EXPECT_TRUE(framesOf(session, {0, 0, 310, 0, 0, 0}).empty());
  const json& list = session["controls"][1];
  EXPECT_EQ(list["name"], "list");
  EXPECT_GT(list["positions"].back()[1].get<int>(), 0);
#endif
}

#ifdef OV_SDK_MODULE
TEST_F(WholeTest, ModuleBuiltFromSdkFoldersLoadsMovesUnloads) {
  writeSession("0.5 device motion 0 0 0 0 500 0\n0.8 device motion 0 0 0 0 0 0\n");
  mModule = OV_SDK_MODULE;
  startDaemon();
  EXPECT_EQ(runHost(), 0) << mOutput;
  EXPECT_THAT(mOutput, HasSubstr("loaded, took events, moved the view, unloaded"));
}
#endif

TEST_F(WholeTest, WithoutADaemonTheHostSaysThatNoEventsCame) {
  writeSession("0.2 device motion 0 0 0 0 500 0\n0.3 device motion 0 0 0 0 0 0\n");
  ASSERT_EQ(runHost(), 1) << mOutput;
  EXPECT_THAT(mOutput, HasSubstr("loaded, took NO events, did NOT move the view, unloaded"));
  ASSERT_TRUE(data().is_object());
  EXPECT_EQ(data()["result"]["unloaded"], true);
}

// What a plug-in is told from its load to its end, and what becomes of one that the host can't take.
TEST_F(WholeTest, PlugInsHearTheHostsMessagesInOrder) {
  writeSession("0.1 host caption Nothing moves\n");
  const std::vector<std::string> arguments{OV_DRAWING, "--session",      at("a.session"),
                                           "--module", OV_OTHER_MODULE,  "--out",
                                           at("out"),  "--hold-seconds", "0"};
  struct Case {
    std::string refused;
    std::string version;
    std::string heard;
    std::string told;
  };
  const Case cases[] = {
      {"", "", "1 3 4 2 ", "loaded, took NO events, did NOT move the view, unloaded"},
      {"2", "", "1 3 4 2 ", "loaded, took NO events, did NOT move the view, NOT unloaded"},
      {"1", "", "1 ", "refused to be loaded"},
      {"", "1441792", "", "was built for another host: interface 1441792"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.told);
    fs::remove(at("messages"));
    Process host(OV_ACAD, arguments, at("acad.txt"),
                 {{"OV_TEST_MESSAGES", at("messages")},
                  {"OV_TEST_REFUSED", c.refused},
                  {"OV_TEST_VERSION", c.version}});
    EXPECT_EQ(host.wait(60), 1);
    EXPECT_EQ(contents(at("messages")), c.heard);
    EXPECT_THAT(contents(at("acad.txt")), HasSubstr(c.told));
  }
}

TEST_F(WholeTest, MistakesAreToldInOneLineAndNothingIsPlayed) {
  writeSession("0.2 host type HELLO\n1 host wiggle\n");
  EXPECT_EQ(runHost(), 2);
  EXPECT_THAT(mOutput, HasSubstr("a.session:2: "));
  EXPECT_EQ(std::count(mOutput.begin(), mOutput.end(), '\n'), 1) << mOutput;
  EXPECT_FALSE(fs::exists(mFolder / "out"));

  writeSession("0.2 host type HELLO\n");
  Process noDrawing(OV_ACAD,
                    {at("none.dxf"), "--session", at("a.session"), "--module", OV_MODULE, "--out", at("out")},
                    at("acad.txt"));
  EXPECT_EQ(noDrawing.wait(30), 2);
  EXPECT_THAT(contents(at("acad.txt")), HasSubstr("none.dxf"));
  EXPECT_FALSE(fs::exists(mFolder / "out"));

  Process noModule(OV_ACAD,
                   {OV_DRAWING, "--session", at("a.session"), "--module", at("none.arx"), "--out", at("out")},
                   at("acad.txt"));
  EXPECT_EQ(noModule.wait(30), 1);
  EXPECT_THAT(contents(at("acad.txt")), HasSubstr("none.arx"));
}

} // namespace
