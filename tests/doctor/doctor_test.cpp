// The doctor as its users run it: on homes that are broken in one way each, during a session, and its reports.

#include <map>
#include <regex>
#include <set>
#include <thread>

#include <boost/crc.hpp>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "daemon_process.h"
#include "environment.h"
#include "quiet_port.h"

namespace {

using nlohmann::json;
using testing::HasSubstr;
namespace fs = std::filesystem;

constexpr char kSettings[] = "Orvaner/Applications/autocad_addin.ini";
constexpr char kMenu[] = "Orvaner/Applications/autocad.mnu";
constexpr char kLog[] = "Orvaner/autocad_addin_log.txt";
constexpr char kReader[] = "OvScribe2018.dll";
constexpr char kModule[] = "OVAutoCAD2019.arx";

std::string record(const std::string& type, const std::string& text) {
  return "10:11:12.345|" + type + "|  1234|some_file.cpp|  12| SomeClass::method | " + text + "\n";
}

/// Returns each file and folder by name, with its bytes and time.
std::map<std::string, std::pair<std::string, fs::file_time_type>>
everythingIn(const rig::TempFolder& folder) {
  std::map<std::string, std::pair<std::string, fs::file_time_type>> out;
  out[""].second = fs::last_write_time(folder.native());
  for (const auto& entry : fs::recursive_directory_iterator(folder.native())) {
    const std::string name = entry.path().lexically_relative(folder.native()).string();
    out[name] = {entry.is_directory() ? "" : folder.read(name), entry.last_write_time()};
  }
  return out;
}

class Doctor : public testing::Test {
protected:
  Doctor() {
    mHome.makeFolder("Orvaner/Applications");
    std::ifstream file(DEFAULT_SETTINGS, std::ios::binary);
    mHome.write(kSettings, {std::istreambuf_iterator<char>(file), {}});
    mHome.write(kMenu,
                "[Modes]\nStart\nLayout\nModel\n\n[MenuBar]\nA = x}_U\nB = x\n# c\nC = x}_PLAN;_W|y\n");
    mHome.write(kLog, "Orvane logfile 'autocad_addin_log.txt' opened at Wed Nov 25 2026\n" +
                          record("ERR", "Error in ovConnect()!") + record("CRT", "Constructed.") +
                          record("CRT", "Logging::~Logging(): destructing ..."));
    mModules.write(kReader, "");
    mModules.write(kModule, "");
    fs::copy(OV_LIBRARY, mModules.native());
    rig::setEnvironment("USERPROFILE", mHome.native());
    rig::setEnvironment("USERNAME", "Zaphod");
  }
  /// Returns the exit status; what it prints is in mOutput.
  int run(std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), {"--module", mModules.native(kModule)});
    const int status = Process(OV_DOCTOR, arguments, mOther.native("doctor")).wait(60);
    mOutput = mOther.read("doctor");
    return status;
  }
  void replaceIn(const std::string& file, const std::string& pattern, const std::string& by) {
    const std::string before = mHome.read(file);
    mHome.write(file, std::regex_replace(before, std::regex(pattern), by));
    ASSERT_NE(mHome.read(file), before);
  }
  void addToLog(const std::string& text, int times = 1) {
    std::string log = mHome.read(kLog);
    for (int i = 0; i < times; ++i)
      log += record("ERR", text);
    mHome.write(kLog, log);
  }

  rig::TempFolder mHome, mModules, mOther;
  std::string mOutput;
};

/// Answers as a daemon of an older version.
struct OldDaemon {
  OldDaemon() {
    rig::setEnvironment("OV_DEVLINK_PORT", std::to_string(mAcceptor.local_endpoint().port()));
    mThread = std::thread([this] {
      for (int i = 0; i < 2; ++i) { // the library, and who looks whether anybody listens
        asio::ip::tcp::socket peer = mAcceptor.accept();
        asio::error_code ignored;
        asio::write(peer, asio::buffer("\6\0\x81\0OVLK\1\0", 10), ignored);
        peer.read_some(asio::buffer(mRoom), ignored);
      }
    });
  }
  ~OldDaemon() { mThread.join(); }

  char mRoom[64];
  asio::io_context mIo;
  asio::ip::tcp::acceptor mAcceptor{mIo, {asio::ip::address_v4::loopback(), 0}};
  std::thread mThread;
};

struct BrokenHome {
  const char* mName;
  std::function<void()> mBreak;
  std::string mCode, mCause; // of the verdict
  int mStatus = 1;
};

