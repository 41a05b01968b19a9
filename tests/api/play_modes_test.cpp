#include <climits>

#include "api/api_test.h"
#include "support/row_name.h"

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

/// Shuffle and repeat, which differ only in requests and words.
struct ModeExports : NamedRow {
  int(IPODCTL_CALL* set)(int);
  int(IPODCTL_CALL* get)(int*);
  std::string setRequest;
  std::string getRequest;
  const char* getReply;
  const char* activated[3];
  const char* isActive[3];
};

const ModeExports kShuffle = {
    "Shuffle",
    IpodSetShuffleMode,
    IpodGetShuffleMode,
    kSetShuffle,
    kGetShuffle,
    "04 00 2D",
    {"\nShuffle Off\n", "\nShuffle tracks activated\n", "\nShuffle album activated\n"},
    {"\nThe shuffle is off\n", "\nThe shuffle is active in mode Tracks\n",
     "\nThe shuffle is active in mode Albums\n"},
};

const ModeExports kRepeat = {
    "Repeat",
    IpodSetRepeatMode,
    IpodGetRepeatMode,
    kSetRepeat,
    kGetRepeat,
    "04 00 30",
    {"\nRepeat Off\n", "\nRepeat tracks activated\n", "\nRepeat album activated\n"},
    {"\nThe Repeat is off\n", "\nThe Repeat is active in mode Tracks\n",
     "\nThe Repeat is active in mode Albums\n"},
};

constexpr const char* kIpodModes[] = {" 00", " 01", " 02"};

class PlayModeTest : public ConnectedApiTest, public testing::WithParamInterface<ModeExports> {
 protected:
  const ModeExports& mode = GetParam();
};

TEST_P(PlayModeTest, SetSendsTheIpodsModeAndPrintsIt) {
  for (int hostMode = 1; hostMode <= 3; ++hostMode) {
    forgetEvents();
    EXPECT_EQ(printed([&] { EXPECT_EQ(mode.set(hostMode), 0); }), mode.activated[hostMode - 1]);
    EXPECT_THAT(events(), ElementsAre(mode.setRequest + kIpodModes[hostMode - 1]));
  }
}

TEST_P(PlayModeTest, SetPrintsTheModeEvenIfTheIpodRefuses) {
  ipod.refuse(mode.setRequest);
  EXPECT_EQ(printed([&] { EXPECT_EQ(mode.set(2), 0); }), mode.activated[1]);
  EXPECT_THAT(events(), ElementsAre(mode.setRequest + " 01"));
}

TEST_P(PlayModeTest, SetWithAnotherValueDoesNothing) {
  for (const int hostMode : {0, 4, -1, 257, INT_MAX, INT_MIN}) {
    EXPECT_EQ(printed([&] { EXPECT_EQ(mode.set(hostMode), 0); }), "") << hostMode;
    EXPECT_THAT(events(), IsEmpty()) << hostMode;
  }
}

TEST_P(PlayModeTest, GetWritesTheHostsModeAndPrintsIt) {
  for (int hostMode = 1; hostMode <= 3; ++hostMode) {
    ipod.answer(mode.getRequest, {std::string(mode.getReply) + kIpodModes[hostMode - 1]});
    forgetEvents();
    int value = -5;
    EXPECT_EQ(printed([&] { EXPECT_EQ(mode.get(&value), 0); }), mode.isActive[hostMode - 1]);
    EXPECT_EQ(value, hostMode);
    EXPECT_THAT(events(), ElementsAre(mode.getRequest));
  }
}

TEST_P(PlayModeTest, GetReadsTheFirstByteOfALongerAnswer) {
  ipod.answer(mode.getRequest, {std::string(mode.getReply) + " 02 00 00"});
  int value = -5;
  EXPECT_EQ(mode.get(&value), 0);
  EXPECT_EQ(value, 3);
}

TEST_P(PlayModeTest, GetLeavesTheOutputUntouchedForAnUnknownMode) {
  for (const char* ipodMode : {" 03", " 04", " 80", " FF"}) {
    ipod.answer(mode.getRequest, {std::string(mode.getReply) + ipodMode});
    int value = -5;
    EXPECT_EQ(printed([&] { EXPECT_EQ(mode.get(&value), 0); }), "") << ipodMode;
    EXPECT_EQ(value, -5) << ipodMode;
  }
}

TEST_P(PlayModeTest, GetLeavesTheOutputUntouchedWithoutAnAnswer) {
  for (const char* reply : {"00 02 05 00", mode.getReply}) {
    ipod.answer(mode.getRequest, {reply});
    int value = -5;
    EXPECT_EQ(printed([&] { EXPECT_EQ(mode.get(&value), 0); }), "") << reply;
    EXPECT_EQ(value, -5) << reply;
  }
}

TEST_P(PlayModeTest, GetPrintsTheModeEvenWithoutAnOutput) {
  ipod.answer(mode.getRequest, {std::string(mode.getReply) + " 01"});
  EXPECT_EQ(printed([&] { EXPECT_EQ(mode.get(nullptr), 0); }), mode.isActive[1]);
}

INSTANTIATE_TEST_SUITE_P(Modes, PlayModeTest, testing::Values(kShuffle, kRepeat),
                         rowName<ModeExports>);

}  // namespace
