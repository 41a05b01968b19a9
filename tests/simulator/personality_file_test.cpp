#include "device/personality_file.h"

#include <gtest/gtest.h>

#include <fstream>
#include <stdexcept>

#include "support/temporary_folder.h"

namespace simulator {
namespace {

std::string refusalOf(const std::string& json) {
  try {
    parsePersonality(json);
  } catch (const std::invalid_argument& refused) {
    return refused.what();
  }
  return "accepted";
}

TEST(PersonalityFile, IsTheDefaultModelWhenItIsEmpty) {
  const Personality made = parsePersonality("{}");
  EXPECT_EQ(made.modelNumber, "MB147");
  EXPECT_EQ(made.lingoes.size(), 5u);
  EXPECT_TRUE(made.asksSampleRates);
}

TEST(PersonalityFile, HasTheIpodsDescription) {
  const Personality made = parsePersonality(
      R"({"name": "Zoe", "softwareVersion": "2.10.255", "serialNumber": "S1",
          "modelId": 4294967295, "modelNumber": "M9"})");
  EXPECT_EQ(made.name, "Zoe");
  EXPECT_EQ(made.softwareVersion, (std::array<uint8_t, 3>{2, 10, 255}));
  EXPECT_EQ(made.serialNumber, "S1");
  EXPECT_EQ(made.modelId, 0xFFFFFFFF);
  EXPECT_EQ(made.modelNumber, "M9");
}

TEST(PersonalityFile, HasLingoesAndThoseThatAreNotSpoken) {
  const Personality made =
      parsePersonality(R"({"lingoes": {"04": "1.2", "0A": null, "1f": "0.9"}})");
  ASSERT_NE(made.versionOf(0x04), nullptr);
  EXPECT_EQ(made.versionOf(0x04)->minor, 2);
  EXPECT_EQ(made.versionOf(0x0A), nullptr);
  ASSERT_NE(made.versionOf(0x1F), nullptr);
  EXPECT_EQ(made.versionOf(0x1F)->minor, 9);
}

TEST(PersonalityFile, HasLimitsAndQuestions) {
  const Personality made =
      parsePersonality(R"({"imageLimits": "400x300", "extraAccessoryInfo": [2, 3]})");
  EXPECT_EQ(made.display.limits.width, 400);
  EXPECT_EQ(made.display.limits.height, 300);
  EXPECT_EQ(made.screenWidth, 400);
  EXPECT_EQ(made.screenHeight, 300);
  EXPECT_EQ(made.extraAccessoryInfo, (std::vector<uint8_t>{2, 3}));
}

TEST(PersonalityFile, HasTheSwitchesOfTheCommandLine) {
  const Personality made = parsePersonality(
      R"({"settings": {"mode-change-pending": 300, "unknown-command": "failed", "colour": "no"}})");
  EXPECT_EQ(made.modeChangePending, milliseconds(300));
  EXPECT_EQ(made.unknownCommand, UnknownCommand::kFailed);
  EXPECT_FALSE(made.display.colour);
}

TEST(PersonalityFile, RefusesWhatItDoesNotKnow) {
  EXPECT_EQ(refusalOf(R"({"music": "/home"})"), "\"music\" is not a key of such a file");
  EXPECT_EQ(refusalOf(R"({"settings": {"speed": 1}})"),
            "setting 'speed=1': there is no switch 'speed'");
  EXPECT_EQ(refusalOf(R"({"settings": {"colour=no": "x"}})"), "\"colour=no\" is not a switch");
  EXPECT_EQ(refusalOf("[]"), "it must be an object");
}

TEST(PersonalityFile, RefusesWrongValues) {
  EXPECT_EQ(refusalOf(R"({"name": 7})"), "\"name\" must be a text");
  EXPECT_EQ(refusalOf("{\"name\": \"a\\u0000b\"}"),
            "\"name\" must be a text of at most 255 bytes without U+0000");
  EXPECT_EQ(refusalOf(R"({"modelId": 4294967296})"),
            "\"modelId\" must be a whole number from 0 to 4294967295");
  EXPECT_EQ(refusalOf(R"({"modelId": -1})"),
            "\"modelId\" must be a whole number from 0 to 4294967295");
  for (const char* version : {"1.1", "1.1.256", "1.1.1.1", "1..1", "a.b.c", "1.1.1 ", ""}) {
    EXPECT_EQ(refusalOf(R"({"softwareVersion": ")" + std::string(version) + "\"}"),
              "\"softwareVersion\" must be a text like 1.1.2");
  }
  EXPECT_EQ(refusalOf(R"({"imageLimits": "4096x1"})"),
            "\"imageLimits\" must be a text like 320x240");
  for (const char* lingo : {"4", "20", "0x4", "-1", "04 "}) {
    EXPECT_EQ(refusalOf(R"({"lingoes": {")" + std::string(lingo) + R"(": "1.0"}})"),
              "\"" + std::string(lingo) + "\" must be a lingo from 00 to 1F, like 0A");
  }
  EXPECT_EQ(refusalOf(R"({"lingoes": {"04": 1}})"), "\"04\" must be a text");
  EXPECT_EQ(refusalOf(R"({"extraAccessoryInfo": [32]})"),
            "\"extraAccessoryInfo\" must be a whole number from 0 to 31");
  EXPECT_EQ(refusalOf(R"({"settings": {"answer-delay": 3600001}})"),
            "setting 'answer-delay=3600001': write a number, 0...3600000");
  EXPECT_EQ(refusalOf(R"({"settings": {"colour": true}})"),
            "\"colour\" must be a word or a number");
}

TEST(PersonalityFile, RefusesWhatIsNotJson) {
  EXPECT_NE(refusalOf("").find("it is not JSON"), std::string::npos);
  EXPECT_NE(refusalOf("{\"name\": ").find("it is not JSON"), std::string::npos);
  EXPECT_EQ(refusalOf(std::string(100000, '[')), "it is nested too deeply");
}

TEST(PersonalityFile, NamesTheFileInOneLine) {
  const TemporaryFolder folder;
  std::ofstream(folder / "mine.json") << "{\"\\u001b[31m\\n\": 1}";
  const auto refusal = [](const std::filesystem::path& file) -> std::string {
    try {
      readPersonality(file);
    } catch (const std::invalid_argument& refused) {
      return refused.what();
    }
    return "accepted";
  };
  EXPECT_EQ(refusal(folder / "mine.json"),
            (folder / "mine.json").string() +
                ": \"\\x1B[31m\\x0A\" is not a key of such a file; see ipodsim "
                "--help-personalities");
  EXPECT_NE(refusal(folder / "none.json").find("No such file"), std::string::npos);
}

TEST(PersonalityFile, IsDistinguishedFromAPresetByItsName) {
  EXPECT_TRUE(isPersonalityFile("mine.json"));
  EXPECT_TRUE(isPersonalityFile("/home/zoe/mine.json"));
  EXPECT_FALSE(isPersonalityFile("classic"));
}

}  // namespace
}  // namespace simulator