TEST_F(Doctor, NamesWhatIsBrokenAndTouchesNothing) {
  mOther.write("panel", "rotation 13 zoomall\n");
  const DaemonProcess daemon(mOther, "600 device mode\n", "0", {"--panel", mOther.native("panel")});
  const auto log = mHome.read(kLog), settings = mHome.read(kSettings), menu = mHome.read(kMenu);
  std::unique_ptr<OldDaemon> old;
  const BrokenHome homes[] = {
      {"all well", [] {}, "all well", "All well.", 0},
      {"key missing", [&] { replaceIn(kSettings, "\ttmp .*\n", ""); }, "key missing", "lacks tmp"},
      {"blank line", [&] { replaceIn(kSettings, "(\tdebug .*\n)", "\n$1"); }, "key missing",
       "debug, tmp, fileToLog"},
      {"divisor 0", [&] { replaceIn(kSettings, "20000", "0    "); }, "divisor odd", "transSensBase = 0"},
      {"divisor -1", [&] { replaceIn(kSettings, "10000", "-1   "); }, "divisor odd", "rotSensBase = -1"},
      {"threshold", [&] { replaceIn(kSettings, "(minThreshold *= )0    ", "$0132767"); }, "threshold odd",
       "32767"},
      {"threshold -1", [&] { replaceIn(kSettings, "(minThreshold *= )0    ", "$0165535"); }, "threshold odd",
       "never lets"},
      {"no time", [&] { replaceIn(kSettings, "500 ", "0   "); }, "time odd", "maxContMoveTime = 0"},
      {"other", [&] { replaceIn(kSettings, "(useInt3dIntrfce *= )off", "$01on "); }, "other plug-in",
       "useInt3dIntrfce"},
      {"settings", [&] { mHome.remove(kSettings), mHome.makeFolder(kSettings); }, "unreadable",
       "autocad_addin.ini", 2},
      {"menu late", [&] { addToLog("keyEvent (3') too big (max. is -1)!"); }, "error in log",
       "keyEvent (N')"},
      {"menu missing", [&] { mHome.remove(kMenu); }, "menu missing", "no menu file"},
      {"two modes", [&] { replaceIn(kMenu, "Layout\n", ""); }, "modes missing", "2 modes"},
      {"menu cut", [&] { replaceIn(kMenu, "# c", ""); }, "menu cut short", "from line 10 on"},
      {"one error", [&] { addToLog("Error move3D()"), addToLog("ViewP could not be retrieved!", 500); },
       "error in log", "count 500"},
      {"two causes", [&] { replaceIn(kSettings, "20000", "0    "), mHome.remove(kMenu); }, "menu missing",
       "no menu"},
      {"long line", [&] { addToLog(std::string(300000, '\0')); }, "error in log", "count 1"},
      {"module missing", [&] { mModules.remove(kModule); }, "module missing", kModule},
      {"log missing", [&] { mHome.remove(kLog); }, "never loaded", "no log"},
      {"reader missing", [&] { mModules.remove(kReader); }, "reader missing", kReader},
      {"daemon absent", [&] { rig::setEnvironment("OV_DEVLINK_PORT", "1"); }, "daemon absent", "port 1."},
      {"other daemon", [&] { old = std::make_unique<OldDaemon>(); }, "daemon differs", "version"},
      {"folder missing", [&] { mHome.remove("Orvaner"); }, "folder missing", "Applications"},
  };
  for (const BrokenHome& home : homes) {
    SCOPED_TRACE(home.mName);
    rig::setEnvironment("OV_DEVLINK_PORT", daemon.port());
    mHome.remove(kSettings);
    mHome.write(kSettings, settings);
    mHome.write(kMenu, menu);
    mHome.write(kLog, log);
    mModules.write(kReader, "");
    mModules.write(kModule, "");
    home.mBreak();
    const auto before = everythingIn(mHome);
    EXPECT_EQ(run({"--json"}), home.mStatus);
    EXPECT_EQ(everythingIn(mHome), before);
    const json report = json::parse(mOutput, nullptr, false);
    ASSERT_FALSE(report.is_discarded()) << mOutput;
    EXPECT_EQ(report["verdict"]["code"], home.mCode) << mOutput;
    EXPECT_THAT(report["verdict"]["cause"].get<std::string>(), HasSubstr(home.mCause));
    if (home.mStatus != 0)
      continue;
    EXPECT_EQ(report["settings"]["keys"][2]["value"], "20000");
    EXPECT_EQ(report["menu"]["lines"][2]["gives"], "key 1");
    EXPECT_EQ(report["menu"]["lines"][2]["types"], "_PLAN;_W");
    EXPECT_EQ(report["log"]["unloaded"], "Wed Nov 25 2026 10:11:12.345 UTC");
    EXPECT_EQ(report["log"]["errors"][0]["count"], 1);
    EXPECT_EQ(report["device"]["rotation"], "13: camera about the point looked at, level horizon");
    EXPECT_EQ(report["device"]["zoom after view"], true);
  }
}

