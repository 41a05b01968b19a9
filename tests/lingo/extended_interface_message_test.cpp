#include "lingo/extended_interface_message.h"

#include <gtest/gtest.h>

#include "lingo/command_rows.h"
#include "support/message_bytes.h"

namespace ipodctl::extended_interface_message {
namespace {

using namespace std::string_literals;

using Message = ExtendedInterfaceMessage;

TEST(ExtendedInterfaceMessage, StartsAsAnEmptyMessageOfLingoFour) {
  const Message message;
  EXPECT_EQ(message.getLingo(), 0x04);
  EXPECT_EQ(message.getCommand(), 0);
  EXPECT_EQ(message.getDataLength(), 0);
  EXPECT_EQ(message.dataBytes(), nullptr);
}

using Builder = BuilderRow<Message>;

class ExtendedInterfaceBuilder : public testing::TestWithParam<Builder> {};

TEST_P(ExtendedInterfaceBuilder, WritesTheCommandAndItsFields) { expectBuilds(GetParam()); }

const uint8_t kRow[] = {0xF8, 0x00, 0x07, 0xE0};

const Builder kBuilders[] = {
    {"GetIndexedPlayingTrackInfo",
     [](Message& m) {
       return m.buildGetIndexedPlayingTrackInfo(TrackInfoType::kGenre, 0x12345678, 0x9ABC);
     },
     0x000C,
     {0x05, 0x12, 0x34, 0x56, 0x78, 0x9A, 0xBC},
     {0x55, 0x0A, 0x04, 0x00, 0x0C, 0x05, 0x12, 0x34, 0x56, 0x78, 0x9A, 0xBC}},
    {"RequestIpodName",
     [](Message& m) { return m.buildRequestIpodName(); },
     0x0014,
     {},
     {0x55, 0x03, 0x04, 0x00, 0x14}},
    {"ResetDbSelection",
     [](Message& m) { return m.buildResetDbSelection(); },
     0x0016,
     {},
     {0x55, 0x03, 0x04, 0x00, 0x16}},
    {"SelectDbRecord",
     [](Message& m) { return m.buildSelectDbRecord(Category::kArtists, 7); },
     0x0017,
     {0x02, 0x00, 0x00, 0x00, 0x07},
     {0x55, 0x08, 0x04, 0x00, 0x17, 0x02, 0x00, 0x00, 0x00, 0x07}},
    {"SelectDbRecordThatUndoesASelection",
     [](Message& m) { return m.buildSelectDbRecord(Category::kPlaylists, 0xFFFFFFFF); },
     0x0017,
     {0x01, 0xFF, 0xFF, 0xFF, 0xFF},
     {0x55, 0x08, 0x04, 0x00, 0x17, 0x01, 0xFF, 0xFF, 0xFF, 0xFF}},
    {"GetNumberCategorizedDbRecords",
     [](Message& m) { return m.buildGetNumberCategorizedDbRecords(Category::kTracks); },
     0x0018,
     {0x05},
     {0x55, 0x04, 0x04, 0x00, 0x18, 0x05}},
    {"RetrieveCategorizedDatabaseRecords",
     [](Message& m) {
       return m.buildRetrieveCategorizedDatabaseRecords(Category::kAlbums, 0x01020304, 0x0A0B0C0D);
     },
     0x001A,
     {0x03, 0x01, 0x02, 0x03, 0x04, 0x0A, 0x0B, 0x0C, 0x0D},
     {0x55, 0x0C, 0x04, 0x00, 0x1A, 0x03, 0x01, 0x02, 0x03, 0x04, 0x0A, 0x0B, 0x0C, 0x0D}},
    {"GetPlayStatus",
     [](Message& m) { return m.buildGetPlayStatus(); },
     0x001C,
     {},
     {0x55, 0x03, 0x04, 0x00, 0x1C}},
    {"GetCurrentPlayingTrackIndex",
     [](Message& m) { return m.buildGetCurrentPlayingTrackIndex(); },
     0x001E,
     {},
     {0x55, 0x03, 0x04, 0x00, 0x1E}},
    {"GetIndexedPlayingTrackTitle",
     [](Message& m) { return m.buildGetIndexedPlayingTrackTitle(0x12345678); },
     0x0020,
     {0x12, 0x34, 0x56, 0x78},
     {0x55, 0x07, 0x04, 0x00, 0x20, 0x12, 0x34, 0x56, 0x78}},
    {"GetIndexedPlayingTrackArtistName",
     [](Message& m) { return m.buildGetIndexedPlayingTrackArtistName(0x9ABCDEF0); },
     0x0022,
     {0x9A, 0xBC, 0xDE, 0xF0},
     {0x55, 0x07, 0x04, 0x00, 0x22, 0x9A, 0xBC, 0xDE, 0xF0}},
    {"GetIndexedPlayingTrackAlbumName",
     [](Message& m) { return m.buildGetIndexedPlayingTrackAlbumName(0x00000100); },
     0x0024,
     {0x00, 0x00, 0x01, 0x00},
     {0x55, 0x07, 0x04, 0x00, 0x24, 0x00, 0x00, 0x01, 0x00}},
    {"PlayCurrentSelection",
     [](Message& m) { return m.buildPlayCurrentSelection(0x00010203); },
     0x0028,
     {0x00, 0x01, 0x02, 0x03},
     {0x55, 0x07, 0x04, 0x00, 0x28, 0x00, 0x01, 0x02, 0x03}},
    {"PlayControl",
     [](Message& m) { return m.buildPlayControl(PlayControlCode::kNextTrack); },
     0x0029,
     {0x03},
     {0x55, 0x04, 0x04, 0x00, 0x29, 0x03}},
    {"GetShuffle",
     [](Message& m) { return m.buildGetShuffle(); },
     0x002C,
     {},
     {0x55, 0x03, 0x04, 0x00, 0x2C}},
    {"SetShuffle",
     [](Message& m) { return m.buildSetShuffle(PlayMode::kAlbums); },
     0x002E,
     {0x02},
     {0x55, 0x04, 0x04, 0x00, 0x2E, 0x02}},
    {"GetRepeat",
     [](Message& m) { return m.buildGetRepeat(); },
     0x002F,
     {},
     {0x55, 0x03, 0x04, 0x00, 0x2F}},
    {"SetRepeat",
     [](Message& m) { return m.buildSetRepeat(PlayMode::kTracks); },
     0x0031,
     {0x01},
     {0x55, 0x04, 0x04, 0x00, 0x31, 0x01}},
    {"FirstPacketOfADisplayImageDescribesThePicture",
     [](Message& m) {
       return m.buildSetDisplayImage(PixelFormat::kRgb565LowByteFirst, 0, 0x0136, 0x00A8, 4, kRow);
     },
     0x0032,
     {0x00, 0x00, 0x02, 0x01, 0x36, 0x00, 0xA8, 0x00, 0x00, 0x00, 0x04, 0xF8, 0x00, 0x07, 0xE0},
     {0x55, 0x12, 0x04, 0x00, 0x32, 0x00, 0x00, 0x02, 0x01, 0x36,
      0x00, 0xA8, 0x00, 0x00, 0x00, 0x04, 0xF8, 0x00, 0x07, 0xE0}},
    {"LaterPacketOfADisplayImageIsIndexAndRow",
     [](Message& m) {
       return m.buildSetDisplayImage(PixelFormat::kRgb565LowByteFirst, 0x0102, 0x0136, 0x00A8, 4,
                                     kRow);
     },
     0x0032,
     {0x01, 0x02, 0xF8, 0x00, 0x07, 0xE0},
     {0x55, 0x09, 0x04, 0x00, 0x32, 0x01, 0x02, 0xF8, 0x00, 0x07, 0xE0}},
    {"SecondPacketOfADisplayImageHasNoHeader",
     [](Message& m) { return m.buildSetDisplayImage(PixelFormat::kGrey2Bits, 1, 8, 8, 2, kRow); },
     0x0032,
     {0x00, 0x01, 0xF8, 0x00},
     {0x55, 0x07, 0x04, 0x00, 0x32, 0x00, 0x01, 0xF8, 0x00}},
    {"GetMonoDisplayImageLimits",
     [](Message& m) { return m.buildGetMonoDisplayImageLimits(); },
     0x0033,
     {},
     {0x55, 0x03, 0x04, 0x00, 0x33}},
    {"GetNumPlayingTracks",
     [](Message& m) { return m.buildGetNumPlayingTracks(); },
     0x0035,
     {},
     {0x55, 0x03, 0x04, 0x00, 0x35}},
    {"SetCurrentPlayingTrack",
     [](Message& m) { return m.buildSetCurrentPlayingTrack(0x81000002); },
     0x0037,
     {0x81, 0x00, 0x00, 0x02},
     {0x55, 0x07, 0x04, 0x00, 0x37, 0x81, 0x00, 0x00, 0x02}},
    {"SelectSortDbRecord",
     [](Message& m) {
       return m.buildSelectSortDbRecord(Category::kAlbums, 0x01020304, SortOrder::kDefault);
     },
     0x0038,
     {0x03, 0x01, 0x02, 0x03, 0x04, 0xFF},
     {0x55, 0x09, 0x04, 0x00, 0x38, 0x03, 0x01, 0x02, 0x03, 0x04, 0xFF}},
    {"GetColorDisplayImageLimits",
     [](Message& m) { return m.buildGetColorDisplayImageLimits(); },
     0x0039,
     {},
     {0x55, 0x03, 0x04, 0x00, 0x39}},
};

INSTANTIATE_TEST_SUITE_P(Commands, ExtendedInterfaceBuilder, testing::ValuesIn(kBuilders),
                         rowName<Builder>);

TEST(SetDisplayImage, OfARowOf253BytesIsSentInTheLongForm) {
  const Bytes row(251, 0x11);
  Message message;
  ASSERT_TRUE(
      message.buildSetDisplayImage(PixelFormat::kRgb565LowByteFirst, 1, 0, 0, 251, row.data()));
  const Bytes body = bodyOf(message);
  ASSERT_EQ(body.size(), 260u);
  EXPECT_EQ(Bytes(body.begin(), body.begin() + 10),
            (Bytes{0x55, 0x00, 0x01, 0x00, 0x04, 0x00, 0x32, 0x00, 0x01, 0x11}));
}

TEST(SetDisplayImage, ReportsTheWholeStrideButSendsItsLow16BitsOfBytes) {
  const Bytes row = countingBytes(8);
  Message message;
  ASSERT_TRUE(message.buildSetDisplayImage(PixelFormat::kRgb565LowByteFirst, 0, 1, 1, 0x00010003,
                                           row.data()));
  EXPECT_EQ(dataOf(message), (Bytes{0x00, 0x00, 0x02, 0x00, 0x01, 0x00, 0x01, 0x00, 0x01, 0x00,
                                    0x03, row[0], row[1], row[2]}));
}

TEST(SetDisplayImage, KeepsItsLengthTo16Bits) {
  const Bytes row = countingBytes(65535);
  Message message;
  EXPECT_TRUE(
      message.buildSetDisplayImage(PixelFormat::kRgb565LowByteFirst, 0, 1, 1, 65535, row.data()));
  EXPECT_EQ(message.getDataLength(), 10);
  EXPECT_EQ(dataOf(message), (Bytes{0x00, 0x00, 0x02, 0x00, 0x01, 0x00, 0x01, 0x00, 0x00, 0xFF}));
}

using Decoded = DecoderRow<Message>;

class ExtendedInterfaceDecoder : public testing::TestWithParam<Decoded> {};

TEST_P(ExtendedInterfaceDecoder, ReadsTheFields) { expectDecodes(GetParam()); }

TEST_P(ExtendedInterfaceDecoder, RefusesWrongLengthsAndLeavesTheOutputs) {
  expectLengthsJudged(GetParam());
}

TEST_P(ExtendedInterfaceDecoder, RefusesOtherCommandsAndLeavesTheOutputs) {
  expectOtherCommandsRefused(GetParam());
}

const Decoded kDecoders[] = {
    decoderRow("IpodAck", &Message::decodeIpodAck, 0x0001, {0x02, 0x12, 0x34}, {2u, 0x1234u}, 3, 3),
    decoderRow("IndexedPlayingTrackInfo", &Message::decodeReturnIndexedPlayingTrackInfo, 0x000D,
               {0x05, 0x52, 0x6F, 0x63, 0x6B}, {5u, "\x05Roc"s}, 2, kAnyLength),
    decoderRow("IndexedPlayingTrackInfoOfTwoBytes", &Message::decodeReturnIndexedPlayingTrackInfo,
               0x000D, {0x05, 0x00}, {5u, "\x05"s}, 2, kAnyLength),
    decoderRow("IndexedPlayingTrackInfoOfTypeZeroIsAnEmptyText",
               &Message::decodeReturnIndexedPlayingTrackInfo, 0x000D, {0x00, 0x52, 0x6F, 0x00},
               {0u, ""s}, 2, kAnyLength),
    decoderRow("IpodName", &Message::decodeReturnIpodName, 0x0015, {0x43, 0x61, 0x66, 0xC3, 0xA9},
               {"Caf\xE9"s}, 1, kAnyLength),
    decoderRow("IpodNameOfOneByte", &Message::decodeReturnIpodName, 0x0015, {0x41}, {"A"s}, 1,
               kAnyLength),
    decoderRow("IpodNameThatIsATerminatorAlone", &Message::decodeReturnIpodName, 0x0015, {0x00},
               {""s}, 1, kAnyLength),
    decoderRow("NumberCategorizedDbRecords", &Message::decodeReturnNumberCategorizedDbRecords,
               0x0019, {0x81, 0x23, 0x45, 0x67}, {0x81234567u}, 4, 4),
    decoderRow("CategorizedDatabaseRecord", &Message::decodeReturnCategorizedDatabaseRecord, 0x001B,
               {0x81, 0x23, 0x45, 0x67, 0x41, 0x62, 0x62, 0x61, 0x00}, {0x81234567u, "Abba"s}, 5,
               kAnyLength),
    decoderRow("CategorizedDatabaseRecordOfFiveBytes",
               &Message::decodeReturnCategorizedDatabaseRecord, 0x001B,
               {0x00, 0x00, 0x00, 0x07, 0x41}, {7u, "A"s}, 5, kAnyLength),
    decoderRow("CategorizedDatabaseRecordWithoutTerminator",
               &Message::decodeReturnCategorizedDatabaseRecord, 0x001B,
               {0x00, 0x00, 0x00, 0x07, 0x41, 0x62}, {7u, "Ab"s}, 5, kAnyLength),
    decoderRow("PlayStatus", &Message::decodeReturnPlayStatus, 0x001D,
               {0x00, 0x03, 0x0D, 0x40, 0x81, 0x00, 0x27, 0x10, 0x01}, {200000u, 0x81002710u, 1u},
               9, 9),
    decoderRow("CurrentPlayingTrackIndex", &Message::decodeReturnCurrentPlayingTrackIndex, 0x001F,
               {0xFF, 0xFF, 0xFF, 0xFF}, {0xFFFFFFFFu}, 4, 4),
    decoderRow("IndexedPlayingTrackTitle", &Message::decodeReturnIndexedPlayingTrackTitle, 0x0021,
               {0x53, 0x4F, 0x53, 0x00}, {"SOS"s}, 2, kAnyLength),
    decoderRow("IndexedPlayingTrackTitleOfTwoBytes", &Message::decodeReturnIndexedPlayingTrackTitle,
               0x0021, {0x41, 0x42}, {"AB"s}, 2, kAnyLength),
    decoderRow("IndexedPlayingTrackArtistName", &Message::decodeReturnIndexedPlayingTrackArtistName,
               0x0023, {0x41, 0x62, 0x62, 0x61, 0x00}, {"Abba"s}, 2, kAnyLength),
    decoderRow("IndexedPlayingTrackArtistNameOfTwoBytes",
               &Message::decodeReturnIndexedPlayingTrackArtistName, 0x0023, {0x55, 0x32}, {"U2"s},
               2, kAnyLength),
    decoderRow("IndexedPlayingTrackAlbumName", &Message::decodeReturnIndexedPlayingTrackAlbumName,
               0x0025, {0x47, 0x6F, 0x6C, 0x64, 0x00}, {"Gold"s}, 2, kAnyLength),
    decoderRow("IndexedPlayingTrackAlbumNameOfTwoBytes",
               &Message::decodeReturnIndexedPlayingTrackAlbumName, 0x0025, {0x49, 0x56}, {"IV"s}, 2,
               kAnyLength),
    decoderRow("Shuffle", &Message::decodeReturnShuffle, 0x002D, {0x02}, {2u}, 1, kAnyLength),
    decoderRow("ShuffleTakesTheFirstByteOfMore", &Message::decodeReturnShuffle, 0x002D,
               {0x01, 0x02, 0x03}, {1u}, 1, kAnyLength),
    decoderRow("Repeat", &Message::decodeReturnRepeat, 0x0030, {0x01}, {1u}, 1, kAnyLength),
    decoderRow("RepeatTakesTheFirstByteOfMore", &Message::decodeReturnRepeat, 0x0030,
               {0x02, 0x01, 0x00}, {2u}, 1, kAnyLength),
    decoderRow("MonoDisplayImageLimits", &Message::decodeReturnMonoDisplayImageLimits, 0x0034,
               {0x01, 0x36, 0x81, 0xA8, 0x01}, {310u, 0x81A8u, 1u}, 5, kAnyLength),
    decoderRow("NumPlayingTracks", &Message::decodeReturnNumPlayingTracks, 0x0036,
               {0x00, 0x00, 0x01, 0x00}, {256u}, 4, kAnyLength),
    decoderRow("ColorDisplayImageLimitsOfTheFirstEntry",
               &Message::decodeReturnColorDisplayImageLimits, 0x003A,
               {0x01, 0x40, 0x00, 0xF0, 0x02, 0x00, 0x01, 0x00, 0x01, 0x03}, {320u, 240u, 2u}, 5,
               kAnyLength),
};

INSTANTIATE_TEST_SUITE_P(Replies, ExtendedInterfaceDecoder, testing::ValuesIn(kDecoders),
                         rowName<Decoded>);

/// The replies that carry a text from their first byte on.
struct TextReply : NamedRow {
  uint16_t command;
  bool (Message::*decode)(ByteString&) const;
};

class TextReplies : public testing::TestWithParam<TextReply> {
 protected:
  bool decode(const Bytes& data, ByteString& text) const {
    Message message;
    receive(message, GetParam().command, data);
    return (message.*GetParam().decode)(text);
  }
};

TEST_P(TextReplies, CharactersBeyondLatin1AreSpacesAndStillATextForTheHost) {
  ByteString text;
  EXPECT_TRUE(decode({0x41, 0xE2, 0x82, 0xAC, 0x42}, text));
  EXPECT_EQ(textOf(text), "A B");
}

TEST_P(TextReplies, ACharacterBeyond16BitsLeavesTheOldTextAndSucceeds) {
  ByteString text = byteString("before");
  EXPECT_TRUE(decode({0x41, 0xF0, 0x9F, 0x8E, 0xB5}, text));
  EXPECT_EQ(textOf(text), "before");
}

TEST_P(TextReplies, ASequenceCutByThePayloadsEndLeavesTheOldTextAndSucceeds) {
  ByteString text = byteString("before");
  EXPECT_TRUE(decode({0x41, 0x42, 0xC3}, text));
  EXPECT_EQ(textOf(text), "before");
}

TEST_P(TextReplies, EndAtTheirFirstTerminator) {
  ByteString text;
  EXPECT_TRUE(decode({0x41, 0x42, 0x00, 0x43, 0x44}, text));
  EXPECT_EQ(textOf(text), "AB");
}

TEST_P(TextReplies, MayFillAWholeFrame) {
  ByteString text;
  EXPECT_TRUE(decode(Bytes(65532, 0x61), text));
  EXPECT_EQ(textOf(text), std::string(65532, 'a'));
}

const TextReply kTextReplies[] = {
    {"IpodName", 0x0015, &Message::decodeReturnIpodName},
    {"TrackTitle", 0x0021, &Message::decodeReturnIndexedPlayingTrackTitle},
    {"ArtistName", 0x0023, &Message::decodeReturnIndexedPlayingTrackArtistName},
    {"AlbumName", 0x0025, &Message::decodeReturnIndexedPlayingTrackAlbumName},
};

INSTANTIATE_TEST_SUITE_P(Commands, TextReplies, testing::ValuesIn(kTextReplies),
                         rowName<TextReply>);

}  // namespace
}  // namespace ipodctl::extended_interface_message
