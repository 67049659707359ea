// The daemon as a process of its own.

#include "ov_devlink.h"
#include "protocol.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <regex>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

using testing::AllOf;
using testing::HasSubstr;

namespace {

std::string contentOf(const std::filesystem::path& path) {
  std::ostringstream text;
  text << std::ifstream(path).rdbuf();
  return text.str();
}

/// A folder of the test's own, gone at its end.
struct Folder {
  std::filesystem::path mPath;
  Folder() {
    std::string name = (std::filesystem::temp_directory_path() / "ov_daemon_XXXXXX").string();
    mPath = mkdtemp(name.data());
  }
  ~Folder() { std::filesystem::remove_all(mPath); }
  std::string file(const std::string& name) const { return (mPath / name).string(); }
};

/// The program with its three streams: we write its input, the rest goes to files.
class Process {
public:
  Process(const Folder& folder, std::vector<std::string> arguments)
      : mOutput(folder.file("output")), mErrors(folder.file("errors")) {
    const auto program = std::filesystem::read_symlink("/proc/self/exe").parent_path() / "ov_daemon";
    arguments.insert(arguments.begin(), program.string());
    std::vector<char*> argv;
    for (std::string& argument : arguments)
      argv.push_back(argument.data());
    argv.push_back(nullptr);
    int input[2];
    if (pipe2(input, O_CLOEXEC) != 0)
      throw std::runtime_error("no pipe");
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, input[0], 0);
    posix_spawn_file_actions_addopen(&actions, 1, mOutput.c_str(), O_CREAT | O_WRONLY | O_TRUNC, 0600);
    posix_spawn_file_actions_addopen(&actions, 2, mErrors.c_str(), O_CREAT | O_WRONLY | O_TRUNC, 0600);
    if (posix_spawn(&mId, argv[0], &actions, nullptr, argv.data(), environ) != 0)
      throw std::runtime_error("can't start " + arguments[0]);
    posix_spawn_file_actions_destroy(&actions);
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
  std::string output() const { return contentOf(mOutput); }
  std::string errors() const { return contentOf(mErrors); }

private:
  std::string mOutput;
  std::string mErrors;
  pid_t mId = 0;
  int mInput = -1;
};

/// Waits for the port file, points the client library there, and takes the file away.
std::string waitForPort(const std::string& portFile) {
  for (int i = 0; i < 10000 && !std::filesystem::exists(portFile); ++i)
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  std::string port = contentOf(portFile);
  port = port.substr(0, port.find('\n'));
  std::filesystem::remove(portFile);
  setenv(devlink::kPortVariable, port.c_str(), 1);
  return port;
}

bool fetch(int& code) {
  short axis = 0;
  return ovFetchEvent(0, &axis, &axis, &axis, &axis, &axis, &axis, nullptr, nullptr, &code, nullptr,
                      nullptr) == 0;
}

class OvDaemonTest : public testing::Test {
protected:
  OvDaemonTest() { unsetenv(devlink::kPortVariable); }
  ~OvDaemonTest() override { ovDisconnect(); }
  Folder mFolder;
};

TEST_F(OvDaemonTest, playsASessionRecordsItAndEndsWithItsClient) {
  std::ofstream(mFolder.file("s")) << "0 device key 7\n0 host wait\n0.02 device motion 0 0 300 0 0 0\n";
  Process daemon(mFolder, {mFolder.file("s"), "--port", "0", "--port-file", mFolder.file("port"), "--record",
                           mFolder.file("record")});
  const std::string port = waitForPort(mFolder.file("port"));
  ASSERT_EQ(ovConnect(0, "acad"), 0);
  int code = 0;
  EXPECT_TRUE(fetch(code));
  EXPECT_EQ(code, 0x20027);
  EXPECT_TRUE(fetch(code));
  EXPECT_EQ(code, -1);
  EXPECT_EQ(ovSetApplMode("AutoCAD", "Model \x1b"), -1);
  EXPECT_EQ(ovSetApplMode("AutoCAD", "Pl\xE4ne"), 0);
  EXPECT_EQ(ovDisconnect(), 0);
  EXPECT_EQ(daemon.wait(), 0);
  EXPECT_EQ(daemon.output(),
            "Listening on port " + port + "\nclient connected: acad\nmode: Pl?ne\nclient gone: acad\n");
  const std::string time = "[0-9]{10,}\\.[0-9]{3} ";
  const std::regex expected(time + "client connected acad\n" + time + "event 131111\n" + time +
                            "motion 0 0 300 0 0 0\n" + time + "mode Pl.ne\n" + time + "client gone acad\n");
  EXPECT_TRUE(std::regex_match(contentOf(mFolder.file("record")), expected))
      << contentOf(mFolder.file("record"));
}

TEST_F(OvDaemonTest, takesVerbsFromItsInputAndNamesBadOnes) {
  Process daemon(mFolder, {"--port", "0", "--port-file", mFolder.file("port")});
  waitForPort(mFolder.file("port"));
  ASSERT_EQ(ovConnect(0, "acad"), 0);
  daemon.write("# comment\nwobble\nkey 1\n");
  int code = 0;
  EXPECT_TRUE(fetch(code));
  EXPECT_EQ(code, 0x20021);
  EXPECT_EQ(daemon.errors(), "standard input:2: unknown device verb \"wobble\"\n");
  daemon.closeInput();
  EXPECT_EQ(ovGetDevNum(nullptr, nullptr, nullptr), 0) << "the end of the input is not the end of the client";
  EXPECT_EQ(ovDisconnect(), 0);
  EXPECT_EQ(daemon.wait(), 0);
}

TEST_F(OvDaemonTest, endsCleanlyAtASignalAlsoWithInputOpen) {
  for (const int signal : {SIGTERM, SIGINT}) {
    Process daemon(mFolder, {"--port", "0", "--port-file", mFolder.file("port"), "--linger"});
    waitForPort(mFolder.file("port"));
    ASSERT_EQ(ovConnect(0, "acad"), 0);
    EXPECT_EQ(daemon.end(signal), 0);
    int code = 0;
    EXPECT_FALSE(fetch(code));
    ovDisconnect();
  }
}

TEST_F(OvDaemonTest, aStoppedDaemonIsNotWaitedForLong) {
  Process daemon(mFolder, {"--port", "0", "--port-file", mFolder.file("port")});
  waitForPort(mFolder.file("port"));
  ASSERT_EQ(ovConnect(0, "acad"), 0);
  daemon.stop();
  EXPECT_NE(ovGetDevNum(nullptr, nullptr, nullptr), 0);
  EXPECT_NE(ovSetApplMode("AutoCAD", "Model"), 0);
  EXPECT_NE(ovConnect(0, "acad"), 0) << "the system still takes connections for it";
  EXPECT_NE(ovDisconnect(), 0);
  daemon.goOn();
  EXPECT_EQ(ovConnect(0, "acad"), 0);
}

TEST_F(OvDaemonTest, saysWhatIsWrongAndDoesNotStart) {
  std::ofstream(mFolder.file("bad")) << "0 device key 1\n1 device wobble\n";
  {
    Process daemon(mFolder, {mFolder.file("bad"), "--port", "0"});
    EXPECT_EQ(daemon.wait(), 1);
    EXPECT_EQ(daemon.errors(), mFolder.file("bad") + ":2: unknown device verb \"wobble\"\n");
    EXPECT_EQ(daemon.output(), "");
  }
  {
    Process daemon(mFolder, {"--port", "0", "--record", mFolder.file("no/such/folder")});
    EXPECT_EQ(daemon.wait(), 1);
    EXPECT_THAT(daemon.errors(), HasSubstr("can't write"));
  }
  {
    Process daemon(mFolder, {"--port", "70000"});
    EXPECT_NE(daemon.wait(), 0);
    EXPECT_THAT(daemon.errors(), HasSubstr("70000"));
  }
  Process first(mFolder, {"--port", "0", "--port-file", mFolder.file("port"), "--linger"});
  const std::string port = waitForPort(mFolder.file("port"));
  Folder otherFolder;
  Process second(otherFolder, {"--port", port});
  EXPECT_EQ(second.wait(), 1);
  EXPECT_THAT(second.errors(), AllOf(HasSubstr("can't listen on port " + port), HasSubstr("in use")));
}

} // namespace
