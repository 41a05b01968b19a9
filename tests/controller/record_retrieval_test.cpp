#include <gtest/gtest.h>

#include <initializer_list>
#include <string>
#include <utility>
#include <vector>

#include "controller/controller_test.h"

namespace ipodctl {
namespace {

using Entries = std::vector<std::pair<uint32_t, std::string>>;

Entries entriesOf(const RecordList& records) {
  Entries entries;
  for (const RecordEntry& record : records)
    entries.emplace_back(record.index, textOf(record.name));
  return entries;
}

constexpr const char* kRequestOfThree = "55 0C 04 00 1A 05 00 00 00 00 00 00 00 03";

const Bytes kRecord0 = {0x04, 0x00, 0x1B, 0x00, 0x00, 0x00, 0x00, 'a', 0x00};
const Bytes kRecord1 = {0x04, 0x00, 0x1B, 0x00, 0x00, 0x00, 0x01, 'b', 0x00};
const Bytes kRecord2 = {0x04, 0x00, 0x1B, 0x00, 0x00, 0x00, 0x02, 'c', 0x00};
const Bytes kRecordWithoutName = {0x04, 0x00, 0x1B, 0x00, 0x00, 0x00, 0x07};
const Bytes kNotification = {0x04, 0x00, 0x27, 0x04, 0x00, 0x00, 0x10, 0x00};

class RecordRetrieval : public ControllerTest {
 protected:
  /// Asks for three records and checks how often it waited and how many messages it left.
  bool retrieve(const Payloads& answer, uint32_t waits, uint32_t left) {
    callLog().clear();
    ipod().answer(kRequestOfThree, answer);
    const bool result = controller().RetrieveDbRecords(Category::kTracks, 0, 3, records);
    EXPECT_EQ(callLog(), (Calls{"flush", std::string("send ") + kRequestOfThree}) +
                             repeated(waits, {"wait 0 ns 1 s"}));
    EXPECT_EQ(ipod().queued(), left);
    EXPECT_EQ(liveMessages(), left);
    return result;
  }

