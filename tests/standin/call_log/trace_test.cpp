// The trace's order while several threads make calls. A wrong name, argument or result of a call would contradict
// the model, and needs no test here.

#include <thread>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "call_log.h"

namespace {

using call_log::Call;
using call_log::Record;

class TraceTest : public testing::Test {
protected:
  TraceTest() {
    call_log::startTrace([this](Record&& record) { mRecords.push_back(std::move(record)); });
  }
  ~TraceTest() override { call_log::stopTrace(); }

  std::vector<Record> mRecords; // the worker's, until stopTrace() has returned
};

TEST_F(TraceTest, OrdersRecordsOfThreads) {
  {
    const Call waiting("waiting");
    std::thread([] { const Call call("meanwhile"); }).join();
  }
  call_log::stopTrace();
  std::vector<std::string> names;
  for (const Record& record : mRecords)
    names.push_back((record.isEntry() ? "into " : "") + record.name);
  EXPECT_THAT(names, testing::ElementsAre("into waiting", "into meanwhile", "meanwhile", "waiting"));
  EXPECT_NE(mRecords[0].thread, mRecords[1].thread);
  EXPECT_EQ(mRecords[0].thread, mRecords[3].thread);
  EXPECT_LT(mRecords[3].entered, mRecords[2].entered);
}

} // namespace
