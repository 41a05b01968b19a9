#include "device/personality_settings.h"

#include <gtest/gtest.h>

#include <stdexcept>

namespace simulator {
namespace {

Personality with(const std::string& setting) {
  Personality personality;
  applySetting(personality, setting);
  return personality;
}

std::string refusal(const std::string& setting) {
  try {
    with(setting);
  } catch (const std::invalid_argument& refused) {
    return refused.what();
  }
  return "accepted";
}

TEST(PersonalitySettings, AcceptNumbers) {
  EXPECT_EQ(with("silent-identifications=2").silentIdentifications, 2u);
  EXPECT_EQ(with("accessory-info-patience=7").accessoryInfoPatience, milliseconds(7));
  EXPECT_EQ(with("audio-attributes-delay=7").audioAttributesDelay, milliseconds(7));
  EXPECT_EQ(with("accessory-info-delay=100").accessoryInfoDelay, milliseconds(100));
  EXPECT_EQ(with("sound-delay=200").soundDelay, milliseconds(200));
  EXPECT_EQ(with("packet-gap=7").packetGap, milliseconds(7));
  EXPECT_EQ(with("mode-change-pending=7").modeChangePending, milliseconds(7));
  EXPECT_EQ(with("play-pending=7").playPending, milliseconds(7));
  EXPECT_EQ(with("answer-delay=7").answerDelay, milliseconds(7));
  EXPECT_EQ(with("acknowledgement-delay=7").acknowledgementDelay, milliseconds(7));
  EXPECT_EQ(with("previous-restarts-after=0").player.previousRestartsAfter, Time(0));
  EXPECT_EQ(with("seek-speed=4").player.seekSpeed, 4);
  EXPECT_EQ(with("position-interval=100").positionInterval, milliseconds(100));
  EXPECT_EQ(with("notification-jitter=7").notificationJitter, milliseconds(7));
  EXPECT_EQ(with("image-interval=15000").display.imageInterval, seconds(15));
}

TEST(PersonalitySettings, AcceptNoAndYes) {
  EXPECT_FALSE(with("repeats-accessory-info=no").repeatsAccessoryInfo);
  EXPECT_TRUE(with("acknowledges-accessory-info=yes").acknowledgesAccessoryInfo);
  EXPECT_FALSE(with("asks-sample-rates=no").asksSampleRates);
  EXPECT_TRUE(with("audio-ack-opens-notifications=yes").audioAckOpensNotifications);
  EXPECT_TRUE(with("display-needs-extended-mode=yes").displayNeedsExtendedMode);
  EXPECT_FALSE(with("count-before-select=no").countBeforeSelect);
  EXPECT_TRUE(with("silent-before-identification=yes").silentBeforeIdentification);
  EXPECT_TRUE(with("refuses-second-identification=yes").refusesSecondIdentification);
  EXPECT_TRUE(with("mode-change-together=yes").modeChangeTogether);
  EXPECT_FALSE(with("deselects-playlists=no").deselectsPlaylists);
  EXPECT_FALSE(with("tells-genre=no").tellsGenre);
  EXPECT_FALSE(with("colour=no").display.colour);
}

TEST(PersonalitySettings, AcceptWords) {
  EXPECT_EQ(with("identification-end=mode").identificationEnd, IdentificationEnd::kRemoteUiMode);
  EXPECT_EQ(with("length-form=long").lengthForm, LengthForm::kLong);
  EXPECT_EQ(with("unknown-command=silence").unknownCommand, UnknownCommand::kSilence);
  EXPECT_EQ(with("outside-extended-mode=silence").outsideExtendedMode,
            OutsideExtendedMode::kSilence);
  EXPECT_EQ(with("bad-track-index=failed").badTrackIndex, BadTrackIndex::kFailed);
  EXPECT_EQ(with("track-order=name").trackOrder, TrackOrder::kByName);
  EXPECT_EQ(with("track-selection=alone").trackSelection, TrackSelection::kAlone);
}

TEST(PersonalitySettings, RefusalsSayWhatIsWrong) {
  EXPECT_EQ(refusal("speed"), "setting 'speed': write it as NAME=VALUE");
  EXPECT_EQ(refusal("speed=1"), "setting 'speed=1': there is no switch 'speed'");
  EXPECT_EQ(refusal("seek-speed=0"), "setting 'seek-speed=0': write a number, 1...100");
  EXPECT_EQ(refusal("seek-speed=101"), "setting 'seek-speed=101': write a number, 1...100");
  EXPECT_EQ(refusal("seek-speed="), "setting 'seek-speed=': write a number, 1...100");
  EXPECT_EQ(refusal("seek-speed=2x"), "setting 'seek-speed=2x': write a number, 1...100");
  EXPECT_EQ(refusal("seek-speed=99999999999"),
            "setting 'seek-speed=99999999999': write a number, 1...100");
  EXPECT_EQ(refusal("position-interval=9"),
            "setting 'position-interval=9': write a number, 10...3600000");
  EXPECT_EQ(refusal("colour=maybe"), "setting 'colour=maybe': write one of no|yes");
}

TEST(PersonalitySettings, HelpNamesThem) {
  EXPECT_NE(settingsHelp().find("  track-selection=list|alone "), std::string::npos);
  EXPECT_NE(settingsHelp().find("  seek-speed=1...100 "), std::string::npos);
  EXPECT_NE(settingsHelp().find("  position-interval=MS "), std::string::npos);
  EXPECT_NE(settingsHelp().find("  outside-extended-mode=bad-parameter|silence\n  "),
            std::string::npos);
}

}  // namespace
}  // namespace simulator
