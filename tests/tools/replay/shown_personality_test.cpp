// A trace made with a preset gives the preset's switches back.

#include <gtest/gtest.h>

#include "device/personality_file.h"
#include "recorded_session.h"

namespace iaptrace {
namespace {

/// Asks for everything that depends on the model.
void askEverything(RecordedSession& session) {
  session.ask(kAnnounce);
  session.wait(seconds(2));
  for (const char* request : {"00 07", "00 09", "00 0B", "00 0D", "00 0F 00", "00 0F 02",
                              "00 0F 03", "00 0F 04", "00 0F 0A", "00 77"}) {
    session.ask(request);
    session.wait(seconds(1));
  }
  session.ask("00 06");
  session.wait(seconds(1));
  for (const char* request : {"04 00 1C", "04 00 39", "04 00 33", "00 05"}) {
    session.ask(request);
    session.wait(seconds(1));
  }
  for (const char* request : {
           "04 00 77",
           "04 00 39",
           "04 00 33",
           "04 00 17 02 00 00 00 00",  // an artist, not counted
           "04 00 16",
           "04 00 18 05",                          // the tracks
           "04 00 1A 05 00 00 00 00 FF FF FF FF",  // their names
           "04 00 17 01 FF FF FF FF",              // no playlist
           "04 00 17 05 00 00 00 01",
           "04 00 1E",  // a track, and what plays
           "04 00 16",
           "04 00 28 00 00 00 01",  // all, from the second one
           "04 00 20 00 00 00 01",
           "04 00 0C 05 00 00 00 01 00 00",
           "04 00 20 00 00 0F FF",
           "04 00 1E",  // a track that is not there
           "04 00 1C",
           "04 00 29 04",
           "04 00 1E",  // back, after several seconds
           "04 00 1C",
           "04 00 29 05",
           "04 00 1C",
           "04 00 29 07",
       }) {
    session.ask(request);
    session.wait(seconds(1));
  }
  session.ask("04 00 26 01");
  session.ask("04 00 28 00 00 00 00");
  session.wait(seconds(60));
  session.ask("04 00 26 00");
  session.ask(kAnnounce);
  session.wait(seconds(1));
}

void expectSameDescription(const Personality& found, const Personality& preset) {
  EXPECT_EQ(found.name, simulator::builtInLibrary().name);
  EXPECT_EQ(found.softwareVersion, preset.softwareVersion);
  EXPECT_EQ(found.serialNumber, preset.serialNumber);
  EXPECT_EQ(found.modelId, preset.modelId);
  EXPECT_EQ(found.modelNumber, preset.modelNumber);
  ASSERT_EQ(found.lingoes.size(), preset.lingoes.size());
  for (const auto& [lingo, version] : preset.lingoes) {
    ASSERT_NE(found.versionOf(lingo), nullptr);
    EXPECT_EQ(found.versionOf(lingo)->major, version.major);
    EXPECT_EQ(found.versionOf(lingo)->minor, version.minor);
  }
  EXPECT_EQ(found.display.limits.width, preset.display.limits.width);
  EXPECT_EQ(found.display.limits.height, preset.display.limits.height);
  EXPECT_EQ(found.display.colour, preset.display.colour);
}

void expectSameIdentification(const Personality& found, const Personality& preset) {
  EXPECT_EQ(found.silentIdentifications, preset.silentIdentifications);
  EXPECT_EQ(found.silentBeforeIdentification, preset.silentBeforeIdentification);
  EXPECT_EQ(found.refusesSecondIdentification, preset.refusesSecondIdentification);
  EXPECT_EQ(found.identificationEnd, preset.identificationEnd);
  EXPECT_EQ(found.accessoryInfoDelay, preset.accessoryInfoDelay);
  EXPECT_EQ(found.extraAccessoryInfo, preset.extraAccessoryInfo);
  EXPECT_EQ(found.acknowledgesAccessoryInfo, preset.acknowledgesAccessoryInfo);
  EXPECT_EQ(found.asksSampleRates, preset.asksSampleRates);
  EXPECT_EQ(found.audioAttributesDelay, preset.audioAttributesDelay);
}

void expectSameAnswers(const Personality& found, const Personality& preset) {
  EXPECT_EQ(found.lengthForm, preset.lengthForm);
  EXPECT_EQ(found.unknownCommand, preset.unknownCommand);
  EXPECT_EQ(found.outsideExtendedMode, preset.outsideExtendedMode);
  EXPECT_EQ(found.displayNeedsExtendedMode, preset.displayNeedsExtendedMode);
  EXPECT_EQ(found.modeChangePending, preset.modeChangePending);
  EXPECT_EQ(found.modeChangeTogether, preset.modeChangeTogether);
  EXPECT_EQ(found.playPending, preset.playPending);
  EXPECT_EQ(found.soundDelay, preset.soundDelay);
  EXPECT_EQ(found.answerDelay, preset.answerDelay);
  EXPECT_EQ(found.acknowledgementDelay, preset.acknowledgementDelay);
}

void expectSameLists(const Personality& found, const Personality& preset) {
  EXPECT_EQ(found.countBeforeSelect, preset.countBeforeSelect);
  EXPECT_EQ(found.deselectsPlaylists, preset.deselectsPlaylists);
  EXPECT_EQ(found.trackSelection, preset.trackSelection);
  EXPECT_EQ(found.trackOrder, preset.trackOrder);
  EXPECT_EQ(found.player.previousRestartsAfter, preset.player.previousRestartsAfter);
  EXPECT_EQ(found.player.seekSpeed, preset.player.seekSpeed);
  EXPECT_EQ(found.badTrackIndex, preset.badTrackIndex);
  EXPECT_EQ(found.tellsGenre, preset.tellsGenre);
  EXPECT_EQ(found.positionInterval, preset.positionInterval);
  EXPECT_EQ(found.notificationJitter, preset.notificationJitter);
}

class ShownPersonalityOfPreset : public testing::TestWithParam<std::string> {};

TEST_P(ShownPersonalityOfPreset, HasTheSwitchesOfThePreset) {
  const Personality preset = simulator::personality(GetParam());
  RecordedSession session(preset);
  askEverything(session);
  const std::string json = personalityJson(session.shown());
  SCOPED_TRACE(json);
  const Personality found = simulator::parsePersonality(json);
  expectSameDescription(found, preset);
  expectSameIdentification(found, preset);
  expectSameAnswers(found, preset);
  expectSameLists(found, preset);
}

INSTANTIATE_TEST_SUITE_P(Each, ShownPersonalityOfPreset,
                         testing::ValuesIn(simulator::personalityNames()),
                         [](const auto& preset) { return preset.param; });

}  // namespace
}  // namespace iaptrace
