// What the trace holds of calls, brackets and threads.

#include <thread>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "call_log.h"

namespace {

using call_log::Call;
using call_log::Record;
using testing::ElementsAre;

class TraceTest : public testing::Test {
protected:
  TraceTest() {
    call_log::startTrace([this](Record&& record) { mRecords.push_back(std::move(record)); });
  }
  ~TraceTest() override {
    call_log::stopTrace();
    call_log::noteBrackets(nullptr);
    call_log::clear();
  }
  /// Names of all records so far; entries with "into", calls that no bracket encloses in parentheses.
  std::vector<std::string> names() {
    call_log::flushTrace();
    std::vector<std::string> found;
    for (const Record& record : mRecords)
      found.push_back((record.isEntry() ? "into " : "") +
                      (record.isBracketed ? record.name : "(" + record.name + ")"));
    return found;
  }

  std::vector<Record> mRecords; // the worker's, until flushTrace() or stopTrace() has returned
};

TEST_F(TraceTest, HoldsArgumentsResultsAndTexts) {
  EXPECT_EQ(Call("look", L"name", call_log::shown(2.5), true).returns(7, L"found", -1), 7);
  call_log::stopTrace();
  const Record& record = mRecords.at(1);
  EXPECT_THAT(record.in, ElementsAre(2.5, 1));
  EXPECT_EQ(record.text, L"name");
  EXPECT_THAT(record.out, ElementsAre(7, -1));
  EXPECT_EQ(record.outText, L"found");
}

TEST_F(TraceTest, LeavesNestedCallsOut) {
  call_log::noteBrackets([](bool isEnd) { return std::string(isEnd ? "end" : "beginning"); });
  {
    const call_log::Bracket bracket("Tick");
    const Call outer("outer");
    const Call inner("inner");
    const call_log::Bracket loop("loop of the operation");
    const Call beneath("beneath");
  }
  EXPECT_THAT(names(), ElementsAre("into (Tick)", "outer", "(Tick)"));
  EXPECT_EQ(mRecords[2].note, "end");
}

TEST_F(TraceTest, OrdersRecordsOfThreads) {
  {
    const Call waiting("waiting");
    std::thread([] {
      const call_log::Bracket bracket("Tick");
      const Call call("meanwhile");
    }).join();
  }
  EXPECT_THAT(names(), ElementsAre("into (waiting)", "into (Tick)", "meanwhile", "(Tick)", "(waiting)"));
  EXPECT_NE(mRecords[0].thread, mRecords[1].thread);
  EXPECT_EQ(mRecords[0].thread, mRecords[4].thread);
  EXPECT_LT(mRecords[4].entered, mRecords[2].entered);
}

TEST_F(TraceTest, MarksCallsThatThrow) {
  call_log::throwAt("first", 1);
  EXPECT_THROW(Call("first"), call_log::InjectedFault);
  try {
    const Call call("second");
    throw std::runtime_error("of the operation itself");
  } catch (const std::runtime_error&) {
    Call("third").returns(4); // made while the handler runs, but ends well
  }
  call_log::stopTrace();
  ASSERT_EQ(mRecords.size(), 6U);
  EXPECT_TRUE(mRecords[1].threw && mRecords[3].threw);
  EXPECT_FALSE(mRecords[5].threw);
}

TEST_F(TraceTest, LosesNothingWhenManyWait) {
  for (int i = 0; i < 30000; ++i)
    const Call call("add", i);
  call_log::stopTrace();
  ASSERT_EQ(mRecords.size(), 60000U);
  for (std::size_t i = 0; i < mRecords.size(); ++i)
    ASSERT_EQ(mRecords[i].in.at(0), static_cast<double>(i / 2));
}

TEST_F(TraceTest, KeepsJournalAndFaults) {
  call_log::startRecording();
  call_log::failAt("second", 1);
  EXPECT_FALSE(Call("first", call_log::shown(1), 2, call_log::Quoted{L"a\nb"}).mustFail());
  EXPECT_TRUE(Call("second", L"text", call_log::Hex{0x1F, 4}, call_log::Word{0, "read"}).mustFail());
  EXPECT_THAT(call_log::stopRecording(), ElementsAre("first 1 \"a\\nb\"", "second text 0x001F read"));
}

} // namespace
