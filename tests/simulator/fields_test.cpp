#include "wire/fields.h"

#include <gtest/gtest.h>

#include <set>

#include "support/hex.h"
#include "support/ipod_bench.h"
#include "wire/command_names.h"

namespace simulator {
namespace {

std::string fieldsOfPayload(const std::string& payload) {
  return fieldsText(parseMessage(hex(payload)).value());
}

struct DecodedPayload {
  const char* payload;
  const char* fields;
};

void PrintTo(const DecodedPayload& decoded, std::ostream* out) { *out << decoded.payload; }

class FieldsOf : public testing::TestWithParam<DecodedPayload> {};

TEST_P(FieldsOf, EachCommand) { EXPECT_EQ(fieldsOfPayload(GetParam().payload), GetParam().fields); }

INSTANTIATE_TEST_SUITE_P(
    General, FieldsOf,
    testing::Values(
        DecodedPayload{"00 01 04", "lingo=ExtendedInterface"},
        DecodedPayload{"00 02 00 13", "status=ok command=IdentifyDeviceLingoes"},
        DecodedPayload{"00 02 06 05 00 00 01 2C",
                       "status=pending command=EnterRemoteUIMode wait-ms=300"},
        DecodedPayload{"00 02 05 77", "status=unknown-id command=0x77"},
        DecodedPayload{"00 04 01", "mode=extended"},
        DecodedPayload{"00 08 50 6F 64 00", "name=\"Pod\""},
        DecodedPayload{"00 0A 01 03 02", "major=1 minor=3 revision=2"},
        DecodedPayload{"00 0C 38 4B 00", "serial-number=\"8K\""},
        DecodedPayload{"00 0E 00 0B 00 10 4D 42 00", "model-id=0x000B0010 model=\"MB\""},
        DecodedPayload{"00 0F 0A", "lingo=DigitalAudio"},
        DecodedPayload{"00 10 04 01 0E", "lingo=ExtendedInterface major=1 minor=14"},
        DecodedPayload{"00 13 00 00 04 11 00 00 00 00 00 00 02 00",
                       "lingoes=General+ExtendedInterface+DigitalAudio options=0x00000000 "
                       "device-id=0x00000200"},
        DecodedPayload{"00 27 00", "type=capabilities"},
        DecodedPayload{"00 27 02 00 00 00 01 02 03 04",
                       "type=minimum-firmware model-id=0x00000001 major=2 minor=3 revision=4"},
        DecodedPayload{"00 27 03 04", "type=minimum-version lingo=ExtendedInterface"},
        DecodedPayload{
            "00 28 00 00 00 00 0D",
            "type=capabilities capabilities=capabilities+minimum-firmware+minimum-version"},
        DecodedPayload{"00 28 03 04 01 07",
                       "type=minimum-version lingo=ExtendedInterface major=1 minor=7"}));

INSTANTIATE_TEST_SUITE_P(
    OtherLingoes, FieldsOf,
    testing::Values(DecodedPayload{"02 00 00 01", "buttons=play"},
                    DecodedPayload{"02 00 09", "buttons=play-pause+next-track"},
                    DecodedPayload{"02 00 00", "buttons=none"},
                    DecodedPayload{"0A 00 00 04", "status=ok command=TrackNewAudioAttributes"},
                    DecodedPayload{"0A 03 00 00 AC 44 00 00 BB 80", "rate=44100 rate=48000"},
                    DecodedPayload{"0A 04 00 00 AC 44 00 00 00 00 00 00 00 07",
                                   "rate=44100 sound-check=0 volume-adjustment=7"}));

INSTANTIATE_TEST_SUITE_P(
    ExtendedInterface, FieldsOf,
    testing::Values(
        DecodedPayload{"04 00 01 04 00 1A",
                       "status=bad-parameter command=RetrieveCategorizedDatabaseRecords"},
        DecodedPayload{"04 00 0C 05 FF FF FF FF 00 00", "type=genre track=none chapter=0"},
        DecodedPayload{"04 00 0D 05 46 00", "type=genre text=\"F\""},
        DecodedPayload{
            "04 00 0D 00 00 00 00 11 00 00 03 E8 00 02",
            "type=capabilities capabilities=audiobook+podcast length-ms=1000 chapters=2"},
        DecodedPayload{"04 00 13 01 0E", "major=1 minor=14"},
        DecodedPayload{"04 00 17 02 00 00 00 07", "category=artists record=7"},
        DecodedPayload{"04 00 17 01 FF FF FF FF", "category=playlists record=none"},
        DecodedPayload{"04 00 18 09", "category=unknown(9)"},
        DecodedPayload{"04 00 19 00 00 00 53", "count=83"},
        DecodedPayload{"04 00 1A 05 00 00 00 22 FF FF FF FF", "category=tracks start=34 count=all"},
        DecodedPayload{"04 00 1B 00 00 00 02 4A 00", "record=2 name=\"J\""},
        DecodedPayload{"04 00 1D 00 00 00 64 00 00 00 0A 02",
                       "length-ms=100 position-ms=10 state=paused"},
        DecodedPayload{"04 00 1F FF FF FF FF", "track=none"},
        DecodedPayload{"04 00 20 00 00 00 01", "track=1"},
        DecodedPayload{"04 00 21 C3 A9 E2 80 AE 22 00", "title=\"\xC3\xA9\\u{202E}\\\"\""},
        DecodedPayload{"04 00 26 01", "notifications=on"},
        DecodedPayload{"04 00 27 04 00 00 01 F4", "change=position position-ms=500"},
        DecodedPayload{"04 00 27 01 00 00 00 03", "change=track track=3"},
        DecodedPayload{"04 00 27 00", "change=stopped"},
        DecodedPayload{"04 00 28 FF FF FF FF", "track=any"},
        DecodedPayload{"04 00 29 0A", "control=play"},
        DecodedPayload{"04 00 2D 02", "shuffle=albums"},
        DecodedPayload{"04 00 31 01", "repeat=one"},
        DecodedPayload{
            "04 00 32 00 00 02 00 A0 00 78 00 00 01 40 F8 00",
            "packet=0 format=rgb565-low-first width=160 height=120 row-bytes=320 pixels=F8 00"},
        DecodedPayload{"04 00 32 00 07 F8 00", "packet=7 pixels=F8 00"},
        DecodedPayload{"04 00 36 00 00 00 08", "count=8"},
        DecodedPayload{"04 00 38 02 00 00 00 00 04", "category=artists record=0 order=name"},
        DecodedPayload{"04 00 3A 00 78 00 41 02 00 78 00 41 03",
                       "width=120 height=65 format=rgb565-low-first width=120 height=65 "
                       "format=rgb565-high-first"}));

TEST(Fields, ShowDataThatDoesNotFitTheCommand) {
  EXPECT_EQ(fieldsOfPayload("04 00 17 02 00 00"), "category=artists (too short) more=00 00");
  EXPECT_EQ(fieldsOfPayload("04 00 19 00 00 00 01 77"), "count=1 more=77");
  EXPECT_EQ(fieldsOfPayload("00 08"), "(too short)");
  EXPECT_EQ(fieldsOfPayload("00 08 50"), "name=\"P\" (no final 00)");
  EXPECT_EQ(fieldsOfPayload("00 08 50 00 51 52"), "name=\"P\" (2 more bytes)");
  EXPECT_EQ(fieldsOfPayload("77 01 AB CD"), "data=AB CD");
}

/// The iPod's answers, each decoded.
std::vector<std::string> answersOf(Bench& bench, const std::string& payload) {
  std::vector<std::string> lines;
  for (const std::string& answer : bench.ask(payload)) {
    const Message message = parseMessage(hex(answer)).value();
    lines.push_back(commandName(message) + (" " + fieldsText(message)));
  }
  return lines;
}

TEST(Fields, AgreeWithWhatTheSimulatedIpodSends) {
  using Lines = std::vector<std::string>;
  Bench bench;
  EXPECT_EQ(answersOf(bench, "00 13 00 00 04 11 00 00 00 00 00 00 00 00"),
            (Lines{"iPodAck status=ok command=IdentifyDeviceLingoes",
                   "GetAccessoryInfo type=capabilities"}));
  EXPECT_EQ(answersOf(bench, "00 28 00 00 00 00 01"), Lines{"GetAccSampleRateCaps "});
  EXPECT_EQ(answersOf(bench, "0A 03 00 00 AC 44"),
            Lines{"TrackNewAudioAttributes rate=44100 sound-check=0 volume-adjustment=0"});
  EXPECT_EQ(answersOf(bench, "00 05"), Lines{"iPodAck status=ok command=EnterRemoteUIMode"});
  EXPECT_EQ(answersOf(bench, "00 0F 04"),
            Lines{"ReturnLingoProtocolVersion lingo=ExtendedInterface major=1 minor=14"});
  EXPECT_EQ(answersOf(bench, "04 00 18 02"), Lines{"ReturnNumberCategorizedDbRecords count=3"});
  EXPECT_EQ(answersOf(bench, "04 00 1C"),
            Lines{"ReturnPlayStatus length-ms=0 position-ms=0 state=stopped"});
  EXPECT_EQ(answersOf(bench, "04 00 1E"), Lines{"ReturnCurrentPlayingTrackIndex track=none"});
  EXPECT_EQ(answersOf(bench, "04 00 39"),
            Lines{"ReturnColorDisplayImageLimits width=320 height=240 format=rgb565-low-first "
                  "width=320 height=240 format=rgb565-high-first"});
  EXPECT_EQ(answersOf(bench, "04 00 28 00 00 00 63"),
            Lines{"iPodAck status=bad-parameter command=PlayCurrentSelection"});
}

TEST(CommandLayouts, HaveARowForAnyFormOfEachCommand) {
  std::set<std::string> names;
  for (const CommandLayout& row : commandLayouts()) {
    const Message empty{static_cast<uint8_t>(row.lingo), row.command, {}};
    const bool isForm = std::string(row.name) == "RetAccessoryInfo" || layoutOf(empty) != nullptr;
    EXPECT_TRUE(isForm) << row.name;
    EXPECT_STREQ(commandName(empty), row.name);
    names.insert(std::to_string(static_cast<int>(row.lingo)) + row.name);
  }
  EXPECT_EQ(names.size(), 68u);
}

}  // namespace
}  // namespace simulator
