#include <climits>

#include "api/api_test.h"
#include "support/row_name.h"

using namespace ipodctl;

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

class IpodGetItemNameTest : public ConnectedApiTest {
 protected:
  /// Opens a list of genres with this name of its first item.
  void openNamed(const std::string& name) {
    openTree(IPOD_GENRES, 3);
    record("04", 0, name);
  }

  /// Reads the current entry's name into two fresh buffers of just `maxChars` units.
  void read(int maxChars) {
    first = untouched(static_cast<std::size_t>(std::max(maxChars, 0)));
    second = first;
    EXPECT_EQ(IpodGetItemName(0, first.data(), second.data(), maxChars), 0);
  }

  Units first;
  Units second;
};

TEST_F(IpodGetItemNameTest, SplitsFiftyBytesIntoThirtyUnitsAndTwenty) {
  openNamed("abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWX");
  read(30);
  EXPECT_EQ(first, holding("abcdefghijklmnopqrstuvwxyzABCD", 30));
  EXPECT_EQ(second, holding("EFGHIJKLMNOPQRSTUVWX", 30));
  EXPECT_THAT(events(), ElementsAre(kRetrieveRecords + " 04 00 00 00 00 00 00 00 01"));
}

TEST_F(IpodGetItemNameTest, IsCutAfterBothBuffers) {
  openNamed("abcdefghij");
  read(3);
  EXPECT_EQ(first, holding("abc", 3));
  EXPECT_EQ(second, holding("def", 3));
}

TEST_F(IpodGetItemNameTest, LeavesTheRestUntouchedIfTheNameFits) {
  openNamed("abc");
  read(5);
  EXPECT_EQ(first, holding("abc", 5));
  EXPECT_EQ(second, untouched(5));
}

TEST_F(IpodGetItemNameTest, LeavesTheSecondBufferUntouchedIfTheNameFitsExactly) {
  openNamed("abc");
  read(3);
  EXPECT_EQ(first, holding("abc", 3));
  EXPECT_EQ(second, untouched(3));
}

TEST_F(IpodGetItemNameTest, BeginsTheSecondBufferIfTheNameIsOneUnitLonger) {
  openNamed("abcd");
  read(3);
  EXPECT_EQ(first, holding("abc", 3));
  EXPECT_EQ(second, holding("d", 3));
}

TEST_F(IpodGetItemNameTest, WithoutRoomWritesNothing) {
  openNamed("abc");
  for (const int maxChars : {0, -1, -30, INT_MIN}) {
    first = untouched(2);
    second = untouched(2);
    EXPECT_EQ(IpodGetItemName(0, first.data(), second.data(), maxChars), 0);
    EXPECT_EQ(first, untouched(2)) << maxChars;
    EXPECT_EQ(second, untouched(2)) << maxChars;
  }
}

TEST_F(IpodGetItemNameTest, WithEndlessRoomWritesTheName) {
  openNamed("abc");
  first = untouched(4);
  EXPECT_EQ(IpodGetItemName(0, first.data(), second.data(), INT_MAX), 0);
  EXPECT_EQ(first, holding("abc", 4));
}

TEST_F(IpodGetItemNameTest, NeedsNoBuffers) {
  openNamed("abcdef");
  first = untouched(4);
  EXPECT_EQ(IpodGetItemName(0, nullptr, nullptr, 4), 0);
  EXPECT_EQ(IpodGetItemName(0, nullptr, first.data(), 4), 0);
  EXPECT_EQ(first, holding("ef", 4));
  EXPECT_EQ(IpodGetItemName(0, first.data(), nullptr, 4), 0);
  EXPECT_EQ(first, holding("abcd", 4));
}

TEST_F(IpodGetItemNameTest, IgnoresItsFirstArgument) {
  openNamed("abc");
  first = untouched(4);
  EXPECT_EQ(IpodGetItemName(99, first.data(), nullptr, 4), 0);
  EXPECT_EQ(first, holding("abc", 4));
}

