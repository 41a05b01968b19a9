// Careless arguments to the exports, in every state of the connection: nothing crashes, nothing is
// written where nothing may be written, and every call returns.

#include <desk.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <climits>
#include <ostream>
#include <vector>

#include "support/guarded.h"
#include "support/loaded_library.h"
#include "support/session_ipod.h"

namespace session {
namespace {

using simulator::milliseconds;

enum class State { kBeforeTheFirstConnection, kConnected, kDisconnected, kVanished };

constexpr int kNumbers[] = {INT_MIN, INT_MIN + 1, -36, -35,     -2,          -1,     0,
                            15,      70,          71,  0x10000, INT_MAX - 1, INT_MAX};
constexpr int kSizesOfNothing[] = {0, -1, INT_MIN};

class BadInput : public testing::TestWithParam<State> {
 protected:
  void SetUp() override {
    if (GetParam() == State::kBeforeTheFirstConnection) return;
    ASSERT_EQ(exports.IpodConnect(), 1);
    ASSERT_NE(exports.IpodGetFirstItem(0, IPOD_GENRES, 0), nullptr);
    ASSERT_NE(exports.IpodGetFirstItem(1, IPOD_ARTISTS, 0), nullptr);
    exports.IpodValidateUpDownTree();
    ASSERT_NE(exports.IpodGetParentItem(), nullptr);
    exports.IpodSongPlay(0);
    if (GetParam() == State::kDisconnected) disconnect();
    if (GetParam() == State::kVanished) ipod.pty().unplug();
    if (GetParam() != State::kConnected) {
      ASSERT_TRUE(eventually([] { return deskRunningThreads() == 0; }));
    }
  }

  // Waits until the iPod has read the last message.
  void disconnect() {
    exports.IpodDisconnect();
    ASSERT_TRUE(ipod.waitUntil(
        [](const simulator::SimulatedIpod& device) { return !device.inExtendedMode(); }));
  }

  bool answers() const { return GetParam() == State::kConnected; }
  bool isUsed() const { return GetParam() != State::kBeforeTheFirstConnection; }

  // None of these requests is refused or lost, which would take a second.
  static constexpr milliseconds kBound{900};

  template <class Call>
  void inTime(const char* name, Call call) const {
    EXPECT_LT(durationOf(call), kBound) << name;
  }

  /// An export that writes a number.
  struct NumberReader {
    const char* name;
    int (*read)(int*);
    int resultOfAnAnswer;
    bool zeroWithoutAnAnswer;
  };

  std::vector<NumberReader> numberReaders() const {
    return {{"IpodSongGetNumElem", exports.IpodSongGetNumElem, 0, true},
            {"IpodGetTrackIndex", exports.IpodGetTrackIndex, 1, false},
            {"IpodGetShuffleMode", exports.IpodGetShuffleMode, 0, false},
            {"IpodGetRepeatMode", exports.IpodGetRepeatMode, 0, false},
            {"IpodGetCurrentPlayStatus", exports.IpodGetCurrentPlayStatus, 0, true},
            {"IpodGetCurrentTrackPosition", exports.IpodGetCurrentTrackPosition, 0, true},
            {"IpodGetMediaFileCount", exports.IpodGetMediaFileCount, 0, true}};
  }

  void readTexts(GuardedUnits& buffer, int size) {
    inTime("IpodGetName", [&] { EXPECT_EQ(exports.IpodGetName(buffer.units(), size), 0); });
    inTime("IpodGetSerialNumber",
           [&] { EXPECT_EQ(exports.IpodGetSerialNumber(buffer.units(), size), 0); });
  }
  void readNames(GuardedUnits& first, GuardedUnits& second, int size) {
    inTime("IpodGetItemName", [&] {
      EXPECT_EQ(exports.IpodGetItemName(size, first.units(), second.units(), size), 0);
    });
    inTime("IpodGetParentUpDownName", [&] {
      EXPECT_EQ(exports.IpodGetParentUpDownName(size, first.units(), second.units(), size), 0);
    });
  }
  void readTextsNowhere(int size) const {
    EXPECT_EQ(exports.IpodGetName(nullptr, size), 0);
    EXPECT_EQ(exports.IpodGetSerialNumber(nullptr, size), 0);
    EXPECT_EQ(exports.IpodGetItemName(0, nullptr, nullptr, size), 0);
    EXPECT_EQ(exports.IpodGetParentUpDownName(0, nullptr, nullptr, size), 0);
    EXPECT_EQ(exports.IpodGetTrackInfo(nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, size),
              answers() || !isUsed() ? 0 : -1);
  }
  void readTrackInfo(GuardedUnits& buffer, int size) {
    GuardedInt index;
    inTime("IpodGetTrackInfo", [&] {
      EXPECT_EQ(exports.IpodGetTrackInfo(index.value(), buffer.units(), buffer.units(),
                                         buffer.units(), buffer.units(), buffer.units(), size),
                answers() || !isUsed() ? 0 : -1);
    });
    EXPECT_TRUE(index.isGuarded());
    EXPECT_EQ(index.isUntouched(), !answers());
  }

