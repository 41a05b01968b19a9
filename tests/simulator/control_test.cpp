// The control socket of the program ipodsim.

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>

#include <cstring>
#include <filesystem>
#include <fstream>

#include "support/control_client.h"
#include "support/host_end.h"
#include "support/program.h"
#include "support/temporary_folder.h"

namespace simulator {
namespace {

namespace fs = std::filesystem;

class ControlTest : public testing::Test {
 protected:
  std::unique_ptr<Program> run(std::vector<std::string> arguments = {}) {
    return runAt(link, socketPath, std::move(arguments));
  }
  std::unique_ptr<Program> runAt(const fs::path& ipod, const fs::path& control,
                                 std::vector<std::string> arguments = {}) {
    arguments.insert(arguments.begin(),
                     {"--quiet", "--link", ipod.string(), "--control", control.string()});
    return std::make_unique<Program>(IPODSIM_PROGRAM, arguments);
  }
  std::unique_ptr<Program> runReady(const std::vector<std::string>& arguments = {}) {
    auto program = run(arguments);
    EXPECT_EQ(program->readLine(), "iPod ready on " + link.string()) << program->errors();
    return program;
  }
  // Returns the errors of a program that cannot start.
  std::string refusal() { return refusalAt(link, socketPath); }
  std::string refusalAt(const fs::path& ipod, const fs::path& control) {
    auto program = runAt(ipod, control);
    const std::optional<int> ended = program->waitForEnd();
    EXPECT_EQ(ended, 1);
    return ended ? program->errors() : "it runs";
  }
  std::string library(const std::string& json) {
    std::ofstream(folder / "library.json") << json;
    return (folder / "library.json").string();
  }

  TemporaryFolder folder;
  const fs::path link = folder / "ipod";
  const fs::path socketPath = folder / "control";
};

/// An iPod that runs, and a program that controls it.
class ControlVerbsTest : public ControlTest {
 protected:
  std::string error(const std::string& line) { return client.ask(line).error(); }
  std::string message(const std::string& line) { return client.ask(line).message(); }

  const std::unique_ptr<Program> program = runReady({"--library", threeTracks()});
  ControlClient client{socketPath.string()};

 private:
  std::string threeTracks() {
    return library(R"({"name": "Zoe", "tracks": [
      {"title": "One", "artist": "Anna", "album": "First", "genre": "Rock", "track": 1,
       "lengthMs": 60000, "sampleRate": 48000},
      {"title": "Two", "artist": "Anna", "album": "First", "track": 2, "lengthMs": 70000},
      {"title": "Three", "artist": "Bert", "album": "Second", "lengthMs": 80000}]})");
  }
};

TEST_F(ControlVerbsTest, StatusOfANewIpod) {
  const ControlAnswer status = client.ask(R"({"do":"status"})");
  EXPECT_TRUE(status.isOk());
  EXPECT_TRUE(status.flag("/plugged"));
  EXPECT_TRUE(status.has("/extended"));
  EXPECT_FALSE(status.flag("/extended"));
  EXPECT_TRUE(status.has("/accessory"));
  EXPECT_FALSE(status.flag("/accessory"));
  EXPECT_EQ(status.text("/personality"), "classic");
  EXPECT_EQ(status.text("/name"), "Zoe");
  EXPECT_EQ(status.text("/link"), link.string());
  EXPECT_EQ(status.text("/state"), "stopped");
  EXPECT_NE(status.raw().find("\"track\":null,\"index\":null"), std::string::npos);
  EXPECT_EQ(status.number("/tracks"), 0);
  EXPECT_EQ(status.text("/shuffle"), "off");
  EXPECT_EQ(status.text("/repeat"), "off");
  EXPECT_EQ(status.number("/messages/received"), 0);
  EXPECT_EQ(status.number("/screen/width"), 320);
  EXPECT_EQ(status.number("/screen/height"), 240);
  EXPECT_EQ(status.number("/screen/revision"), 1);
}