TEST_F(IpodGetItemNameTest, WidensEachByteWithoutASign) {
  openTree(IPOD_GENRES, 3);
  ipod.answer(kRetrieveRecords, {"04 00 1B 00 00 00 00 43 61 66 C3 A9 C3 BF 00"});
  read(6);
  EXPECT_EQ(first, (Units{0x43, 0x61, 0x66, 0xE9, 0xFF, 0xEEEE}));
}

TEST_F(IpodGetItemNameTest, ShowsASpaceForACharacterThatLatin1DoesNotHave) {
  openTree(IPOD_GENRES, 3);
  ipod.answer(kRetrieveRecords, {"04 00 1B 00 00 00 00 35 E2 82 AC 00"});
  read(4);
  EXPECT_EQ(first, (Units{'5', ' ', 0xEEEE, 0xEEEE}));
}

TEST_F(IpodGetItemNameTest, IsEmptyForACharacterBeyondSixteenBits) {
  openTree(IPOD_GENRES, 3);
  ipod.answer(kRetrieveRecords, {"04 00 1B 00 00 00 00 41 F0 9F 98 80 42 00"});
  read(4);
  EXPECT_EQ(first, untouched(4));
}

TEST_F(IpodGetItemNameTest, ShowsTheLowSevenBitsOfAStrayByte) {
  openTree(IPOD_GENRES, 3);
  ipod.answer(kRetrieveRecords, {"04 00 1B 00 00 00 00 41 80 42 FE BF 00"});
  read(6);
  EXPECT_EQ(first, (Units{0x41, 0x00, 0x42, 0x7E, 0x3F, 0xEEEE}));
}

TEST_F(IpodGetItemNameTest, IsEmptyForASequenceThatIsCutShort) {
  openTree(IPOD_GENRES, 3);
  ipod.answer(kRetrieveRecords, {"04 00 1B 00 00 00 00 41 C3 42 00"});
  read(4);
  EXPECT_EQ(first, untouched(4));
}

TEST_F(IpodGetItemNameTest, WithoutAFinalZeroEndsWithTheMessage) {
  openTree(IPOD_GENRES, 3);
  ipod.answer(kRetrieveRecords, {"04 00 1B 00 00 00 00 61 62 63"});
  read(6);
  EXPECT_EQ(first, holding("abc", 6));
}

TEST_F(IpodGetItemNameTest, ReadsTheNameOfTheCurrentItem) {
  openTree(IPOD_ARTISTS, 3);
  record("02", 0, "one");
  record("02", 1, "two");
  IpodGetNextItem();
  IpodGetNextItem();
  read(4);
  EXPECT_EQ(first, holding("two", 4));
  EXPECT_THAT(events(), ElementsAre(kRetrieveRecords + " 02 00 00 00 01 00 00 00 01"));
}

TEST_F(IpodGetItemNameTest, UsesTheTypeAsTheCategory) {
  openTree(IPOD_TYPE_7, 300);
  browseTree.levels[1].index = 258;
  read(4);
  EXPECT_THAT(events(), ElementsAre(kRetrieveRecords + " 07 00 00 01 02 00 00 00 01"));
}

TEST_F(IpodGetItemNameTest, OutsideTheListWritesAndAsksNothing) {
  openTree(IPOD_GENRES, 3);
  for (const int index : {3, 4, -1, -35, INT_MAX, INT_MIN}) {
    browseTree.levels[1].index = index;
    read(4);
    EXPECT_EQ(first, untouched(4)) << index;
    EXPECT_EQ(second, untouched(4)) << index;
  }
  EXPECT_THAT(events(), IsEmpty());
}

TEST_F(IpodGetItemNameTest, WithoutAListWritesAndAsksNothing) {
  read(4);
  EXPECT_EQ(first, untouched(4));
  EXPECT_THAT(events(), IsEmpty());
}

