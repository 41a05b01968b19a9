#include <climits>
#include <memory>

#include "api/api_test.h"

using testing::ElementsAre;

namespace {

// ---------------------------------------------------------------- IpodGetTrackInfo

class IpodGetTrackInfoTest : public ConnectedApiTest {
 protected:
  void SetUp() override {
    ConnectedApiTest::SetUp();
    playingIndex(258);
    ipod.answer(kGetTrackTitle + " 00 00 01 02", {"04 00 21" + textBytes("Waterloo")});
    ipod.answer(kGetTrackArtist + " 00 00 01 02", {"04 00 23" + textBytes("Abba")});
    ipod.answer(kGetTrackAlbum + " 00 00 01 02", {"04 00 25" + textBytes("Ring Ring")});
    ipod.answer(kGetTrackInfo + " 05 00 00 01 02 00 00", {"04 00 0D 05" + textBytes("Pop")});
  }

  int read(int maxChars) {
    return IpodGetTrackInfo(&index, artist.data(), album.data(), title.data(), genre.data(),
                            fifth.data(), maxChars);
  }

  int index = -77;
  Units artist = untouched(12);
  Units album = untouched(12);
  Units title = untouched(12);
  Units genre = untouched(12);
  Units fifth = untouched(12);
};

TEST_F(IpodGetTrackInfoTest, WritesTheIndexAndAllTexts) {
  EXPECT_EQ(printed([this] { EXPECT_EQ(read(12), 0); }), "Gnere is \x05Pop\n");
  EXPECT_EQ(index, 258);
  EXPECT_EQ(artist, holding("Abba", 12));
  EXPECT_EQ(album, holding("Ring Ring", 12));
  EXPECT_EQ(title, holding("Waterloo", 12));
  EXPECT_EQ(genre, holding("\x05Pop", 12));
  EXPECT_EQ(fifth, holding("UnKnown", 12));
}

TEST_F(IpodGetTrackInfoTest, AsksForTitleArtistAlbumAndGenreInThisOrder) {
  read(12);
  EXPECT_THAT(events(),
              ElementsAre(kGetCurrentTrackIndex, kGetTrackTitle + " 00 00 01 02",
                          kGetTrackArtist + " 00 00 01 02", kGetTrackAlbum + " 00 00 01 02",
                          kGetTrackInfo + " 05 00 00 01 02 00 00"));
}

TEST_F(IpodGetTrackInfoTest, WithoutBuffersStillWritesTheIndex) {
  EXPECT_EQ(printed([this] {
              EXPECT_EQ(IpodGetTrackInfo(&index, nullptr, nullptr, nullptr, nullptr, nullptr, 12),
                        0);
            }),
            "Failed Gnere \n");
  EXPECT_EQ(index, 258);
  EXPECT_THAT(events(), ElementsAre(kGetCurrentTrackIndex));
}

TEST_F(IpodGetTrackInfoTest, AsksForEachTextThatHasABufferAndWritesIt) {
  const std::string kRequests[] = {
      kGetTrackTitle + " 00 00 01 02", kGetTrackArtist + " 00 00 01 02",
      kGetTrackAlbum + " 00 00 01 02", kGetTrackInfo + " 05 00 00 01 02 00 00"};
  for (unsigned wanted = 0; wanted < 64; ++wanted) {
    const auto isWanted = [wanted](unsigned bit) { return (wanted >> bit & 1u) != 0; };
    const auto buffer = [&](unsigned bit, Units& units) {
      units = untouched(12);
      return isWanted(bit) ? units.data() : nullptr;
    };
    const auto expected = [&](unsigned bit, const char* text) {
      return isWanted(bit) ? holding(text, 12) : untouched(12);
    };
    forgetEvents();
    index = -77;
    EXPECT_EQ(IpodGetTrackInfo(isWanted(5) ? &index : nullptr, buffer(1, artist), buffer(2, album),
                               buffer(0, title), buffer(3, genre), buffer(4, fifth), 12),
              0);
    std::vector<std::string> asked = {kGetCurrentTrackIndex};
    for (unsigned bit = 0; bit < 4; ++bit) {
      if (isWanted(bit)) asked.push_back(kRequests[bit]);
    }
    EXPECT_EQ(events(), asked) << wanted;
    EXPECT_EQ(index, isWanted(5) ? 258 : -77) << wanted;
    EXPECT_EQ(title, expected(0, "Waterloo")) << wanted;
    EXPECT_EQ(artist, expected(1, "Abba")) << wanted;
    EXPECT_EQ(album, expected(2, "Ring Ring")) << wanted;
    EXPECT_EQ(genre, expected(3, "\x05Pop")) << wanted;
    EXPECT_EQ(fifth, expected(4, "UnKnown")) << wanted;
  }
}

TEST_F(IpodGetTrackInfoTest, WithoutAnIndexIsMinusOneAndWritesNothing) {
  ipod.refuse(kGetCurrentTrackIndex);
  EXPECT_EQ(printed([this] { EXPECT_EQ(read(12), -1); }), "");
  EXPECT_EQ(index, -77);
  for (const Units* buffer : {&artist, &album, &title, &genre, &fifth})
    EXPECT_EQ(*buffer, untouched(12));
  EXPECT_THAT(events(), ElementsAre(kGetCurrentTrackIndex));
}

TEST_F(IpodGetTrackInfoTest, WithNothingPlayingAsksForTrackMinusOne) {
  playingIndex(0xFFFFFFFF);
  EXPECT_EQ(read(12), 0);
  EXPECT_EQ(index, -1);
  EXPECT_EQ(title, untouched(12));
  EXPECT_EQ(fifth, holding("UnKnown", 12));
  EXPECT_THAT(events(),
              ElementsAre(kGetCurrentTrackIndex, kGetTrackTitle + " FF FF FF FF",
                          kGetTrackArtist + " FF FF FF FF", kGetTrackAlbum + " FF FF FF FF",
                          kGetTrackInfo + " 05 FF FF FF FF 00 00"));
}

TEST_F(IpodGetTrackInfoTest, LeavesTheBufferOfAMissingTextUntouched) {
  for (const std::string& request :
       {kGetTrackTitle + " 00 00 01 02", kGetTrackArtist + " 00 00 01 02",
        kGetTrackAlbum + " 00 00 01 02", kGetTrackInfo + " 05 00 00 01 02 00 00"})
    ipod.refuse(request);
  EXPECT_EQ(printed([this] { EXPECT_EQ(read(12), 0); }), "Failed Gnere \n");
  EXPECT_EQ(index, 258);
  for (const Units* buffer : {&artist, &album, &title, &genre})
    EXPECT_EQ(*buffer, untouched(12));
  EXPECT_EQ(fifth, holding("UnKnown", 12));
}

TEST_F(IpodGetTrackInfoTest, ContinuesAfterAMissingText) {
  ipod.refuse(kGetTrackArtist + " 00 00 01 02");
  EXPECT_EQ(read(12), 0);
  EXPECT_EQ(artist, untouched(12));
  EXPECT_EQ(title, holding("Waterloo", 12));
  EXPECT_EQ(album, holding("Ring Ring", 12));
}

TEST_F(IpodGetTrackInfoTest, CutsEachTextAtMaxChars) {
  const std::string name = "1234567890123456789012345678901234567890";
  ipod.answer(kGetTrackTitle + " 00 00 01 02", {"04 00 21" + textBytes(name)});
  Units longTitle = untouched(40);
  EXPECT_EQ(IpodGetTrackInfo(&index, nullptr, nullptr, longTitle.data(), nullptr, nullptr, 32), 0);
  EXPECT_EQ(longTitle, holding(name.substr(0, 32), 40));
}

TEST_F(IpodGetTrackInfoTest, CutsUnKnownAtMaxChars) {
  for (const int maxChars : {1, 3, 6, 7, 8}) {
    fifth = untouched(12);
    const std::string text = std::string("UnKnown").substr(0, static_cast<std::size_t>(maxChars));
    EXPECT_EQ(read(maxChars), 0);
    EXPECT_EQ(fifth, holding(text, 12)) << maxChars;
  }
}

TEST_F(IpodGetTrackInfoTest, WithoutRoomWritesNothingButTheIndex) {
  for (const int maxChars : {0, -1, INT_MIN}) {
    index = -77;
    EXPECT_EQ(printed([&] { EXPECT_EQ(read(maxChars), 0); }), "Gnere is \x05Pop\n");
    EXPECT_EQ(index, 258);
    for (const Units* buffer : {&artist, &album, &title, &genre, &fifth})
      EXPECT_EQ(*buffer, untouched(12)) << maxChars;
  }
}

TEST_F(IpodGetTrackInfoTest, WritesUnKnownWhateverTrackPlays) {
  playingIndex(7);
  EXPECT_EQ(read(12), 0);
  EXPECT_EQ(fifth, holding("UnKnown", 12));
}

TEST_F(IpodGetTrackInfoTest, OmitsTheLastByteOfTheGenre) {
  ipod.answer(kGetTrackInfo + " 05 00 00 01 02 00 00", {"04 00 0D 05 52 6F 63 6B"});
  EXPECT_EQ(printed([this] { read(12); }), "Gnere is \x05Roc\n");
  EXPECT_EQ(genre, holding("\x05Roc", 12));
}

TEST_F(IpodGetTrackInfoTest, TreatsAGenreThatDoesNotConvertAsEmpty) {
  ipod.answer(kGetTrackInfo + " 05 00 00 01 02 00 00", {"04 00 0D 05 F0 9F 98 80 00"});
  EXPECT_EQ(printed([this] { EXPECT_EQ(read(12), 0); }), "Gnere is \n");
  EXPECT_EQ(genre, untouched(12));
}

TEST_F(IpodGetTrackInfoTest, RefusesTextsOfOneByte) {
  ipod.answer(kGetTrackTitle + " 00 00 01 02", {"04 00 21 41"});
  ipod.answer(kGetTrackInfo + " 05 00 00 01 02 00 00", {"04 00 0D 05"});
  EXPECT_EQ(printed([this] { EXPECT_EQ(read(12), 0); }), "Failed Gnere \n");
  EXPECT_EQ(title, untouched(12));
  EXPECT_EQ(genre, untouched(12));
}

// ---------------------------------------------------------------- IpodGetName

class IpodGetNameTest : public ConnectedApiTest {
 protected:
  void SetUp() override {
    ConnectedApiTest::SetUp();
    ipod.answer(kRequestIpodName, {"00 08" + textBytes("Anna's iPod")});
  }
};

TEST_F(IpodGetNameTest, ReadsTheNameAndPrintsThatItDoes) {
  Units name = untouched(16);
  EXPECT_EQ(printed([&] { EXPECT_EQ(IpodGetName(name.data(), 16), 0); }),
            "IpodGetName start\nIpodGetName end\n");
  EXPECT_EQ(name, holding("Anna's iPod", 16));
  EXPECT_THAT(events(), ElementsAre(kRequestIpodName));
}

TEST_F(IpodGetNameTest, IsCutAtMaxChars) {
  Units name = untouched(4);
  EXPECT_EQ(IpodGetName(name.data(), 4), 0);
  EXPECT_EQ(name, holding("Anna", 4));
}

TEST_F(IpodGetNameTest, WithoutRoomWritesNothing) {
  Units name = untouched(4);
  for (const int maxChars : {0, -1, INT_MIN})
    EXPECT_EQ(IpodGetName(name.data(), maxChars), 0);
  EXPECT_EQ(name, untouched(4));
}

TEST_F(IpodGetNameTest, NeedsNoBuffer) {
  EXPECT_EQ(printed([] { EXPECT_EQ(IpodGetName(nullptr, 16), 0); }),
            "IpodGetName start\nIpodGetName end\n");
  EXPECT_THAT(events(), ElementsAre(kRequestIpodName));
}

TEST_F(IpodGetNameTest, WritesNothingIfTheIpodDoesNotSendTheName) {
  Units name = untouched(16);
  for (const char* reply : {"00 02 05 07", "00 08", "04 00 15 41 00"}) {
    ipod.answer(kRequestIpodName, {reply});
    EXPECT_EQ(printed([&] { EXPECT_EQ(IpodGetName(name.data(), 16), 0); }),
              "IpodGetName start\nIpodGetName end\n");
    EXPECT_EQ(name, untouched(16)) << reply;
  }
}

TEST_F(IpodGetNameTest, IsConvertedFromUtf8) {
  ipod.answer(kRequestIpodName, {"00 08 5A 6F C3 AB 00"});
  Units name = untouched(4);
  EXPECT_EQ(IpodGetName(name.data(), 4), 0);
  EXPECT_EQ(name, (Units{'Z', 'o', 0xEB, 0xEEEE}));
}

// ---------------------------------------------------------------- IpodGetSerialNumber

class IpodGetSerialNumberTest : public ConnectedApiTest {
 protected:
  void SetUp() override {
    ConnectedApiTest::SetUp();
    ipod.answer(kRequestSerialNumber, {"00 0C" + textBytes("5U8280FNXXX")});
  }
};

TEST_F(IpodGetSerialNumberTest, ReadsTheNumberAndPrintsItsFirstCharacter) {
  Units serial = untouched(16);
  EXPECT_EQ(printed([&] { EXPECT_EQ(IpodGetSerialNumber(serial.data(), 16), 0); }),
            "IpodGetSerialNumber start\nIpodGetSerialNumber is 5\nIpodGetSerialNumber end\n");
  EXPECT_EQ(serial, holding(std::string("5U8280FNXXX", 12), 16));
  EXPECT_THAT(events(), ElementsAre(kRequestSerialNumber));
}

TEST_F(IpodGetSerialNumberTest, IsCutAtMaxChars) {
  Units serial = untouched(2);
  EXPECT_EQ(printed([&] { EXPECT_EQ(IpodGetSerialNumber(serial.data(), 2), 0); }),
            "IpodGetSerialNumber start\nIpodGetSerialNumber is 5\nIpodGetSerialNumber end\n");
  EXPECT_EQ(serial, holding("5U", 2));
}

TEST_F(IpodGetSerialNumberTest, OfOneUnitIsPrintedWithoutReadingFurther) {
  const auto serial = std::make_unique<unsigned short[]>(1);
  EXPECT_EQ(printed([&] { IpodGetSerialNumber(serial.get(), 1); }),
            "IpodGetSerialNumber start\nIpodGetSerialNumber is 5\nIpodGetSerialNumber end\n");
  EXPECT_EQ(serial[0], '5');
}

TEST_F(IpodGetSerialNumberTest, IsNotConverted) {
  ipod.answer(kRequestSerialNumber, {"00 0C C3 A9 00 41"});
  Units serial = untouched(5);
  EXPECT_EQ(printed([&] { IpodGetSerialNumber(serial.data(), 5); }),
            "IpodGetSerialNumber start\nIpodGetSerialNumber is \xC3\nIpodGetSerialNumber end\n");
  EXPECT_EQ(serial, (Units{0xC3, 0xA9, 0x00, 0x41, 0xEEEE}));
}

TEST_F(IpodGetSerialNumberTest, WritesAndPrintsNothingIfTheIpodDoesNotSendTheNumber) {
  Units serial = untouched(16);
  for (const char* reply : {"00 02 05 0B", "00 0C", "00 08 41 00"}) {
    ipod.answer(kRequestSerialNumber, {reply});
    EXPECT_EQ(printed([&] { EXPECT_EQ(IpodGetSerialNumber(serial.data(), 16), 0); }),
              "IpodGetSerialNumber start\nIpodGetSerialNumber end\n");
    EXPECT_EQ(serial, untouched(16)) << reply;
  }
}

TEST_F(IpodGetSerialNumberTest, WithoutRoomWritesNothingAndReadsNothing) {
  for (const int maxChars : {0, -1, INT_MIN}) {
    const auto noRoom = std::make_unique<unsigned short[]>(0);
    const std::string console =
        printed([&] { EXPECT_EQ(IpodGetSerialNumber(noRoom.get(), maxChars), 0); });
    EXPECT_EQ(console.find("IpodGetSerialNumber start\n"), 0u);
    EXPECT_EQ(console.substr(console.size() - 24), "IpodGetSerialNumber end\n");
  }
}

TEST_F(IpodGetSerialNumberTest, NeedsNoBuffer) {
  const std::string console = printed([] { EXPECT_EQ(IpodGetSerialNumber(nullptr, 16), 0); });
  EXPECT_EQ(console.find("IpodGetSerialNumber start\n"), 0u);
  EXPECT_EQ(console.substr(console.size() - 24), "IpodGetSerialNumber end\n");
  EXPECT_THAT(events(), ElementsAre(kRequestSerialNumber));
}

}  // namespace