TEST_F(ControlVerbsTest, StatusOfThePlayingTrack) {
  EXPECT_TRUE(client.ask(R"({"do":"press","button":"play"})").isOk());
  const ControlAnswer status = client.ask(R"({"do":"status"})");
  EXPECT_EQ(status.text("/state"), "playing");
  EXPECT_EQ(status.text("/track/title"), "One");
  EXPECT_EQ(status.text("/track/artist"), "Anna");
  EXPECT_EQ(status.text("/track/album"), "First");
  EXPECT_EQ(status.text("/track/genre"), "Rock");
  EXPECT_EQ(status.number("/track/rate"), 48000);
  EXPECT_EQ(status.number("/track/length_ms"), 60000);
  EXPECT_EQ(status.number("/index"), 0);
  EXPECT_EQ(status.number("/tracks"), 3);
  EXPECT_GE(status.number("/position_ms"), 0);
}

TEST_F(ControlVerbsTest, StatusCountsTheAccessorysMessages) {
  HostEnd host(link.string());
  ASSERT_TRUE(host.write("55 02 00 07 F7"));
  EXPECT_EQ(host.read(9), "55 06 00 08 5A 6F 65 00 C4");
  ControlAnswer status = client.ask(R"({"do":"wait-until","accessory":true})");
  EXPECT_TRUE(status.flag("/accessory"));
  EXPECT_EQ(status.number("/messages/received"), 1);
  EXPECT_EQ(status.number("/messages/sent"), 1);
  host.close();
  EXPECT_TRUE(client.ask(R"({"do":"wait-until","accessory":false})").isOk());
}

TEST_F(ControlVerbsTest, EachButtonDoesWhatItsNameSays) {
  const auto after = [&](const std::string& button) {
    EXPECT_TRUE(client.ask(R"({"do":"press","button":")" + button + "\"}").isOk()) << button;
    const ControlAnswer status = client.ask(R"({"do":"status"})");
    return status.text("/state") + " " + status.text("/track/title");
  };
  EXPECT_EQ(after("play"), "playing One");
  EXPECT_EQ(after("next"), "playing Two");
  EXPECT_EQ(after("previous"), "playing One");
  EXPECT_EQ(after("pause"), "paused One");
  EXPECT_EQ(after("play-pause"), "playing One");
  EXPECT_EQ(after("play-pause"), "paused One");
  EXPECT_EQ(after("menu"), "paused One");
  EXPECT_EQ(after("select"), "paused One");
}

TEST_F(ControlVerbsTest, MenuChangesTheScreenUntilSelect) {
  const auto screenAfter = [&](const std::string& button) {
    client.ask(R"({"do":"press","button":")" + button + "\"}");
    return client.ask(R"({"do":"screen"})").text("/png");
  };
  screenAfter("play");
  const std::string playing = screenAfter("pause");
  const std::string menu = screenAfter("menu");
  EXPECT_NE(menu, playing);
  EXPECT_EQ(screenAfter("select"), playing);
}

TEST_F(ControlVerbsTest, UnknownButtonIsRefusedWithTheNames) {
  EXPECT_EQ(error(R"({"do":"press","button":"eject"})"), "unknown-button");
  EXPECT_EQ(message(R"({"do":"press","button":"eject"})"),
            "There is no button eject; the buttons are play, pause, play-pause, next, previous, "
            "menu, select.");
  EXPECT_EQ(message(R"({"do":"press"})"), "The key button is missing; its value is a text.");
}

TEST_F(ControlVerbsTest, SeekMovesWithinTheTrack) {
  EXPECT_EQ(error(R"({"do":"seek","position_ms":1000})"), "nothing-plays");
  client.ask(R"({"do":"press","button":"play"})");
  client.ask(R"({"do":"press","button":"pause"})");
  EXPECT_TRUE(client.ask(R"({"do":"seek","position_ms":42000})").isOk());
  EXPECT_EQ(client.ask(R"({"do":"status"})").number("/position_ms"), 42000);
  EXPECT_TRUE(client.ask(R"({"do":"seek","position_ms":0})").isOk());
  EXPECT_EQ(client.ask(R"({"do":"status"})").number("/position_ms"), 0);
}

