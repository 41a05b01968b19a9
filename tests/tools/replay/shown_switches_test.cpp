// What a trace shows of a switch that no preset changes, and what it does not show.

#include <gtest/gtest.h>

#include "device/personality_settings.h"
#include "recorded_session.h"
#include "typed_trace.h"

namespace iaptrace {
namespace {

Personality with(const std::string& setting) {
  Personality model;
  applySetting(model, setting);
  return model;
}

/// Returns a switch as ipodsim --set takes it; empty when it is not shown.
std::string settingOf(const ShownPersonality& shown, const std::string& name) {
  const auto found = shown.settings.find(name);
  if (found == shown.settings.end()) return "";
  const auto* number = std::get_if<uint32_t>(&found->second);
  return number != nullptr ? std::to_string(*number) : std::get<std::string>(found->second);
}

TEST(ShownSwitches, AreNoneInATraceWithoutBytes) {
  const ShownPersonality shown = shownPersonality(typedConversation("# 0.1 IPD1: open ok\n"));
  EXPECT_EQ(personalityJson(shown), "{}\n");
}

TEST(ShownSwitches, AreNoneOfTheDatabaseInAnIdentification) {
  RecordedSession session{Personality()};
  session.ask(kAnnounce);
  const ShownPersonality shown = session.shown();
  EXPECT_EQ(settingOf(shown, "silent-identifications"), "0");
  EXPECT_EQ(settingOf(shown, "count-before-select"), "");
  EXPECT_FALSE(shown.name);
}

TEST(ShownSwitches, CountTheAnnouncementsThatAreIgnored) {
  RecordedSession session(with("silent-identifications=2"));
  for (int i = 0; i < 3; ++i) {
    session.ask(kAnnounce);
    session.wait(seconds(1));
  }
  EXPECT_EQ(settingOf(session.shown(), "silent-identifications"), "2");
}

TEST(ShownSwitches, CountTheAnnouncementsToASilentIpod) {
  RecordedSession session(with("silent-identifications=9"));
  session.ask(kAnnounce);
  session.ask(kAnnounce);
  EXPECT_EQ(settingOf(session.shown(), "silent-identifications"), "2");
}

TEST(ShownSwitches, HaveASilenceBeforeTheAnnouncement) {
  RecordedSession session(with("silent-before-identification=yes"));
  session.ask("00 07");
  session.wait(seconds(1));
  session.ask(kAnnounce);
  EXPECT_EQ(settingOf(session.shown(), "silent-before-identification"), "yes");
}

TEST(ShownSwitches, HaveTheRefusalOfASecondAnnouncement) {
  RecordedSession session(with("refuses-second-identification=yes"));
  session.ask(kAnnounce);
  session.ask(kAnnounce);
  EXPECT_EQ(settingOf(session.shown(), "refuses-second-identification"), "yes");
}

TEST(ShownSwitches, HaveThePatienceOfAQuestion) {
  RecordedSession repeated(with("accessory-info-patience=700"), false);
  repeated.ask(kAnnounce);
  repeated.wait(seconds(3));
  EXPECT_EQ(settingOf(repeated.shown(), "accessory-info-patience"), "700");
  EXPECT_EQ(settingOf(repeated.shown(), "repeats-accessory-info"), "yes");

  Personality hurried = with("repeats-accessory-info=no");
  applySetting(hurried, "accessory-info-patience=400");
  RecordedSession once(hurried, false);
  once.ask(kAnnounce);
  once.wait(seconds(3));
  EXPECT_EQ(settingOf(once.shown(), "accessory-info-patience"), "400");
  EXPECT_EQ(settingOf(once.shown(), "repeats-accessory-info"), "no");
}

TEST(ShownSwitches, HaveTheDelayOfTheFirstSampleRate) {
  RecordedSession session(with("audio-attributes-delay=350"));
  session.ask(kAnnounce);
  session.wait(seconds(1));
  EXPECT_EQ(settingOf(session.shown(), "audio-attributes-delay"), "350");
}

TEST(ShownSwitches, HaveTheDelayOfEveryAnswer) {
  RecordedSession session(with("answer-delay=25"));
  session.ask(kAnnounce);
  session.wait(seconds(1));
  session.ask("00 07");
  session.wait(seconds(1));
  EXPECT_EQ(settingOf(session.shown(), "answer-delay"), "25");
  EXPECT_EQ(settingOf(session.shown(), "acknowledgement-delay"), "0");
}

TEST(ShownSwitches, HaveTheLongFormOfFrames) {
  RecordedSession session(with("length-form=long"));
  session.ask("00 07");
  EXPECT_EQ(settingOf(session.shown(), "length-form"), "long");
}

TEST(ShownSwitches, HaveTheOrderOfTracks) {
  RecordedSession session(with("track-order=name"));
  session.ask("00 05");
  session.ask("04 00 18 05");
  session.ask("04 00 1A 05 00 00 00 00 FF FF FF FF");
  EXPECT_EQ(settingOf(session.shown(), "track-order"), "name");
}

TEST(ShownSwitches, HaveAnIpodThatSelectsWithoutACount) {
  RecordedSession session(with("count-before-select=no"));
  session.ask("00 05");
  session.ask("04 00 17 02 00 00 00 00");
  EXPECT_EQ(settingOf(session.shown(), "count-before-select"), "no");
}

TEST(ShownSwitches, HaveTheSpeedOfWinding) {
  RecordedSession session(with("seek-speed=20"));
  session.ask("00 05");
  session.ask("04 00 28 00 00 00 00");
  session.ask("04 00 1C");
  session.ask("04 00 29 05");
  session.wait(milliseconds(300));
  session.ask("04 00 1C");
  EXPECT_EQ(settingOf(session.shown(), "seek-speed"), "20");
}

TEST(ShownSwitches, HaveALingoThatIsNotSpoken) {
  Personality model;
  model.lingoes.erase(0x0A);
  RecordedSession session(model);
  session.ask("00 0F 0A");
  EXPECT_EQ(personalityJson(session.shown()).find("\"0A\": null") != std::string::npos, true)
      << personalityJson(session.shown());
}

TEST(ShownSwitches, DoNotTakeTheEndOfAConnectionForASilence) {
  const ShownPersonality shown =
      shownPersonality(typedConversation("# 0.0 IPD1: open ok\n"
                                         "0.1 IPD1: > 55 02 00 77 87\n"
                                         "# 0.1 IPD1: close\n"
                                         "# 0.2 IPD1: open ok\n"
                                         "0.3 IPD1: < 55 03 00 04 00 F9\n"));
  EXPECT_EQ(settingOf(shown, "unknown-command"), "");
}

TEST(ShownSwitches, AreValidJsonWhateverTheNameIs) {
  ShownPersonality shown;
  shown.name = "\"\xFF\n";
  EXPECT_EQ(personalityJson(shown), "{\n  \"name\": \"\\\"\xEF\xBF\xBD\\n\"\n}\n");
}

}  // namespace
}  // namespace iaptrace