  SessionIpod ipod;
  const LoadedLibrary exports;
};

const char* nameOf(State state) {
  constexpr const char* kNames[] = {"BeforeTheFirstConnection", "Connected", "Disconnected",
                                    "Vanished"};
  return kNames[static_cast<int>(state)];
}

void PrintTo(State state, std::ostream* out) { *out << nameOf(state); }

INSTANTIATE_TEST_SUITE_P(, BadInput,
                         testing::Values(State::kBeforeTheFirstConnection, State::kConnected,
                                         State::kDisconnected, State::kVanished),
                         [](const auto& state) { return nameOf(state.param); });

TEST_P(BadInput, NullPointersAreNotWrittenThrough) {
  for (const NumberReader& each : numberReaders()) {
    const int result = answers() ? each.resultOfAnAnswer : 0;
    inTime(each.name, [&] { EXPECT_EQ(each.read(nullptr), result) << each.name; });
  }
  for (const int size : {INT_MIN, -1, 0, 1, 64, INT_MAX})
    readTextsNowhere(size);
}

TEST_P(BadInput, BuffersWithoutASizeAreNotWritten) {
  for (const int size : kSizesOfNothing) {
    GuardedUnits first;
    GuardedUnits second;
    readTexts(first, size);
    readNames(first, second, size);
    readTrackInfo(first, size);
    EXPECT_TRUE(first.isUntouchedBut(0)) << size;
    EXPECT_TRUE(second.isUntouchedBut(0)) << size;
  }
}

// Every text is longer than the first two sizes and shorter than the last.
TEST_P(BadInput, BuffersAreNotWrittenBeyondTheirSize) {
  for (const int size : {1, 2, 64}) {
    GuardedUnits text;
    GuardedUnits first;
    GuardedUnits second;
    GuardedUnits track;
    const size_t most = answers() ? static_cast<size_t>(size) : 0;
    readTexts(text, size);
    EXPECT_TRUE(text.isUntouchedBut(most)) << size;
    readNames(first, second, size);
    EXPECT_TRUE(first.isUntouchedBut(most)) << size;
    EXPECT_TRUE(second.isUntouchedBut(most)) << size;
    readTrackInfo(track, size);
    EXPECT_TRUE(track.isUntouchedBut(most)) << size;
    EXPECT_EQ(text.isUntouchedBut(0), !answers());
    EXPECT_EQ(first.isUntouchedBut(0), !answers());
    EXPECT_EQ(track.isUntouchedBut(0), !answers());
  }
}

TEST_P(BadInput, NumbersAreWrittenWithinTheirVariables) {
  for (const NumberReader& each : numberReaders()) {
    GuardedInt number;
    inTime(each.name, [&] { each.read(number.value()); });
    EXPECT_TRUE(number.isGuarded()) << each.name;
    const bool written = answers() || (isUsed() && each.zeroWithoutAnAnswer);
    EXPECT_EQ(number.isUntouched(), !written) << each.name;
    if (written && !answers()) {
      EXPECT_EQ(*number.value(), 0) << each.name;
    }
  }
}

TEST_P(BadInput, CommandsAndModesOutOfRangeDoNothing) {
  exports.IpodSetShuffleMode(IPOD_MODE_TRACKS);
  exports.IpodSetRepeatMode(IPOD_MODE_TRACKS);
  const auto received = [&] {
    return ipod.look(
        [](simulator::SimulatedIpod& device) { return device.counters().messagesReceived; });
  };
  const size_t before = received();
  for (const int number : kNumbers) {
    inTime("IpodCommand", [&] { EXPECT_EQ(exports.IpodCommand(number), 0); });
    inTime("IpodSetShuffleMode", [&] { EXPECT_EQ(exports.IpodSetShuffleMode(number), 0); });
    inTime("IpodSetRepeatMode", [&] { EXPECT_EQ(exports.IpodSetRepeatMode(number), 0); });
    inTime("IpodSetSameIpod", [&] { exports.IpodSetSameIpod(number); });
    inTime("isIpodAudioPresent",
           [&] { EXPECT_EQ(exports.isIpodAudioPresent(number, number, number, number), 1); });
  }
  EXPECT_EQ(received(), before) << "nothing was asked of the iPod";
}

TEST_P(BadInput, TypesOutOfRangeOpenNothing) {
  for (const int type : kNumbers) {
    for (const int descend : {0, 1, INT_MIN}) {
      inTime("IpodGetFirstItem",
             [&] { EXPECT_EQ(exports.IpodGetFirstItem(descend, type, type), nullptr) << type; });
    }
  }
  EXPECT_EQ(exports.IpodGetType(), isUsed() ? int{IPOD_GENRES} : 0) << "the list is still open";
}

TEST_P(BadInput, TracksOutOfRangePlayFromTheFirst) {
  for (const int track : {INT_MIN, -2, 100000, INT_MAX}) {
    inTime("IpodSongPlay", [&] { EXPECT_EQ(exports.IpodSongPlay(track), 0); });
    GuardedInt index;
    exports.IpodGetTrackIndex(index.value());
    EXPECT_EQ(*index.value(), answers() ? 0 : int{GuardedInt::kUntouched}) << track;
  }
}

TEST_P(BadInput, TheTreeEndsAtTheSeventhLevelAndAtLevelZero) {
  for (int level = 2; level < 12; ++level) {
    const int* const index = exports.IpodGetFirstItem(INT_MIN, IPOD_ARTISTS, 0);
    EXPECT_EQ(index != nullptr, isUsed() && level <= 7) << level;
  }
  for (int level = 0; level < 12; ++level)
    inTime("IpodGetParentItem", [&] { exports.IpodGetParentItem(); });
  EXPECT_EQ(exports.IpodGetParentItem(), nullptr);
  EXPECT_EQ(exports.IpodGetNextItem(), nullptr);
  EXPECT_EQ(exports.IpodGetPrevItem(), nullptr);
}

// The exports that neither take nor write anything.
TEST_P(BadInput, CallsWithoutArgumentsReturn) {
  const int used = isUsed() ? 1 : 0;
  inTime("IpodIsConnect", [&] {
    const bool open = GetParam() == State::kConnected || GetParam() == State::kVanished;
    EXPECT_EQ(exports.IpodIsConnect(), open ? 1 : 0);
  });
  inTime("IpodGetNumberOfPlaylist",
         [&] { EXPECT_EQ(exports.IpodGetNumberOfPlaylist() > 0, answers()); });
  inTime("IpodValidateUpDownTree", [&] { EXPECT_EQ(exports.IpodValidateUpDownTree(), 0); });
  inTime("IpodCurItemIsEmpty",
         [&] { EXPECT_EQ(exports.IpodCurItemIsEmpty(), answers() ? 0 : used); });
  inTime("IpodIsPlayAll", [&] { EXPECT_EQ(exports.IpodIsPlayAll(), 0); });
  inTime("IpodIsTrack", [&] { EXPECT_EQ(exports.IpodIsTrack(), 0); });
  inTime("IpodIsTabActive", [&] { EXPECT_EQ(exports.IpodIsTabActive(), 0); });
  inTime("IpodIsTabVisualizationActive",
         [&] { EXPECT_EQ(exports.IpodIsTabVisualizationActive(), 0); });
  inTime("IpodDisableTabVisualizationActive",
         [&] { EXPECT_EQ(exports.IpodDisableTabVisualizationActive(), 0); });
  inTime("IpodEnableTabVisualizationActive",
         [&] { EXPECT_EQ(exports.IpodEnableTabVisualizationActive(), 0); });
  inTime("IpodGetNextItem", [&] { EXPECT_EQ(exports.IpodGetNextItem() != nullptr, isUsed()); });
  inTime("IpodGetPrevItem", [&] { EXPECT_EQ(exports.IpodGetPrevItem() != nullptr, isUsed()); });
  inTime("IpodDisconnect", [&] { EXPECT_EQ(exports.IpodDisconnect(), 0); });
  inTime("IpodDisconnect", [&] { EXPECT_EQ(exports.IpodDisconnect(), 0) << "again"; });
  inTime("IpodConnect",
         [&] { EXPECT_EQ(exports.IpodConnect(), GetParam() == State::kVanished ? 0 : 1); });
}

}  // namespace
}  // namespace session