TEST_F(IpodGetItemNameTest, WritesNothingIfTheIpodDoesNotSendTheName) {
  openTree(IPOD_GENRES, 3);
  for (const char* reply :
       {"00 02 05 00", "04 00 1B 00 00 00 00", "04 00 01 04 00 1A", "04 00 1F 00 00 00 00"}) {
    ipod.answer(kRetrieveRecords, {reply});
    read(4);
    EXPECT_EQ(first, untouched(4)) << reply;
  }
}

// ---------------------------------------------------------------- the play-all mark

/// The sizes of the two buffers and how many units of the mark each receives.
struct MarkCase : NamedRow {
  int maxChars;
  std::size_t inFirst;
  std::size_t inSecond;
};

class PlayAllMarkTest : public IpodGetItemNameTest, public testing::WithParamInterface<MarkCase> {
 protected:
  static Units mark(std::size_t count, std::size_t size) {
    Units units = untouched(size);
    std::fill_n(units.begin(), count, static_cast<unsigned short>(0xFFFF));
    return units;
  }

  void expectTheMark() {
    const MarkCase& row = GetParam();
    read(row.maxChars);
    EXPECT_EQ(first, mark(row.inFirst, first.size()));
    EXPECT_EQ(second, mark(row.inSecond, second.size()));
    EXPECT_THAT(events(), IsEmpty());
  }
};

TEST_P(PlayAllMarkTest, IsTheNameOfThePlayAllEntry) {
  openTree(IPOD_ARTISTS, 3);
  expectTheMark();
}

TEST_P(PlayAllMarkTest, IsTheNameOfThePlayAllTab) {
  openTree(IPOD_ARTISTS, 36);
  expectTheMark();
}

TEST_P(PlayAllMarkTest, IsTheNameOfThePlayAllTabReachedByMoving) {
  openTree(IPOD_ALBUMS, 36);
  IpodGetPrevItem();
  IpodGetNextItem();
  ASSERT_EQ(browseTree.levels[1].index, -35);
  expectTheMark();
}

INSTANTIATE_TEST_SUITE_P(Sizes, PlayAllMarkTest,
                         testing::Values(MarkCase{"Negative", -1, 0, 0}, MarkCase{"0", 0, 0, 0},
                                         MarkCase{"1", 1, 1, 1}, MarkCase{"2", 2, 2, 2},
                                         MarkCase{"3", 3, 3, 1}, MarkCase{"4", 4, 4, 0},
                                         MarkCase{"5", 5, 4, 0}, MarkCase{"8", 8, 4, 0}),
                         rowName<MarkCase>);

TEST_F(IpodGetItemNameTest, PlayAllMarkNeedsNoBuffers) {
  openTree(IPOD_ARTISTS, 3);
  second = untouched(3);
  EXPECT_EQ(IpodGetItemName(0, nullptr, nullptr, 3), 0);
  EXPECT_EQ(IpodGetItemName(0, nullptr, second.data(), 3), 0);
  EXPECT_EQ(second, (Units{0xFFFF, 0xEEEE, 0xEEEE}));
}

TEST_F(IpodGetItemNameTest, WritesNothingForThePlayAllEntryOfAnEmptyList) {
  openTree(IPOD_ARTISTS, 0);
  read(4);
  EXPECT_EQ(first, untouched(4));
  EXPECT_THAT(events(), IsEmpty());
}

TEST_F(IpodGetItemNameTest, AmongTheItemsOfThePlayAllTabIsTheMarkAtMinusOneOnly) {
  openTree(IPOD_ARTISTS, 36);
  IpodGetPrevItem();
  IpodGetNextItem();
  IpodDisableTabVisualizationActive();
  read(4);
  EXPECT_EQ(first, untouched(4));
  IpodGetPrevItem();
  read(4);
  EXPECT_EQ(first, (Units{0xFFFF, 0xFFFF, 0xFFFF, 0xFFFF}));
}

