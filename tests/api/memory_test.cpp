// The exports while allocations fail: each allocation of an export fails, first alone, then with
// all that follow it.

#include <functional>

#include "api/api_test.h"
#include "support/memory_limit.h"
#include "support/row_name.h"

using namespace ipodctl;

namespace {

constexpr int kRoom = 12;

/// An export, what it may do without memory, and what it does with memory.
struct MemoryCase : NamedRow {
  std::function<void()> prepare;
  std::function<bool()> call;  ///< true when the result is one that the export can have
  std::function<bool()> succeeds;
};

bool isRight(const Units& units, const std::string& text) { return units == holding(text, kRoom); }

bool isRightOrUntouched(const Units& units, const std::string& text) {
  return isRight(units, text) || units == untouched(kRoom);
}

using ReadText = int(unsigned short*);

Units readText(const std::function<ReadText>& read) {
  Units units = untouched(kRoom);
  read(units.data());
  return units;
}

MemoryCase textCase(const char* name, const std::function<ReadText>& read,
                    const std::string& text) {
  return {{name},
          [] {},
          [=] { return isRightOrUntouched(readText(read), text); },
          [=] { return isRight(readText(read), text); }};
}

using ReadNumber = int(IPODCTL_CALL*)(int*);

MemoryCase numberCase(const char* name, ReadNumber read, int withoutAnswer, int answer) {
  const auto value = [read] {
    int number = -77;
    read(&number);
    return number;
  };
  return {{name},
          [] {},
          [=] {
            const int number = value();
            return number == withoutAnswer || number == answer;
          },
          [=] { return value() == answer; }};
}

/// An export that always returns 0.
MemoryCase actionCase(const char* name, const std::function<int()>& action) {
  const auto returnsZero = [action] { return action() == 0; };
  return {{name}, [] {}, returnsZero, returnsZero};
}

void takeSnapshotOfTracksOfAGenre() {
  IpodGetFirstItem(0, IPOD_GENRES, 0);
  IpodGetFirstItem(1, IPOD_TRACKS, 1);
  IpodValidateUpDownTree();
}

int readTrackInfo(unsigned short* title) {
  return IpodGetTrackInfo(nullptr, nullptr, nullptr, title, nullptr, nullptr, kRoom);
}

int readGenre(unsigned short* genre) {
  return IpodGetTrackInfo(nullptr, nullptr, nullptr, nullptr, genre, nullptr, kRoom);
}

int readItem(unsigned short* name) { return IpodGetItemName(0, name, nullptr, kRoom); }

/// Either name of a label can be missing, or the whole label.
MemoryCase tabLabelCase() {
  MemoryCase row = textCase("TabLabel", readItem, "Rock - Soul");
  row.call = [] {
    const Units label = readText(readItem);
    return isRightOrUntouched(label, "Rock - Soul") || isRight(label, " - Soul") ||
           isRight(label, "Rock - ") || isRight(label, " - ");
  };
  return row;
}

int readParent(unsigned short* name) { return IpodGetParentUpDownName(0, name, nullptr, kRoom); }

MemoryCase prepared(const std::function<void()>& prepare, MemoryCase row) {
  row.prepare = prepare;
  return row;
}

std::vector<MemoryCase> readingCases() {
  return {
      textCase(
          "Name", [](auto* name) { return IpodGetName(name, kRoom); }, "Anna"),
      textCase(
          "SerialNumber", [](auto* serial) { return IpodGetSerialNumber(serial, kRoom); }, "5U82"),
      textCase("Title", readTrackInfo, "Waterloo"),
      textCase("Genre", readGenre, "\x05Pop"),
      prepared([] { IpodGetFirstItem(0, IPOD_TYPE_6, 0); },
               textCase("ItemName", readItem, "Audiobook")),
      prepared(takeSnapshotOfTracksOfAGenre, textCase("ParentName", readParent, "Rock")),
      numberCase("NumElem", IpodSongGetNumElem, 0, 3),
      numberCase("TrackIndex", IpodGetTrackIndex, -77, 1),
      numberCase("Shuffle", IpodGetShuffleMode, -77, 2),
      numberCase("Repeat", IpodGetRepeatMode, -77, 3),
      numberCase("PlayStatus", IpodGetCurrentPlayStatus, 0, 1),
      numberCase("Position", IpodGetCurrentTrackPosition, 0, 5000),
      prepared([] { IpodGetFirstItem(0, IPOD_GENRES, 0); },
               numberCase("MediaFileCount", IpodGetMediaFileCount, 0, 40)),
  };
}

std::vector<MemoryCase> commandCases() {
  return {
      actionCase("SetShuffle", [] { return IpodSetShuffleMode(2); }),
      actionCase("SetRepeat", [] { return IpodSetRepeatMode(2); }),
      actionCase("SongPlay", [] { return IpodSongPlay(0); }),
      actionCase("NextTrack", [] { return IpodCommand(IPOD_NEXT_TRACK); }),
      actionCase("PreviousTrack", [] { return IpodCommand(IPOD_PREVIOUS_TRACK); }),
      actionCase("Play", [] { return IpodCommand(IPOD_PLAY); }),
      actionCase("Pause", [] { return IpodCommand(IPOD_PAUSE); }),
      actionCase("PreviousTrackNoRestart",
                 [] { return IpodCommand(IPOD_PREVIOUS_TRACK_NO_RESTART); }),
      prepared(takeSnapshotOfTracksOfAGenre,
               actionCase("NextGroup", [] { return IpodCommand(IPOD_NEXT_GROUP); })),
      prepared(
          [] {
            IpodGetFirstItem(0, IPOD_ARTISTS, 0);
            IpodValidateUpDownTree();
          },
          actionCase("PreviousArtist", [] { return IpodCommand(IPOD_PREVIOUS_GROUP); })),
  };
}

std::vector<MemoryCase> listCases() {
  return {
      prepared([] { IpodGetFirstItem(0, IPOD_GENRES, 0); }, tabLabelCase()),
      {{"FirstItem"},
       [] {},
       [] { return IpodGetFirstItem(0, IPOD_GENRES, 0) != nullptr; },
       [] {
         return IpodGetFirstItem(0, IPOD_GENRES, 0) != nullptr && browseTree.levels[1].count == 40;
       }},
      {{"LowerFirstItem"},
       [] {},
       [] { return IpodGetFirstItem(1, IPOD_TRACKS, 1) != nullptr; },
       [] {
         IpodGetFirstItem(0, IPOD_GENRES, 0);
         return IpodGetFirstItem(1, IPOD_TRACKS, 1) != nullptr && browseTree.levels[2].count == 3;
       }},
      {{"CurItemIsEmpty"},
       [] { IpodGetFirstItem(0, IPOD_ARTISTS, 0); },
       [] {
         const int isEmpty = IpodCurItemIsEmpty();
         return isEmpty == 0 || isEmpty == 1;
       },
       [] { return IpodCurItemIsEmpty() == 0; }},
      {{"NumberOfPlaylist"},
       takeSnapshotOfTracksOfAGenre,
       [] {
         const int playlists = IpodGetNumberOfPlaylist();
         return playlists == 0 || playlists == 40;
       },
       [] { return IpodGetNumberOfPlaylist() == 40; }},
  };
}

std::vector<MemoryCase> memoryCases() {
  std::vector<MemoryCase> cases = readingCases();
  for (const auto& more : {commandCases(), listCases()})
    cases.insert(cases.end(), more.begin(), more.end());
  return cases;
}

class WithoutMemoryTest : public ConnectedApiTest {
 protected:
  void SetUp() override {
    ConnectedApiTest::SetUp();
    count("02", 3);
    count("04", 40);
    count("05", 3);
    count("07", 3);
    playState("01", 5000);
    playingIndex(1);
    record("04", 0, "Rock");
    record("04", 34, "Soul");
    record("06", 0, "Audiobook");
    ipod.answer(kRequestIpodName, {"00 08" + textBytes("Anna")});
    ipod.answer(kRequestSerialNumber, {"00 0C 35 55 38 32"});
    ipod.answer(kGetTrackTitle, {"04 00 21" + textBytes("Waterloo")});
    ipod.answer(kGetTrackArtist + " 00 00 00 00", {"04 00 23" + textBytes("Abba")});
    ipod.answer(kGetTrackArtist + " 00 00 00 01", {"04 00 23" + textBytes("Beck")});
    ipod.answer(kGetTrackArtist + " 00 00 00 02", {"04 00 23" + textBytes("Cher")});
    ipod.answer(kGetTrackInfo, {"04 00 0D 05" + textBytes("Pop")});
    ipod.answer(kGetShuffle, {"04 00 2D 01"});
    ipod.answer(kGetRepeat, {"04 00 30 02"});
  }

