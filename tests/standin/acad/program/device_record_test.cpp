#include "device_record.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>

namespace {

using Kind = program::DeviceEvent::Kind;

TEST(DeviceRecordTest, ReadsLinesAndFindsSamples) {
  const std::string path = testing::TempDir() + "device_record_test.txt";
  std::ofstream(path) << "10.125 motion 1 -2 300 -4 5 -32768\n"
                         "10.250 event 131081\r\n"
                         "10.375 mode Model space\n"
                         "\nnonsense\n5 motion 1 2 3\nnan event 7\n6 event\n"
                         "12 motion 3 0 0 0 0 0\n11 motion 2 0 0 0 0 0\n"
                         "13 motion 1 2 3 4 5"; // the daemon may be ended in the middle of a line
  const auto events = program::readDeviceRecord(path);
  std::remove(path.c_str());
  ASSERT_EQ(events.size(), 5u);
  EXPECT_DOUBLE_EQ(events[0].mUnixSeconds, 10.125);
  EXPECT_EQ(events[0].mSample, (std::array<int, 6>{1, -2, 300, -4, 5, -32768}));
  EXPECT_EQ(events[1].mKind, Kind::event);
  EXPECT_EQ(events[1].mCode, 0x20009);
  EXPECT_EQ(events[2].mText, "Model space");
  program::SampleCursor cursor(events);
  for (const auto& [seconds, x] : {std::make_pair(10.0, 0), {10.2, 1}, {11.5, 2}, {12, 3}, {100, 3}})
    EXPECT_EQ(cursor.at(seconds)[0], x) << seconds;
  EXPECT_TRUE(program::readDeviceRecord(path).empty()) << "there is none";
}

} // namespace