// ---------------------------------------------------------------- a tab's label

/// The first and the last name of a tab, "" for one that the iPod does not send, and the label.
struct LabelCase : NamedRow {
  const char* firstName;
  const char* lastName;
  const char* label;
};

class TabLabelTest : public IpodGetItemNameTest, public testing::WithParamInterface<LabelCase> {};

TEST_P(TabLabelTest, IsMadeOfTheFirstAndTheLastName) {
  openTree(IPOD_GENRES, 71);
  IpodGetNextItem();
  if (*GetParam().firstName) record("04", 35, GetParam().firstName);
  if (*GetParam().lastName) record("04", 69, GetParam().lastName);
  read(12);
  EXPECT_EQ(first, holding(GetParam().label, 12));
  EXPECT_EQ(second, untouched(12));
  EXPECT_THAT(events(), ElementsAre(kRetrieveRecords + " 04 00 00 00 23 00 00 00 01",
                                    kRetrieveRecords + " 04 00 00 00 45 00 00 00 01"));
}

INSTANTIATE_TEST_SUITE_P(Names, TabLabelTest,
                         testing::Values(LabelCase{"Long", "Ambient", "Country", "Ambi - Coun"},
                                         LabelCase{"Four", "Amba", "Coun", "Amba - Coun"},
                                         LabelCase{"Short", "A", "Cou", "A - Cou"},
                                         LabelCase{"NoFirst", "", "Country", " - Coun"},
                                         LabelCase{"NoLast", "Ambient", "", "Ambi - "},
                                         LabelCase{"None", "", "", " - "}),
                         rowName<LabelCase>);

TEST_F(IpodGetItemNameTest, ContinuesATabsLabelInTheSecondBuffer) {
  openTree(IPOD_GENRES, 36);
  record("04", 0, "Ambient");
  record("04", 34, "Country");
  read(5);
  EXPECT_EQ(first, holding("Ambi ", 5));
  EXPECT_EQ(second, holding("- Cou", 5));
  EXPECT_THAT(events(), ElementsAre(kRetrieveRecords + " 04 00 00 00 00 00 00 00 01",
                                    kRetrieveRecords + " 04 00 00 00 22 00 00 00 01"));
}

TEST_F(IpodGetItemNameTest, OfATabOfOneItemShowsItTwice) {
  openTree(IPOD_GENRES, 36);
  record("04", 35, "Zydeco");
  IpodGetNextItem();
  read(12);
  EXPECT_EQ(first, holding("Zyde - Zyde", 12));
}

TEST_F(IpodGetItemNameTest, OfATabCutsBytesOfTheConvertedText) {
  openTree(IPOD_GENRES, 36);
  ipod.answer(kRetrieveRecords, {"04 00 1B 00 00 00 00 C3 A9 C3 A9 C3 A9 C3 A9 C3 A9 00"});
  read(12);
  EXPECT_EQ(first, (Units{0xE9, 0xE9, 0xE9, 0xE9, ' ', '-', ' ', 0xE9, 0xE9, 0xE9, 0xE9, 0xEEEE}));
}

TEST_F(IpodGetItemNameTest, ReadsTheNameOfTheItemInAChosenTab) {
  openTree(IPOD_GENRES, 36);
  IpodGetNextItem();
  IpodDisableTabVisualizationActive();
  record("04", 35, "Zydeco");
  read(12);
  EXPECT_EQ(first, holding("Zydeco", 12));
}

TEST_F(IpodGetItemNameTest, OfPlaylistTabsJustOpenedJoinsTheSecondTabsFirstAndTheFirstTabsLast) {
  openTree(IPOD_PLAYLISTS, 72);
  record("01", 35, "Party");
  record("01", 34, "Opera");
  read(12);
  EXPECT_EQ(first, holding("Part - Oper", 12));
}

}  // namespace
