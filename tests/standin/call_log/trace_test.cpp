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
  void SetUp() override {
    call_log::startTrace([this](Record&& record) { mRecords.push_back(std::move(record)); });
  }
  void TearDown() override {
    call_log::stopTrace();
    call_log::noteBrackets(nullptr);
    call_log::clear();
  }
  /// All records so far, entries left out.
  std::vector<Record> ended() {
    call_log::flushTrace();
    std::vector<Record> found;
    for (const Record& record : mRecords)
      if (!record.isEntry())
        found.push_back(record);
    return found;
  }
  std::vector<std::string> names() {
    std::vector<std::string> found;
    for (const Record& record : ended())
      found.push_back(record.isBracketed ? record.name : "(" + record.name + ")");
    return found;
  }

  std::vector<Record> mRecords; // the worker's, until flushTrace() or stopTrace() has returned
};

TEST_F(TraceTest, HoldsArgumentsResultsAndTexts) {
  const int object = 0;
  {
    Call call("look", &object, L"name", call_log::shown(2.5), true);
    EXPECT_EQ(call.returns(7, L"found", -1), 7);
  }
  const std::vector<Record> records = ended();
  ASSERT_EQ(records.size(), 1U);
  const double address = static_cast<double>(reinterpret_cast<std::uintptr_t>(&object));
  EXPECT_THAT(records[0].in, ElementsAre(address, 2.5, 1));
  EXPECT_EQ(records[0].text, L"name");
  EXPECT_THAT(records[0].out, ElementsAre(7, -1));
  EXPECT_EQ(records[0].outText, L"found");
  EXPECT_FALSE(records[0].threw);
}

TEST_F(TraceTest, LeavesNestedCallsOut) {
  {
    const call_log::Bracket bracket("Tick");
    {
      const Call outer("outer");
      const Call inner("inner");
      const call_log::Bracket loop("loop of the operation");
      const Call beneath("beneath");
    }
    const Call second("second");
  }
  {
    const Call outside("outside");
    const Call inner("inner");
  }
  EXPECT_THAT(names(), ElementsAre("outer", "second", "(Tick)", "(outside)"));
}

TEST_F(TraceTest, MarksCallsThatThrow) {
  call_log::throwAt("first", 1);
  EXPECT_THROW(Call("first", 1), call_log::InjectedFault);
  try {
    Call call("second");
    call.returns(3);
    throw std::runtime_error("of the operation itself");
  } catch (const std::runtime_error&) {
    Call("third").returns(4); // made while the handler runs, but ends well
  }
  const std::vector<Record> records = ended();
  ASSERT_EQ(records.size(), 3U);
  EXPECT_TRUE(records[0].threw);
  EXPECT_TRUE(records[1].threw);
  EXPECT_TRUE(records[1].out.empty());
  EXPECT_FALSE(records[2].threw);
}

TEST_F(TraceTest, OrdersEntriesAndEndsOfThreads) {
  {
    const Call waiting("waiting");
    std::thread([] {
      const call_log::Bracket bracket("Tick");
      const Call call("meanwhile");
    }).join();
  }
  call_log::flushTrace();
  std::vector<std::string> order;
  for (const Record& record : mRecords)
    order.push_back((record.isEntry() ? "into " : "") + record.name);
  EXPECT_THAT(order, ElementsAre("into waiting", "into Tick", "meanwhile", "Tick", "waiting"));
  EXPECT_NE(mRecords[0].thread, mRecords[1].thread);
  EXPECT_EQ(mRecords[0].thread, mRecords[4].thread);
  for (std::size_t i = 1; i < mRecords.size(); ++i)
    EXPECT_GT(mRecords[i].order, mRecords[i - 1].order);
  EXPECT_EQ(mRecords[4].entered < mRecords[2].entered, true);
}

TEST_F(TraceTest, NotesAtTheEndOfBrackets) {
  call_log::noteBrackets([](bool isEnd) { return std::string(isEnd ? "end" : "beginning"); });
  { const call_log::Bracket bracket("Tick"); }
  EXPECT_EQ(ended().at(0).note, "end");
}

TEST_F(TraceTest, LosesNothingBehindSlowSink) {
  std::int64_t sum = 0;
  call_log::startTrace([&sum](Record&& record) {
    if (!record.isEntry() && record.name == "add")
      sum += static_cast<std::int64_t>(record.in.at(0));
    if (record.order % 1000 == 0)
      std::this_thread::sleep_for(std::chrono::milliseconds(2));
  });
  constexpr std::int64_t kCalls = 30000; // more than the ring has room for
  for (std::int64_t i = 1; i <= kCalls; ++i)
    const Call call("add", i);
  call_log::stopTrace();
  EXPECT_EQ(sum, kCalls * (kCalls + 1) / 2);
}

TEST_F(TraceTest, KeepsJournalAndFaults) {
  call_log::startRecording();
  call_log::failAt("second", 1);
  EXPECT_FALSE(Call("first", call_log::shown(1), 2, call_log::Quoted{L"a\nb"}).mustFail());
  EXPECT_TRUE(Call("second", L"text", call_log::Hex{0x1F, 4}, call_log::Word{0, "read"}).mustFail());
  EXPECT_THAT(call_log::stopRecording(), ElementsAre("first 1 \"a\\nb\"", "second text 0x001F read"));
}

} // namespace
