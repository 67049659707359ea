#ifndef TRIAL_H
#define TRIAL_H

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <fstream>
#include <string>

#include <unistd.h>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#ifdef _WIN32
inline void alarm(unsigned) {} // only the test run's own time limit applies
#endif

/// One endurance trial: how many cases were tried and how many the system survived.
///
/// The destructor expects the two to be equal, and writes them as a line of JSON to the results folder: $OV_RESULTS,
/// or else the build's own. A case that takes too long ends the program, since a stall isn't survival.
class Trial {
public:
  /// what  one plain sentence; the table of all trials knows the trial by it
  explicit Trial(const std::string& what) : mLine{{"what", what}, {"detail", ""}} {
    const auto* const infoP = testing::UnitTest::GetInstance()->current_test_info();
    const char* const wishP = std::getenv("OV_RESULTS");
    const std::filesystem::path folder = wishP && *wishP ? wishP : OV_RESULTS_FOLDER;
    std::filesystem::create_directories(folder);
    mFile = folder / (std::string(infoP->test_suite_name()) + "." + infoP->name() + ".json");
    alarm(kLongestCase);
    std::filesystem::remove(mFile); // so that a run that dies doesn't leave an old line
  }
  ~Trial() {
    // What went wrong outside of the cases counts as one more.
    if (mSurvived == mTried && (std::uncaught_exceptions() > 0 || testing::Test::HasFailure()))
      count("the trial itself", false);
    alarm(0);
    EXPECT_GT(mTried, 0) << mLine["what"];
    EXPECT_EQ(mSurvived, mTried) << mLine["what"] << "\nNot survived: " << mFailures;
    mLine["tried"] = mTried;
    mLine["survived"] = mSurvived;
    std::ofstream(mFile) << mLine << '\n';
  }
  Trial(const Trial&) = delete;
  Trial& operator=(const Trial&) = delete;

  /// Counts some cases, survived or not.
  void count(const std::string& name, bool isSurvived, std::int64_t cases = 1) {
    alarm(kLongestCase);
    mTried += cases;
    mSurvived += isSurvived ? cases : 0;
    if (!isSurvived && mFailures.size() < kFailureRoom)
      mFailures += name + "; ";
  }
  /// Counts one case of a trial in which the user's settings can be lost.
  void keep(bool isKept) { mLine["kept"] = mLine.value("kept", 0) + (isKept ? 1 : 0); }
  /// Adds what was seen meanwhile, for the table.
  void detail(const std::string& text) {
    auto& all = mLine["detail"].get_ref<std::string&>();
    all += (all.empty() ? "" : ", ") + text;
  }

private:
  static constexpr unsigned kLongestCase = 300; // seconds
  static constexpr std::size_t kFailureRoom = 2000;

  nlohmann::json mLine;
  std::string mFailures;
  std::filesystem::path mFile;
  std::int64_t mTried = 0, mSurvived = 0;
};

/// Returns a trial's size: the short one by itself, times $OV_ENDURANCE if that is set, up to the full one.
inline std::int64_t scaled(std::int64_t shortSize, std::int64_t fullSize) {
  const char* const factorP = std::getenv("OV_ENDURANCE");
  const double factor = factorP && *factorP ? std::max(std::atof(factorP), 0.0) : 1.0;
  const double size = std::min(static_cast<double>(shortSize) * factor, static_cast<double>(fullSize));
  return std::max<std::int64_t>(static_cast<std::int64_t>(size), 1);
}

#endif