TEST_F(ControlVerbsTest, SeekToTheEndPlaysTheNextTrack) {
  client.ask(R"({"do":"press","button":"play"})");
  EXPECT_TRUE(client.ask(R"({"do":"seek","position_ms":4000000000})").isOk());
  EXPECT_EQ(client.ask(R"({"do":"status"})").text("/track/title"), "Two");
}

TEST_F(ControlVerbsTest, SeekRefusesWhatIsNotAPosition) {
  const std::string wanted =
      "The value of position_ms must be a whole number from 0 to 4294967295.";
  for (const char* const value : {"-1", "1.5", "\"1\"", "4294967296", "null", "[]"}) {
    const std::string line = R"({"do":"seek","position_ms":)" + std::string(value) + "}";
    EXPECT_EQ(message(line), wanted) << value;
  }
}

TEST_F(ControlVerbsTest, UnplugAndPlug) {
  HostEnd host(link.string());
  EXPECT_TRUE(client.ask(R"({"do":"unplug"})").isOk());
  EXPECT_FALSE(fs::exists(fs::symlink_status(link)));
  EXPECT_TRUE(host.readFails());
  EXPECT_FALSE(client.ask(R"({"do":"status"})").flag("/plugged"));
  EXPECT_TRUE(client.ask(R"({"do":"unplug"})").isOk()) << "again";
  EXPECT_EQ(client.ask(R"({"do":"plug"})").text("/link"), link.string());
  EXPECT_TRUE(client.ask(R"({"do":"status"})").flag("/plugged"));
  HostEnd again(link.string());
  ASSERT_TRUE(again.write("55 02 00 07 F7"));
  EXPECT_EQ(again.read(9), "55 06 00 08 5A 6F 65 00 C4");
  EXPECT_TRUE(client.ask(R"({"do":"plug"})").isOk()) << "again";
}

TEST_F(ControlVerbsTest, PlugsAnotherModelIn) {
  client.ask(R"({"do":"press","button":"play"})");
  EXPECT_EQ(error(R"({"do":"plug","personality":"nano"})"), "plugged");
  client.ask(R"({"do":"unplug"})");
  EXPECT_TRUE(client.ask(R"({"do":"plug","personality":"nano"})").isOk());
  const ControlAnswer status = client.ask(R"({"do":"status"})");
  EXPECT_EQ(status.text("/personality"), "nano");
  EXPECT_EQ(status.number("/screen/width"), 176);
  EXPECT_EQ(status.text("/state"), "stopped");
  EXPECT_EQ(status.text("/name"), "Zoe");
  HostEnd host(link.string());
  ASSERT_TRUE(host.write("55 03 00 0F 04 EA"));
  EXPECT_EQ(host.read(8), "55 05 00 10 04 01 0D D9") << "its Extended Interface is 1.13";
}

TEST_F(ControlVerbsTest, UnknownModelIsRefusedAndNothingIsPlugged) {
  client.ask(R"({"do":"unplug"})");
  EXPECT_EQ(error(R"({"do":"plug","personality":"/etc/passwd"})"), "unknown-personality");
  EXPECT_EQ(error(R"({"do":"plug","personality":5})"), "bad-value");
  EXPECT_FALSE(client.ask(R"({"do":"status"})").flag("/plugged"));
}

TEST_F(ControlVerbsTest, PlugReportsALinkThatCannotBeMade) {
  client.ask(R"({"do":"unplug"})");
  std::ofstream(link) << "precious";
  const ControlAnswer refused = client.ask(R"({"do":"plug"})");
  EXPECT_EQ(refused.error(), "cannot-plug");
  EXPECT_EQ(refused.message(), "cannot make the link " + link.string() +
                                   ": there is a file of this name; use another link");
  EXPECT_EQ(fs::file_size(link), 8u);
}