TEST_F(Doctor, DefaultsKeepOldFiles) {
  const std::string defaults = mHome.read(kSettings);
  mHome.write(kSettings, "mine");
  mHome.write(kSettings + std::string(".bak"), "older");
  run({"defaults"});
  EXPECT_EQ(mHome.read(kSettings), defaults);
  EXPECT_EQ(mHome.read(kSettings + std::string(".bak")), "older");
  EXPECT_EQ(mHome.read(kSettings + std::string(".bak2")), "mine");
  EXPECT_EQ(run({"wobble"}), 2);
}

int numberAt(const std::string& bytes, std::size_t place) {
  int number = 0;
  for (std::size_t i = 4; i-- > 0;)
    number = number << 8 | static_cast<unsigned char>(bytes[place + i]);
  return number;
}

TEST_F(Doctor, ReportNamesNobody) {
  addToLog("Menu file '" + mHome.backslashed("autocad.mnu") + "' of ZAPHOD, not zaphods, in " +
           mHome.native());
  EXPECT_EQ(run({"report", mOther.native("a.zip")}), 1) << mOutput;
  const std::string zip = mOther.read("a.zip");
  std::map<std::string, std::string> files;
  // An archive's end is 22 bytes, and says where its directory begins.
  for (auto at = static_cast<std::size_t>(numberAt(zip, zip.size() - 6));
       zip.compare(at, 4, "PK\1\2") == 0;) {
    const auto size = static_cast<std::size_t>(numberAt(zip, at + 24));
    const auto nameSize = static_cast<std::size_t>(numberAt(zip, at + 28) & 0xFFFF);
    const std::string name = zip.substr(at + 46, nameSize);
    files[name] = zip.substr(static_cast<std::size_t>(numberAt(zip, at + 42)) + 30 + nameSize, size);
    boost::crc_32_type crc;
    crc.process_bytes(files[name].data(), size);
    EXPECT_EQ(crc.checksum(), static_cast<unsigned>(numberAt(zip, at + 16))) << name;
    at += 46 + nameSize;
  }
  ASSERT_EQ(files.size(), 4u);
  EXPECT_EQ(files["autocad.mnu"], mHome.read(kMenu));
  EXPECT_EQ(files["autocad_addin.ini"], mHome.read(kSettings));
  EXPECT_THAT(files["findings.txt"],
              HasSubstr("Menu file '%USERPROFILE%\\autocad.mnu' of %NAME%, not zaphods, in %USERPROFILE%"));
  for (const std::string& name :
       {mHome.native(), mHome.backslashed(), std::string("ZAPHOD"), std::string("Zaphod")})
    EXPECT_EQ(zip.find(name), std::string::npos) << name;
}

TEST_F(Doctor, WatchDisturbsNoSession) {
  std::string session;
  std::set<std::string> samples, bars;
  for (int i = 0; i < 5; ++i) {
    const std::string sample = "0 0 " + std::to_string(100 * (i + 1)) + " 0 0 0";
    const int second = 4 + 2 * i;
    session += std::to_string(second) + " device motion " + sample + "\n";
    session += std::to_string(second + 1) + " device motion 0 0 0 0 0 0\n";
    session += std::to_string(second + 1) + ".5 device key 0\n";
    samples.insert("[" + std::regex_replace(sample, std::regex(" "), ",") + "]");
  }
  DaemonProcess daemon(mOther, session);
  rig::setEnvironment("OV_DEVLINK_PORT", daemon.port());
  Process host(OV_ACAD,
               {OV_DRAWING, "--session", mOther.native("a.session"), "--module", OV_MODULE, "--out",
                mOther.native("out"), "--device-record", mOther.native("record"), "--hold-seconds", "1"},
               mOther.native("acad"));
  while (host.isRunning() && !daemon.isRecorded("client connected acad"))
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  Process watch(OV_DOCTOR, {"--module", mModules.native("x"), "watch"}, mOther.native("watch"));
  EXPECT_EQ(host.wait(60), 0) << mOther.read("acad");
  EXPECT_TRUE(watch.isRunning());
  EXPECT_TRUE(daemon.isRecorded("client connected ov_doctor"));
  const json report = json::parse(mOther.read("out/session.json"));
  for (const json& frame : report["frames"])
    samples.erase(frame["sample"].dump());
  EXPECT_THAT(samples, testing::IsEmpty()) << "delivered, and not in any frame";
  int keys = 0;
  for (const json& command : report["commands"])
    keys += command["text"] == "\x1b\x1b";
  EXPECT_EQ(keys, 5);
  const std::string seen = mOther.read("watch");
  const std::regex key("key 0: A \\(_U\\)"), bar("Z\\[    \\|####\\]");
  EXPECT_EQ(std::distance(std::sregex_iterator(seen.begin(), seen.end(), key), {}), 5) << seen;
  EXPECT_GE(std::distance(std::sregex_iterator(seen.begin(), seen.end(), bar), {}), 5) << seen;
}

} // namespace
