// The daemon as a process of its own.

#include "environment.h"
#include "ov_devlink.h"
#include "protocol.h"
#include "temp_folder.h"

#include <gmock/gmock.h>

#include <fcntl.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <optional>
#include <regex>
#include <thread>
#include <vector>

namespace {

constexpr int kAnnounceMode = 0x20013;

/// The program with its three streams: we write its input, the rest goes to files.
class Process {
public:
  Process(const rig::TempFolder& folder, std::vector<std::string> arguments) : mFolder(folder) {
    const auto program = std::filesystem::read_symlink("/proc/self/exe").parent_path() / "ov_daemon";
    arguments.insert(arguments.begin(), program.string());
    std::vector<char*> argv;
    for (std::string& argument : arguments)
      argv.push_back(argument.data());
    argv.push_back(nullptr);
    int input[2];
    if (pipe2(input, O_CLOEXEC) != 0 || (mId = fork()) < 0)
      throw std::runtime_error("can't start " + arguments[0]);
    if (mId == 0) {
      dup2(input[0], 0);
      if (std::freopen(folder.native("output").c_str(), "w", stdout) &&
          std::freopen(folder.native("errors").c_str(), "w", stderr))
        execv(argv[0], argv.data());
      _exit(127);
    }
    ::close(input[0]);
    mInput = input[1];
  }
  ~Process() {
    closeInput();
    if (mId > 0)
      end(SIGKILL);
  }

  void write(const std::string& text) {
    ASSERT_EQ(::write(mInput, text.data(), text.size()), static_cast<ssize_t>(text.size()));
  }
  void closeInput() {
    if (mInput >= 0)
      ::close(mInput);
    mInput = -1;
  }
  /// Exit status, or minus the signal that ended it.
  int wait() {
    int status = 0;
    waitpid(mId, &status, 0);
    mId = 0;
    return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
  }
  int end(int signal) {
    kill(mId, signal);
    return wait();
  }
  void stop() {
    kill(mId, SIGSTOP);
    waitpid(mId, nullptr, WUNTRACED);
  }
  void goOn() { kill(mId, SIGCONT); }
  std::string output() const { return mFolder.read("output"); }
  std::string errors() const { return mFolder.read("errors"); }

private:
  const rig::TempFolder& mFolder;
  pid_t mId = 0;
  int mInput = -1;
};

/// The next event but the question for the mode, which comes with each connection.
bool fetch(int& code) {
  short axis = 0;
  do {
    if (ovFetchEvent(0, &axis, &axis, &axis, &axis, &axis, &axis, nullptr, nullptr, &code, nullptr,
                     nullptr) != 0)
      return false;
  } while (code == kAnnounceMode);
  return true;
}

class OvDaemonTest : public testing::Test {
protected:
  OvDaemonTest() { unsetenv(devlink::kPortVariable); }
  ~OvDaemonTest() override { ovDisconnect(); }

