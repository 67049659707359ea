// The daemon as a process of its own.

#include "fixture.h"
#include "temp_folder.h"

#include <signal.h>
#include <sys/wait.h>

#include <cstdio>

namespace {

class OvDaemonTest : public testing::Test {
protected:
  ~OvDaemonTest() override {
    ovDisconnect();
    if (mInput) {
      kill(id(), SIGKILL);
      end();
    }
  }

  /// Starts the program with its output and errors in files, and its input in mInput.
  void start(const std::string& arguments) {
    const auto program = std::filesystem::read_symlink("/proc/self/exe").parent_path() / "ov_daemon";
    const std::string command = "cd '" + mFolder.native() + "'; echo $$ >id; exec '" + program.string() +
                                "' " + arguments + " >output 2>errors";
    mInput = popen(command.c_str(), "we");
  }
  /// Starts it at any port, and connects the client library to it.
  void startListening(const std::string& arguments) {
    mFolder.remove("port");
    start(arguments + " --port 0 --port-file port");
    for (int i = 0; i < 10000 && !mFolder.exists("port"); ++i)
      std::this_thread::sleep_for(std::chrono::milliseconds(1));
    mPort = mFolder.read("port");
    mPort.pop_back();
    usePort(mPort);
    ASSERT_EQ(ovConnect(0, "acad"), 0);
  }
  pid_t id() const { return std::stoi(mFolder.read("id")); }
  /// Ends its input and waits for its end. Returns the exit status, -1 after a signal.
  int end() {
    const int status = pclose(mInput);
    mInput = nullptr;
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  }

  rig::TempFolder mFolder;
  FILE* mInput = nullptr;
  std::string mPort;
};

TEST_F(OvDaemonTest, PlaysInputAndNamesBadLines) {
  startListening("");
  std::fputs("# comment\nwobble\nkey 1\n", mInput);
  std::fflush(mInput);
  EXPECT_EQ(fetched(), "event 131105");
  EXPECT_EQ(mFolder.read("errors"), "standard input:2: unknown device verb \"wobble\"\n");
  EXPECT_EQ(ovSetApplMode("AutoCAD", "Pl\xE4ne"), 0);
  std::thread leaving([] {
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    EXPECT_TRUE(isConnected()) << "the end of the input is not the end of the client";
    EXPECT_EQ(ovDisconnect(), 0);
  });
  EXPECT_EQ(end(), 0);
  leaving.join();
  EXPECT_EQ(mFolder.read("output"),
            "Listening on port " + mPort + "\nclient connected: acad\nmode: Pl?ne\nclient gone: acad\n");
}

TEST_F(OvDaemonTest, PanelShapesSamples) {
  mFolder.write("panel", "# mine\nswap x y\ngain x -2\ndeadzone a 10\nrotation 13 zoomall\n");
  startListening("--panel panel");
  const auto sampleOf = [this](const std::string& line) {
    std::fputs((line + "\n").c_str(), mInput);
    std::fflush(mInput);
    return fetched();
  };
  EXPECT_EQ(sampleOf("motion 1 20 3 12 5 6"), "motion -40 1 3 2 5 6");
  EXPECT_EQ(sampleOf("gain y 0.5"), "motion -40 1 3 2 5 6") << "0.5 is rounded to 1";
  EXPECT_EQ(sampleOf("dominant on"), "motion -40 0 0 0 0 0") << "acts while the cap is held";
  EXPECT_EQ(sampleOf("motion 0 0 0 -40 0 30"), "motion 0 0 0 -30 0 0") << "the first of the strongest";
  EXPECT_EQ(sampleOf("motion 0 0 0 0 30000 0"), "motion 0 0 0 0 30000 0");
  EXPECT_EQ(sampleOf("gain b -3"), "motion 0 0 0 0 -32768 0") << "the limit";
}

TEST_F(OvDaemonTest, BadArgumentsAreNamed) {
  mFolder.write("bad", "0 device key 1\n1 device wobble\n");
  mFolder.write("keys", "gain x 1\nkey 3\n");
  const RunningDaemon other;
  const std::string port = std::to_string(other.port());
  const std::pair<std::string, std::string> cases[] = {
      {"bad --port 0", "bad:2: unknown device verb \"wobble\""},
      {"--port 0 --record no/such/folder", "can't write"},
      {"--port 70000", "70000"},
      {"--port 0 --panel keys", "keys:2: doesn't belong to the panel: key 3"},
      {"--port 0 --panel none", "none: can't be read"},
      {"--port " + port, "can't listen on port " + port + ": Address already in use"}};
  for (const auto& [arguments, reason] : cases) {
    start(arguments);
    EXPECT_GT(end(), 0);
    EXPECT_THAT(mFolder.read("errors"), testing::HasSubstr(reason));
    EXPECT_EQ(mFolder.read("output"), "");
  }
}

} // namespace