  RecordList records;
};

TEST_F(RecordRetrieval, AppendsEachRecordInTheOrderOfItsArrival) {
  EXPECT_TRUE(retrieve({kRecord2, kRecord0, kRecord1}, 3, 0));
  EXPECT_EQ(entriesOf(records), (Entries{{2, "c"}, {0, "a"}, {1, "b"}}));
}

TEST_F(RecordRetrieval, KeepsWhatTheListHeldBefore) {
  RecordEntry before;
  before.index = 99;
  ASSERT_TRUE(records.append(std::move(before)));
  EXPECT_TRUE(retrieve({kRecord0, kRecord1, kRecord2}, 3, 0));
  EXPECT_EQ(entriesOf(records), (Entries{{99, ""}, {0, "a"}, {1, "b"}, {2, "c"}}));
}

TEST_F(RecordRetrieval, SendsCategoryStartAndCount) {
  controller().RetrieveDbRecords(Category{0xFF}, 0x01020304, 0x89ABCDEF, records);
  EXPECT_EQ(callLog(),
            (Calls{"flush", "send 55 0C 04 00 1A FF 01 02 03 04 89 AB CD EF", "wait 0 ns 1 s"}));
}

TEST_F(RecordRetrieval, OfNoRecordFailsAndSendsNothing) {
  EXPECT_FALSE(controller().RetrieveDbRecords(Category::kTracks, 0, 0, records));
  EXPECT_EQ(callLog(), Calls{});
}

TEST_F(RecordRetrieval, FailsWithoutALink) {
  IpodController unlinked(kNoLink);
  EXPECT_FALSE(unlinked.RetrieveDbRecords(Category::kTracks, 0, 3, records));
  EXPECT_EQ(callLog(), Calls{});
}

TEST_F(RecordRetrieval, KeepsTheRecordsReceivedBeforeTheSilence) {
  EXPECT_FALSE(retrieve({kRecord0, kRecord1}, 3, 0));
  EXPECT_EQ(entriesOf(records), (Entries{{0, "a"}, {1, "b"}}));
}

TEST_F(RecordRetrieval, ASecondOfSilenceEndsIt) {
  EXPECT_FALSE(retrieve({kRecord0, kSilence, kRecord1}, 2, 1));
  EXPECT_EQ(entriesOf(records), (Entries{{0, "a"}}));
}

TEST_F(RecordRetrieval, ANotificationBetweenRecordsCostsTheLastOne) {
  EXPECT_TRUE(retrieve({kRecord0, kNotification, kRecord1, kRecord2}, 3, 1));
  EXPECT_EQ(entriesOf(records), (Entries{{0, "a"}, {1, "b"}}));
}

TEST_F(RecordRetrieval, SucceedsThoughTheLastMessageIsANotification) {
  EXPECT_TRUE(retrieve({kRecord0, kRecord1, kNotification}, 3, 0));
  EXPECT_EQ(entriesOf(records), (Entries{{0, "a"}, {1, "b"}}));
}

TEST_F(RecordRetrieval, OfNotificationsOnlyFails) {
  EXPECT_FALSE(retrieve({kNotification, kNotification, kNotification, kRecord0}, 3, 1));
  EXPECT_EQ(entriesOf(records), Entries{});
}

TEST_F(RecordRetrieval, AFailingAcknowledgementCostsOneWaitAndNothingElse) {
  EXPECT_TRUE(retrieve({kRecord0, {0x04, 0x00, 0x01, 0x04, 0x00, 0x1A}, kRecord1}, 3, 0));
  EXPECT_EQ(entriesOf(records), (Entries{{0, "a"}, {1, "b"}}));
}

TEST_F(RecordRetrieval, EndsAtAnotherLingoAndKeepsTheRecordsSoFar) {
  const Payloads foreign = {{0x00, 0x02, 0x00, 0x05},
                            {0x00, 0x1B, 0x00, 0x00, 0x00, 0x01, 'x'},
                            {0x02, 0x00},
                            {0x0A, 0x02}};
  for (const Bytes& message : foreign) {
    SCOPED_TRACE(testing::Message() << "lingo " << int{message[0]});
    records.clear();
    EXPECT_FALSE(retrieve({kRecord0, message, kRecord1}, 2, 1));
    EXPECT_EQ(entriesOf(records), (Entries{{0, "a"}}));
  }
}

TEST_F(RecordRetrieval, ARecordWithoutANameIsNotAppended) {
  EXPECT_TRUE(retrieve({kRecord0, kRecordWithoutName, kRecord2}, 3, 0));
  EXPECT_EQ(entriesOf(records), (Entries{{0, "a"}, {2, "c"}}));
}

TEST_F(RecordRetrieval, ARecordWithoutANameAtTheEndFails) {
  EXPECT_FALSE(retrieve({kRecord0, kRecord1, kRecordWithoutName}, 3, 0));
  EXPECT_EQ(entriesOf(records), (Entries{{0, "a"}, {1, "b"}}));
}

TEST_F(RecordRetrieval, SucceedsIfTheLastRecordReceivedDecodes) {
  EXPECT_FALSE(retrieve({kRecord0, kRecordWithoutName, kNotification}, 3, 0));
  EXPECT_EQ(entriesOf(records), (Entries{{0, "a"}}));
}

TEST_F(RecordRetrieval, ARecordOfEveryShorterLengthIsNotAppended) {
  for (const uint32_t size : {3u, 4u, 5u, 6u, 7u}) {
    Bytes cut = kRecord1;
    cut.resize(size);
    EXPECT_FALSE(retrieve({kRecord0, kRecord2, cut}, 3, 0));
  }
  EXPECT_EQ(records.size(), 10u);
}

TEST_F(RecordRetrieval, AcceptsARecordWhoseNameDoesNotConvert) {
  const Bytes musicNote = {0x04, 0x00, 0x1B, 0x00, 0x00, 0x00, 0x05, 0xF0, 0x9F, 0x8E, 0xB5};
  const Bytes euro = {0x04, 0x00, 0x1B, 0x00, 0x00, 0x00, 0x06, 0xE2, 0x82, 0xAC};
  const Bytes emptyName = {0x04, 0x00, 0x1B, 0x00, 0x00, 0x00, 0x07, 0x00};
  EXPECT_TRUE(retrieve({musicNote, euro, emptyName}, 3, 0));
  EXPECT_EQ(entriesOf(records), (Entries{{5, ""}, {6, " "}, {7, ""}}));
}

TEST_F(RecordRetrieval, NameEndsAtItsZeroByteOrWithThePayload) {
  const Bytes zeroInside = {0x04, 0x00, 0x1B, 0xFF, 0xFF, 0xFF, 0xFE, 'x', 'y', 0x00, 'z'};
  const Bytes noZero = {0x04, 0x00, 0x1B, 0x01, 0x02, 0x03, 0x04, 'x', 'y'};
  const Bytes latin = {0x04, 0x00, 0x1B, 0x00, 0x00, 0x00, 0x01, 0xC3, 0xA9};
  EXPECT_TRUE(retrieve({zeroInside, noZero, latin}, 3, 0));
  EXPECT_EQ(entriesOf(records), (Entries{{0xFFFFFFFE, "xy"}, {0x01020304, "xy"}, {1, "\xE9"}}));
}

TEST_F(RecordRetrieval, IgnoresRecordsReceivedBeforeTheRequest) {
  ipod().arrive({kRecord0, kRecord1, kRecord2});
  EXPECT_FALSE(retrieve({}, 1, 0));
  EXPECT_EQ(entriesOf(records), Entries{});
}

TEST_F(RecordRetrieval, TheRecordThatWasLeftIsClearedByTheNextRequest) {
  EXPECT_TRUE(retrieve({kRecord0, kNotification, kRecord1, kRecord2}, 3, 1));
  ipod().answer("55 03 04 00 1E", {{0x04, 0x00, 0x1F, 0x00, 0x00, 0x00, 0x05}});
  RecordIndex index = 0;
  EXPECT_TRUE(controller().GetCurrentTrackIndex(index));
  EXPECT_EQ(index, 5);
}

}  // namespace
}  // namespace ipodctl