  /// Starts a daemon at any port, and waits until the client library can find it there.
  void start(std::vector<std::string> arguments = {}) {
    mFolder.remove("port");
    arguments.insert(arguments.end(), {"--port", "0", "--port-file", mFolder.native("port")});
    mDaemon.emplace(mFolder, arguments);
    for (int i = 0; i < 10000 && !mFolder.exists("port"); ++i)
      std::this_thread::sleep_for(std::chrono::milliseconds(1));
    const std::string port = mFolder.read("port");
    mPort = port.substr(0, port.find('\n'));
    rig::setEnvironment(devlink::kPortVariable, mPort);
  }
  rig::TempFolder mFolder;
  std::optional<Process> mDaemon;
  std::string mPort;
};

TEST_F(OvDaemonTest, playsASessionRecordsItAndEndsWithItsClient) {
  mFolder.write("s", "0 device key 7\n0 host wait\n0.02 device motion 0 0 300 0 0 0\n");
  start({mFolder.native("s"), "--record", mFolder.native("record")});
  ASSERT_EQ(ovConnect(0, "acad"), 0);
  int code = 0;
  EXPECT_TRUE(fetch(code));
  EXPECT_EQ(code, 0x20027);
  EXPECT_TRUE(fetch(code));
  EXPECT_EQ(code, -1);
  EXPECT_EQ(ovSetApplMode("AutoCAD", "Pl\xE4ne"), 0);
  EXPECT_EQ(ovDisconnect(), 0);
  EXPECT_EQ(mDaemon->wait(), 0);
  EXPECT_EQ(mDaemon->output(),
            "Listening on port " + mPort + "\nclient connected: acad\nmode: Pl?ne\nclient gone: acad\n");
  const std::string time = "[0-9]{10,}\\.[0-9]{3} ";
  const std::regex expected(time + "client connected acad\n" + time + "event 131111\n" + time +
                            "motion 0 0 300 0 0 0\n" + time + "mode Pl.ne\n" + time + "client gone acad\n");
  EXPECT_TRUE(std::regex_match(mFolder.read("record"), expected)) << mFolder.read("record");
}

TEST_F(OvDaemonTest, takesVerbsFromItsInputAndNamesBadOnes) {
  start();
  ASSERT_EQ(ovConnect(0, "acad"), 0);
  mDaemon->write("# comment\nwobble\nkey 1\n");
  int code = 0;
  EXPECT_TRUE(fetch(code));
  EXPECT_EQ(code, 0x20021);
  EXPECT_EQ(mDaemon->errors(), "standard input:2: unknown device verb \"wobble\"\n");
  mDaemon->closeInput();
  EXPECT_EQ(ovGetDevNum(nullptr, nullptr, nullptr), 0) << "the end of the input is not the end of the client";
  EXPECT_EQ(ovDisconnect(), 0);
  EXPECT_EQ(mDaemon->wait(), 0);
}

TEST_F(OvDaemonTest, endsCleanlyAtASignalAlsoWithInputOpen) {
  for (const int signal : {SIGTERM, SIGINT}) {
    start({"--linger"});
    ASSERT_EQ(ovConnect(0, "acad"), 0);
    EXPECT_EQ(mDaemon->end(signal), 0);
    int code = 0;
    EXPECT_FALSE(fetch(code));
    ovDisconnect();
  }
}

TEST_F(OvDaemonTest, aStoppedDaemonIsNotWaitedForLong) {
  start();
  ASSERT_EQ(ovConnect(0, "acad"), 0);
  mDaemon->stop();
  EXPECT_NE(ovGetDevNum(nullptr, nullptr, nullptr), 0);
  EXPECT_NE(ovSetApplMode("AutoCAD", "Model"), 0);
  EXPECT_NE(ovConnect(0, "acad"), 0) << "the system still takes connections for it";
  EXPECT_NE(ovDisconnect(), 0);
  mDaemon->goOn();
  EXPECT_EQ(ovConnect(0, "acad"), 0);
}

TEST_F(OvDaemonTest, saysWhatIsWrongAndDoesNotStart) {
  mFolder.write("bad", "0 device key 1\n1 device wobble\n");
  start({"--linger"}); // takes the port
  struct Case {
    std::vector<std::string> arguments;
    std::string reason;
  };
  const Case cases[] = {
      {{mFolder.native("bad"), "--port", "0"}, "bad:2: unknown device verb \"wobble\""},
      {{"--port", "0", "--record", mFolder.native("no/such/folder")}, "can't write"},
      {{"--port", "70000"}, "70000"},
      {{"--port", mPort}, "can't listen on port " + mPort + ": Address already in use"},
  };
  for (const Case& c : cases) {
    const rig::TempFolder folder;
    Process daemon(folder, c.arguments);
    EXPECT_GT(daemon.wait(), 0);
    EXPECT_THAT(daemon.errors(), testing::HasSubstr(c.reason));
    EXPECT_EQ(daemon.output(), "");
  }
}

} // namespace