  /// Waits until the library has received the answers that were too late for their requests. It
  /// discards them before its next request. The notification after them arrives last.
  void letLateAnswersArrive() {
    forgetEvents();
    ipod.send("0A 04 00 00 AC 44 00 00 00 00 00 00 00 00");
    ASSERT_TRUE(log.waitFor("SelectFrequency(44100 Hz)"));
  }
};

class ExportWithoutMemory : public WithoutMemoryTest,
                            public testing::WithParamInterface<MemoryCase> {};

TEST_P(ExportWithoutMemory, FailsAsWithoutAnAnswerAndWorksAgainAfterwards) {
  forEachFailure([this](const FailurePoint& point) {
    GetParam().prepare();
    bool struck = false;
    {
      const MemoryLimit memory(point);
      const QuickTimeOuts quickTimeOuts([&] { return memory.struck(); });
      EXPECT_TRUE(GetParam().call()) << point.allowed;
      struck = memory.struck();
    }
    EXPECT_TRUE(libraryLockIsFree());
    letLateAnswersArrive();
    GetParam().prepare();
    EXPECT_TRUE(GetParam().succeeds()) << point.allowed;
    return struck;
  });
}

INSTANTIATE_TEST_SUITE_P(Exports, ExportWithoutMemory, testing::ValuesIn(memoryCases()),
                         rowName<MemoryCase>);

TEST_F(WithoutMemoryTest, ConnectingFailsOrSucceedsAndSucceedsAfterwards) {
  IpodDisconnect();
  forEachFailure([this](const FailurePoint& point) {
    bool struck = false;
    {
      const MemoryLimit memory(point);
      const QuickTimeOuts quickTimeOuts([&] { return memory.struck(); });
      const int result = IpodConnect();
      struck = memory.struck();
      EXPECT_EQ(IpodIsConnect(), result) << point.allowed;
      EXPECT_TRUE(result == 1 || struck) << point.allowed;
    }
    IpodDisconnect();
    EXPECT_EQ(IpodConnect(), 1) << point.allowed;
    letLateAnswersArrive();
    EXPECT_EQ(readText([](unsigned short* name) { return IpodGetName(name, kRoom); }),
              holding("Anna", kRoom))
        << point.allowed;
    IpodDisconnect();
    return struck;
  });
}

TEST_F(WithoutMemoryTest, DisconnectingSucceeds) {
  forEachFailure([](const FailurePoint& point) {
    bool struck = false;
    {
      const MemoryLimit memory(point);
      EXPECT_EQ(IpodDisconnect(), 0);
      struck = memory.struck();
    }
    EXPECT_EQ(IpodIsConnect(), 0);
    EXPECT_EQ(IpodConnect(), 1) << point.allowed;
    return struck;
  });
}

}  // namespace
