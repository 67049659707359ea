#include "device_record.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>

namespace {

using program::DeviceEvent;

std::vector<DeviceEvent> read(const std::string& text) {
  const std::string path = testing::TempDir() + "device_record_test.txt";
  std::ofstream(path, std::ios::binary) << text;
  const std::vector<DeviceEvent> events = program::readDeviceRecord(path);
  std::remove(path.c_str());
  return events;
}

TEST(DeviceRecordTest, ReadsEachKindOfLineAndPassesOverWhatIsNone) {
  const auto events =
      read("1700000000.125 motion 1 -2 300 -4 5 -32768\n"
           "1700000000.250 event 131081\n"
           "1700000000.300 event 0x20020\r\n"
           "1700000000.375 mode Model space\n"
           "\nnonsense\n5 motion 1 2 3\nnan event 7\n6 event\n"
           "1700000000.500 client connected acad\n"
           "1700000000.600 motion 1 2 3 4 5"); // the daemon may be ended in the middle of a line
  ASSERT_EQ(events.size(), 5u);
  EXPECT_DOUBLE_EQ(events[0].mUnixSeconds, 1700000000.125);
  EXPECT_EQ(events[0].mKind, DeviceEvent::Kind::motion);
  EXPECT_EQ(events[0].mSample, (std::array<int, 6>{1, -2, 300, -4, 5, -32768}));
  EXPECT_EQ(events[1].mKind, DeviceEvent::Kind::event);
  EXPECT_EQ(events[1].mCode, 0x20009);
  EXPECT_EQ(events[2].mCode, 0x20020);
  EXPECT_EQ(events[3].mKind, DeviceEvent::Kind::mode);
  EXPECT_EQ(events[3].mText, "Model space");
  EXPECT_EQ(events[4].mKind, DeviceEvent::Kind::other);
  EXPECT_EQ(events[4].mText, "client connected acad");
  EXPECT_TRUE(program::readDeviceRecord(testing::TempDir() + "there/is/none").empty());
}

TEST(DeviceRecordTest, SampleInForceIsThatOfTheLastMotion) {
  const auto events = read("10 motion 1 0 0 0 0 0\n11 event 5\n12 motion 2 0 0 0 0 0\n12 motion 3 0 0 0 0 0\n"
                           "11.5 motion 0 7 0 0 0 0\n");
  program::SampleCursor cursor(events);
  EXPECT_EQ(cursor.at(9.9)[0], 0);
  EXPECT_EQ(cursor.at(10)[0], 1);
  EXPECT_EQ(cursor.at(11.2)[0], 1);
  EXPECT_EQ(cursor.at(11.6)[1], 7) << "lines out of order are put in order";
  EXPECT_EQ(cursor.at(12)[0], 3) << "of two at one time the later one wins";
  EXPECT_EQ(cursor.at(100)[0], 3);
}

} // namespace