TEST_F(ControlVerbsTest, FaultsAreAddedAndCleared) {
  ControlAnswer added = client.ask(R"({"do":"fault","fault":"doubled@00:7#1"})");
  ASSERT_EQ(added.size("/faults"), 1u);
  EXPECT_EQ(added.text("/faults/0"), "doubled@00:07#1");
  HostEnd host(link.string());
  ASSERT_TRUE(host.write("55 02 00 07 F7"));
  EXPECT_EQ(host.read(18), "55 06 00 08 5A 6F 65 00 C4 55 06 00 08 5A 6F 65 00 C4");
  EXPECT_EQ(client.ask(R"({"do":"status"})").number("/faults_struck"), 1);
  client.ask(R"({"do":"fault","fault":"random=1.5/lost,late"})");
  EXPECT_EQ(client.ask(R"({"do":"status"})").text("/faults/1"), "random=1.5/lost,late");
  EXPECT_EQ(client.ask(R"({"do":"fault","clear":true})").size("/faults"), 0u);
  EXPECT_EQ(client.ask(R"({"do":"fault","clear":true,"fault":"lost"})").size("/faults"), 1u);
  EXPECT_EQ(client.ask(R"({"do":"status"})").size("/faults"), 1u);
}

TEST_F(ControlVerbsTest, WrongFaultIsRefusedAndChangesNothing) {
  client.ask(R"({"do":"fault","fault":"lost"})");
  EXPECT_EQ(message(R"({"do":"fault","fault":"what","clear":true})"),
            "fault 'what': there is no fault 'what'; see ipodsim --help-faults");
  EXPECT_EQ(error(R"({"do":"fault"})"), "missing-key");
  EXPECT_EQ(error(R"({"do":"fault","clear":1})"), "bad-value");
  EXPECT_EQ(client.ask(R"({"do":"status"})").size("/faults"), 1u);
}

TEST_F(ControlVerbsTest, NumberOfFaultsIsLimited) {
  for (int i = 0; i < 1000; ++i)
    ASSERT_TRUE(client.ask(R"({"do":"fault","fault":"lost@04:18#2"})").isOk());
  EXPECT_EQ(error(R"({"do":"fault","fault":"lost@04:18#2"})"), "too-many-faults");
}

TEST_F(ControlVerbsTest, FaultsRemainWithAnotherModel) {
  client.ask(R"({"do":"fault","fault":"lost@04:18#2"})");
  client.ask(R"({"do":"fault","fault":"random=2"})");
  client.ask(R"({"do":"unplug"})");
  client.ask(R"({"do":"plug","personality":"video"})");
  const ControlAnswer status = client.ask(R"({"do":"status"})");
  EXPECT_EQ(status.text("/faults/0"), "lost@04:0018#2");
  EXPECT_EQ(status.text("/faults/1"), "random=2");
}

TEST_F(ControlVerbsTest, LibraryHasNumbers) {
  const ControlAnswer music = client.ask(R"({"do":"library"})");
  EXPECT_EQ(music.text("/name"), "Zoe");
  EXPECT_EQ(music.number("/tracks"), 3);
  EXPECT_EQ(music.number("/artists"), 2);
  EXPECT_EQ(music.number("/albums"), 2);
  EXPECT_EQ(music.number("/genres"), 1);
  EXPECT_EQ(music.number("/playlists"), 0);
}

TEST_F(ControlVerbsTest, LibraryIsResizedOnlyWhileUnplugged) {
  EXPECT_EQ(error(R"({"do":"library","tracks":2})"), "plugged");
  client.ask(R"({"do":"unplug"})");
  EXPECT_EQ(client.ask(R"({"do":"library","tracks":1})").number("/tracks"), 1);
  EXPECT_EQ(client.ask(R"({"do":"library","tracks":3000})").number("/tracks"), 3000);
  client.ask(R"({"do":"plug"})");
  HostEnd host(link.string());
  ASSERT_TRUE(host.write("55 02 00 05 F9"));
  EXPECT_EQ(host.read(7), "55 04 00 02 00 05 F5");
  ASSERT_TRUE(host.write("55 04 04 00 18 05 DB"));
  EXPECT_EQ(host.read(10), "55 07 04 00 19 00 00 0B B8 19") << "3000 tracks";
}

TEST_F(ControlVerbsTest, LibraryRefusesPathsAndHugeNumbers) {
  client.ask(R"({"do":"unplug"})");
  EXPECT_EQ(error(R"({"do":"library","tracks":1000001})"), "bad-value");
  EXPECT_EQ(error(R"({"do":"library","tracks":"/etc/passwd"})"), "bad-value");
  EXPECT_EQ(error(R"({"do":"library","music":"/etc"})"), "unknown-key");
  EXPECT_EQ(client.ask(R"({"do":"library"})").number("/tracks"), 3);
}

TEST_F(ControlVerbsTest, ScreenIsAPicture) {
  const ControlAnswer screen = client.ask(R"({"do":"screen"})");
  EXPECT_EQ(screen.text("/png").substr(0, 11), "iVBORw0KGgo") << "the signature of PNG in Base64";
  EXPECT_EQ(screen.text("/png").size() % 4, 0u);
  EXPECT_EQ(screen.number("/width"), 320);
  EXPECT_EQ(screen.number("/height"), 240);
}

TEST_F(ControlVerbsTest, ScreenRevisionGrowsOnlyWhenThePictureChanges) {
  const long long first = client.ask(R"({"do":"screen"})").number("/revision");
  EXPECT_EQ(client.ask(R"({"do":"screen"})").number("/revision"), first);
  client.ask(R"({"do":"press","button":"play"})");
  client.ask(R"({"do":"press","button":"pause"})");
  const ControlAnswer playing = client.ask(R"({"do":"screen"})");
  EXPECT_GT(playing.number("/revision"), first);
  EXPECT_EQ(client.ask(R"({"do":"status"})").number("/screen/revision"),
            playing.number("/revision"));
}

TEST_F(ControlVerbsTest, WaitsForTheScreenToChange) {
  client.ask(R"({"do":"press","button":"play"})");
  const long long now = client.ask(R"({"do":"screen"})").number("/revision");
  const ControlAnswer later =
      client.ask(R"({"do":"wait-until","screen_revision":)" + std::to_string(now + 1) + "}");
  EXPECT_TRUE(later.isOk()) << "the position moves";
  EXPECT_GT(later.number("/screen/revision"), now);
}

TEST_F(ControlVerbsTest, WaitsForTheAccessorysMode) {
  ASSERT_TRUE(client.send("{\"do\":\"wait-until\",\"extended\":true}\n"));
  HostEnd host(link.string());
  ASSERT_TRUE(host.write("55 02 00 05 F9"));
  EXPECT_TRUE(client.readAnswer().flag("/extended"));
}

TEST_F(ControlVerbsTest, WaitsUntilAllConditionsAreTrue) {
  ASSERT_TRUE(client.send(
      "{\"do\":\"wait-until\",\"state\":\"playing\",\"title\":\"Two\",\"plugged\":true}\n"));
  ControlClient other(socketPath.string());
  other.ask(R"({"do":"press","button":"play"})");
  EXPECT_EQ(client.readAnswer(milliseconds(50)).error(), "no-answer") << "it plays One";
  other.ask(R"({"do":"press","button":"pause"})");
  other.ask(R"({"do":"press","button":"next"})");
  EXPECT_EQ(client.readAnswer(milliseconds(50)).error(), "no-answer") << "it is paused";
  other.ask(R"({"do":"press","button":"play"})");
  const ControlAnswer status = client.readAnswer();
  EXPECT_EQ(status.text("/track/title"), "Two");
  EXPECT_EQ(status.text("/state"), "playing");
}

TEST_F(ControlVerbsTest, WaitsForAPosition) {
  client.ask(R"({"do":"press","button":"play"})");
  const ControlAnswer status = client.ask(R"({"do":"wait-until","position_ms":300})");
  EXPECT_GE(status.number("/position_ms"), 300);
  EXPECT_LT(status.number("/position_ms"), 20000);
}

TEST_F(ControlVerbsTest, WaitsForTheCable) {
  ASSERT_TRUE(client.send("{\"do\":\"wait-until\",\"plugged\":false}\n"));
  ControlClient(socketPath.string()).ask(R"({"do":"unplug"})");
  EXPECT_FALSE(client.readAnswer().flag("/plugged"));
}

TEST_F(ControlVerbsTest, WaitEndsWithATimeOut) {
  EXPECT_EQ(error(R"({"do":"wait-until","state":"playing","timeout_ms":50})"), "timeout");
  EXPECT_EQ(error(R"({"do":"wait-until","title":"One","timeout_ms":0})"), "timeout");
}

TEST_F(ControlVerbsTest, WaitRefusesWrongConditions) {
  EXPECT_EQ(message(R"({"do":"wait-until","timeout_ms":60001})"),
            "The value of timeout_ms must be a whole number from 0 to 60000.");
  EXPECT_EQ(message(R"({"do":"wait-until","state":"loud"})"),
            "The value of state must be stopped, playing or paused.");
  EXPECT_EQ(error(R"({"do":"wait-until","extended":"yes"})"), "bad-value");
  EXPECT_EQ(error(R"({"do":"wait-until","accessory":1})"), "bad-value");
  EXPECT_EQ(error(R"({"do":"wait-until","plugged":null})"), "bad-value");
  EXPECT_EQ(error(R"({"do":"wait-until","title":7})"), "bad-value");
  EXPECT_EQ(error(R"({"do":"wait-until","position_ms":-1})"), "bad-value");
  EXPECT_EQ(error(R"({"do":"wait-until","screen_revision":"x"})"), "bad-value");
  EXPECT_EQ(message(R"({"do":"wait-until","tittle":"One"})"),
            "The verb wait-until has no key tittle; its keys are state, extended, accessory, "
            "plugged, title, position_ms, screen_revision, timeout_ms.");
}

TEST_F(ControlVerbsTest, HelpNamesEveryVerb) {
  const ControlAnswer help = client.ask(R"({"do":"help"})");
  ASSERT_EQ(help.size("/verbs"), 10u);
  for (int i = 0; i < 10; ++i) {
    const std::string name = help.text("/verbs/" + std::to_string(i) + "/verb");
    const ControlAnswer tried = client.ask(R"({"do":")" + name + R"(","surely no key":1})");
    EXPECT_EQ(tried.error(), "unknown-key") << name;
  }
}

TEST_F(ControlVerbsTest, JunkIsRefusedAndTheConnectionRemains) {
  EXPECT_EQ(message(R"({"do":"dance"})"),
            "There is no verb dance; the verbs are status, press, seek, unplug, plug, fault, "
            "library, screen, wait-until, help.");
  for (const char* const junk : {"hello", "{", "[]", "7", "\"do\"", "{\"do\":\"status\"} x",
                                 "\xff\xfe", "{\"do\":\"\xc3\x28\"}"}) {
    EXPECT_EQ(error(junk), "not-json") << junk;
  }
  EXPECT_EQ(error("{}"), "missing-key");
  EXPECT_EQ(error(R"({"do":["status"]})"), "bad-value");
  EXPECT_EQ(error(std::string("{\"do\":\"st\0tus\"}", 16)), "not-json");
  EXPECT_EQ(error(std::string(60000, '[')), "not-json");
  EXPECT_TRUE(client.ask(" {\"do\": \"status\"} \r").isOk());
}

TEST_F(ControlVerbsTest, LineOf64KilobytesIsRead) {
  const std::string line = R"({"do":"status"})";
  EXPECT_TRUE(client.ask(line + std::string(65536 - line.size(), ' ')).isOk());
}

TEST_F(ControlVerbsTest, LongerLineEndsTheConnection) {
  EXPECT_TRUE(client.send(std::string(65537, 'x')));
  const ControlAnswer refused = client.readAnswer();
  EXPECT_EQ(refused.error(), "line-too-long");
  EXPECT_EQ(refused.message(),
            "A line has at most 65536 bytes. Connect again, and send shorter lines.");
  EXPECT_TRUE(client.isEnded());
  EXPECT_TRUE(ControlClient(socketPath.string()).ask(R"({"do":"status"})").isOk());
}

TEST_F(ControlVerbsTest, LinesSentTogetherAreAnsweredInOrder) {
  ASSERT_TRUE(
      client.send("{\"do\":\"press\",\"button\":\"play\"}\n\n{\"do\":\"jump\"}\n"
                  "{\"do\":\"wait-until\",\"state\":\"playing\"}\n{\"do\":\"screen\"}\n"));
  EXPECT_EQ(client.readAnswer().raw(), "{\"ok\":true}");
  EXPECT_EQ(client.readAnswer().error(), "unknown-verb");
  EXPECT_EQ(client.readAnswer().text("/state"), "playing");
  EXPECT_TRUE(client.readAnswer().has("/png"));
}

TEST_F(ControlVerbsTest, LastLineNeedsNoEnd) {
  ASSERT_TRUE(client.send("{\"do\":\"status\"}"));
  client.endInput();
  EXPECT_TRUE(client.readAnswer().isOk());
  EXPECT_TRUE(client.isEnded());
}

TEST_F(ControlVerbsTest, WaitOfOneProgramDoesNotBlockOthers) {
  ASSERT_TRUE(client.send("{\"do\":\"wait-until\",\"state\":\"playing\",\"timeout_ms\":60000}\n"));
  ControlClient other(socketPath.string());
  EXPECT_EQ(other.ask(R"({"do":"status"})").text("/state"), "stopped");
  EXPECT_EQ(client.readAnswer(Time(0)).error(), "no-answer");
}

TEST_F(ControlVerbsTest, ProgramThatLeavesWhileItWaitsMakesRoom) {
  for (int i = 0; i < 40; ++i) {
    ControlClient other(socketPath.string());
    ASSERT_TRUE(
        other.send("{\"do\":\"wait-until\",\"state\":\"playing\","
                   "\"timeout_ms\":60000}\n"));
  }
  EXPECT_TRUE(client.ask(R"({"do":"status"})").isOk());
  ControlClient late(socketPath.string());
  EXPECT_TRUE(late.ask(R"({"do":"status"})").isOk());
}

TEST_F(ControlVerbsTest, ThirtyTwoProgramsCanConnect) {
  std::vector<std::unique_ptr<ControlClient>> others;
  for (int i = 0; i < 31; ++i) {
    others.push_back(std::make_unique<ControlClient>(socketPath.string()));
    ASSERT_TRUE(others.back()->ask(R"({"do":"status"})").isOk()) << i;
  }
  EXPECT_TRUE(client.ask(R"({"do":"status"})").isOk());
  ControlClient late(socketPath.string());
  const ControlAnswer refused = late.readAnswer();
  EXPECT_EQ(refused.error(), "too-many-clients");
  EXPECT_EQ(refused.message(), "There are 32 connections already. Close one of them first.");
  EXPECT_TRUE(late.isEnded());
}

// It takes five seconds, the program's patience.
TEST_F(ControlVerbsTest, ProgramThatDoesNotReadIsDisconnected) {
  ControlClient deaf(socketPath.string());
  std::string lines;
  for (int i = 0; i < 100; ++i)
    lines += "{\"do\":\"screen\"}\n";
  ASSERT_TRUE(deaf.send(lines));
  EXPECT_TRUE(client.ask(R"({"do":"status"})").isOk()) << "nobody else waits";
  EXPECT_TRUE(deaf.isHungUp());
  EXPECT_TRUE(client.ask(R"({"do":"status"})").isOk());
}

TEST_F(ControlTest, TypedCommandsAndProgramsControlTheSameIpod) {
  auto program = runReady({"--interactive"});
  ControlClient client(socketPath.string());
  program->type("play");
  EXPECT_TRUE(client.ask(R"({"do":"wait-until","state":"playing"})").isOk());
  client.ask(R"({"do":"press","button":"pause"})");
  program->type("status");
  program->readLine();
  EXPECT_EQ(program->readLine().value_or("").rfind("paused: ", 0), 0u);
}

TEST_F(ControlTest, AnswersAreUtf8WhateverTheMusic) {
  auto program = runReady({"--name", "\xff\xfe", "--library", library(R"({"tracks": []})")});
  ControlClient client(socketPath.string());
  EXPECT_EQ(client.ask(R"({"do":"status"})").text("/name"), "\uFFFD\uFFFD");
  client.ask(R"({"do":"press","button":"play"})");
  EXPECT_EQ(client.ask(R"({"do":"status"})").text("/state"), "stopped") << "there is no music";
  EXPECT_TRUE(client.ask(R"({"do":"screen"})").isOk());
}

TEST_F(ControlTest, SocketBelongsToItsOwnerAlone) {
  const mode_t before = umask(0);
  auto program = runReady();
  umask(before);
  struct stat made;
  ASSERT_EQ(lstat(socketPath.c_str(), &made), 0);
  EXPECT_TRUE(S_ISSOCK(made.st_mode));
  EXPECT_EQ(made.st_mode & 07777u, 0600u);
}

TEST_F(ControlTest, SocketIsRemovedAtTheEnd) {
  auto program = runReady();
  ControlClient client(socketPath.string());
  program->signal(SIGTERM);
  EXPECT_EQ(program->waitForEnd(), 0);
  EXPECT_FALSE(fs::exists(fs::symlink_status(socketPath)));
  EXPECT_TRUE(client.isEnded());
}

TEST_F(ControlTest, SocketThatAKilledProgramLeftIsReplaced) {
  {
    auto program = runReady();
    program->signal(SIGKILL);
    EXPECT_FALSE(program->waitForEnd());
  }
  EXPECT_TRUE(fs::is_socket(socketPath));
  auto program = runReady();
  EXPECT_TRUE(ControlClient(socketPath.string()).ask(R"({"do":"status"})").isOk());
}

TEST_F(ControlTest, SocketOfARunningProgramIsKept) {
  auto program = runReady();
  EXPECT_EQ(refusalAt(folder / "other", socketPath),
            "ipodsim: the control socket " + socketPath.string() +
                " is in use by another simulated iPod, process " +
                std::to_string(program->process()) +
                "; end that one, or use another control socket\nTry ipodsim --control SOCKET.\n");
  EXPECT_TRUE(ControlClient(socketPath.string()).ask(R"({"do":"status"})").isOk());
}

TEST_F(ControlTest, SocketOfAnotherProgramIsKept) {
  const FileDescriptor foreign(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  std::strcpy(address.sun_path, socketPath.c_str());
  ASSERT_EQ(bind(foreign.get(), reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
  ASSERT_EQ(listen(foreign.get(), 1), 0);
  EXPECT_EQ(refusal(), "ipodsim: cannot make the control socket " + socketPath.string() +
                           ": another program serves it; use another one\n"
                           "Try ipodsim --control SOCKET.\n");
  EXPECT_TRUE(fs::is_socket(socketPath));
}

TEST_F(ControlTest, FilesAndFoldersAreKept) {
  std::ofstream(socketPath) << "precious";
  EXPECT_EQ(refusal(), "ipodsim: cannot make the control socket " + socketPath.string() +
                           ": there is a file of this name; use another one\n"
                           "Try ipodsim --control SOCKET.\n");
  EXPECT_EQ(fs::file_size(socketPath), 8u);
  fs::remove(socketPath);
  fs::create_symlink("/dev/null", socketPath);
  EXPECT_NE(refusal().find("there is a file of this name"), std::string::npos);
  EXPECT_TRUE(fs::is_symlink(socketPath));
}

TEST_F(ControlTest, PathsThatCannotBeSocketsAreExplained) {
  const std::string none = (folder / "none" / "control").string();
  EXPECT_EQ(refusalAt(link, none),
            "ipodsim: cannot make the control socket " + none +
                ": No such file or directory; make its folder, or use another control socket\n"
                "Try ipodsim --control SOCKET.\n");
  const std::string longPath = (folder / std::string(120, 'x')).string();
  EXPECT_NE(refusalAt(link, longPath).find("its path has more than 107 characters"),
            std::string::npos);
}

}  // namespace
}  // namespace simulator
