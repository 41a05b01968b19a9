#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <optional>
#include <string>
#include <vector>

#include "contract_server.h"
#include "support/program.h"
#include "support/temporary_folder.h"

namespace {

using simulator::Program;
using testing::HasSubstr;
using testing::IsEmpty;

constexpr char kPlaying[] =
    R"({"version":1,"connection":{"stage":"ready","message":"The iPod is ready."},"generation":3,)"
    R"("ipod":{"name":"Demo","serial":"8K8"},"playback":{"status":"playing","index":2,"tracks":12,)"
    R"("title":"Juno\u001b[2J","artist":"Aalto","album":"One","genre":null,"position_ms":65000},)"
    R"("modes":{"shuffle":"tracks","repeat":"off"}})";
constexpr char kAbsent[] =
    R"({"connection":{"stage":"absent","message":"No iPod is connected. Plug one in."},)"
    R"("generation":1,"playback":{"status":"stopped","index":2,"title":"Juno"}})";
constexpr char kStale[] = R"({"error":{"code":"stale-generation","message":"Read the state."}})";
constexpr char kNoIpod[] = R"({"error":{"code":"no-ipod","message":"Plug one in."}})";
constexpr char kNoAnswer[] = R"({"error":{"code":"no-answer","message":"Ask again."}})";
constexpr char kOk[] = R"({"ok":true})";

struct Ended {
  std::string output;
  std::string errors;
  int status;
};

class CommandTest : public testing::Test {
 protected:
  CommandTest() {
    setenv("XDG_RUNTIME_DIR", (folder / "").c_str(), 1);
    setenv("IPODCTL_DEVICES", "IPD1:=/there/is/none", 1);
    unsetenv("IPODCTL_TRACE");
  }

  void announceServe(int process, mode_t mode = 0600) {
    std::filesystem::create_directory(folder / "ipodctl");
    chmod((folder / "ipodctl").c_str(), 0700);
    const std::string name = (folder / "ipodctl") / "serve.json";
    std::ofstream(name) << R"({"url":")" << server.url() << R"(","token":"0123","pid":)" << process
                        << "}";
    chmod(name.c_str(), mode);
  }

  Ended run(const std::vector<std::string>& arguments) {
    Program program(IPODCTL_PROGRAM, arguments);
    std::string output;
    while (const std::optional<std::string> line = program.readLine())
      output += *line + "\n";
    const int status = program.waitForEnd().value_or(-1);
    return {output, program.errors(), status};
  }

  const simulator::TemporaryFolder folder;
  ContractServer server;
};

TEST_F(CommandTest, PrintsWhatPlaysAndEscapesControlCharacters) {
  announceServe(getpid());
  server.answer("/v1/state", {{200, kPlaying}});
  const Ended ended = run({"status"});
  EXPECT_EQ(ended.output, "playing\t1:05\tJuno\\x1B[2J - Aalto (One)\n");
  EXPECT_THAT(ended.errors, IsEmpty());
  EXPECT_EQ(ended.status, 0);
  ASSERT_EQ(server.requests().size(), 1u);
  EXPECT_EQ(server.requests()[0].token, "Bearer 0123");
}

TEST_F(CommandTest, PrintsTheFieldsOfAFormat) {
  announceServe(getpid());
  server.answer("/v1/state", {{200, kPlaying}});
  EXPECT_EQ(run({"status", "--format", "{index}/{tracks} {genre}{shuffle}"}).output,
            "2/12 tracks\n");
}

TEST_F(CommandTest, PrintsOneDocumentForJson) {
  announceServe(getpid());
  server.answer("/v1/state", {{200, R"({"generation":3})"}});
  EXPECT_EQ(run({"status", "--json"}).output, "{\"generation\":3,\"via\":\"serve\"}\n");
}

TEST_F(CommandTest, ReturnsThreeWhenServeHasNoIpod) {
  announceServe(getpid());
  server.answer("/v1/state", {{200, kAbsent}});
  const Ended ended = run({"status"});
  EXPECT_EQ(ended.output, "stopped\tNo iPod is connected. Plug one in.\n");
  EXPECT_EQ(ended.status, 3);
}

TEST_F(CommandTest, PrintsAListAndAsksAgainWhenTheGenerationIsStale) {
  announceServe(getpid());
  server.answer("/v1/state", {{200, R"({"generation":3})"}, {200, R"({"generation":4})"}});
  server.answer("/v1/list/artists/3/albums",
                {{409, kStale},
                 {200, R"({"count":2,"items":[{"index":0,"name":"One","opens":["tracks"]}]})"},
                 {200, R"({"count":2,"items":[{"index":1,"name":"Two","opens":["tracks"]}]})"}});
  const Ended ended = run({"ls", "artists/3/albums", "--all"});
  EXPECT_EQ(ended.output, "0\tOne\ttracks\n1\tTwo\ttracks\n");
  EXPECT_EQ(ended.status, 0);
  ASSERT_EQ(server.requests().size(), 5u);
  EXPECT_EQ(server.requests()[4].target,
            "/v1/list/artists/3/albums?generation=4&offset=1&count=100");
}

TEST_F(CommandTest, GivesUpWhenTheGenerationIsStaleTwice) {
  announceServe(getpid());
  server.answer("/v1/state", {{200, R"({"generation":3})"}});
  server.answer("/v1/list/artists", {{409, kStale}});
  const Ended ended = run({"ls", "artists", "--json"});
  EXPECT_EQ(ended.output, std::string(kStale) + "\n");
  EXPECT_EQ(ended.status, 1);
  EXPECT_EQ(server.requests().size(), 4u);
}

TEST_F(CommandTest, EscapesAPathOfTheCommandLine) {
  announceServe(getpid());
  server.answer("/v1/state", {{200, R"({"generation":3})"}});
  EXPECT_EQ(run({"ls", "a?b c"}).status, 1);
  ASSERT_EQ(server.requests().size(), 2u);
  EXPECT_EQ(server.requests()[1].target, "/v1/list/a%3Fb%20c?generation=3&offset=0&count=20");
}

struct Change {
  std::vector<std::string> arguments;
  std::string target;
  std::string body;
};

class ChangeTest : public CommandTest, public testing::WithParamInterface<Change> {};

TEST_P(ChangeTest, PostsTheRequest) {
  announceServe(getpid());
  server.answer("/v1/state", {{200, R"({"generation":3})"}});
  server.answer(GetParam().target, {{200, kOk}});
  const Ended ended = run(GetParam().arguments);
  EXPECT_EQ(ended.status, 0) << ended.errors;
  EXPECT_THAT(ended.output, IsEmpty());
  ASSERT_FALSE(server.requests().empty());
  const ContractServer::Request request = server.requests().back();
  EXPECT_EQ(request.method + " " + request.target, "POST " + GetParam().target);
  EXPECT_EQ(request.type, "application/json");
  EXPECT_EQ(request.body, GetParam().body);
}

INSTANTIATE_TEST_SUITE_P(
    All, ChangeTest,
    testing::Values(Change{{"play"}, "/v1/command", R"({"command":"play"})"},
                    Change{{"pause"}, "/v1/command", R"({"command":"pause"})"},
                    Change{{"next"}, "/v1/command", R"({"command":"next-track"})"},
                    Change{{"prev"}, "/v1/command", R"({"command":"previous-track"})"},
                    Change{{"play", "albums/3/tracks", "2"},
                           "/v1/play",
                           R"({"generation":3,"index":2,"path":"albums/3/tracks"})"},
                    Change{{"play", "artists", "all"},
                           "/v1/play",
                           R"({"generation":3,"index":"all","path":"artists"})"},
                    Change{{"shuffle", "albums"}, "/v1/modes", R"({"shuffle":"albums"})"},
                    Change{{"repeat", "track"}, "/v1/modes", R"({"repeat":"track"})"},
                    Change{{"logo", "--remove"}, "/v1/logo", R"({"remove":true})"}));

TEST_F(CommandTest, PrintsAMode) {
  announceServe(getpid());
  server.answer("/v1/state", {{200, kPlaying}});
  EXPECT_EQ(run({"shuffle"}).output, "tracks\n");
  EXPECT_EQ(run({"repeat"}).output, "off\n");
}

TEST_F(CommandTest, ReturnsAStatusForEachRefusal) {
  announceServe(getpid());
  server.answer("/v1/command", {{503, kNoIpod}, {504, kNoAnswer}, {401, ""}});
  EXPECT_EQ(run({"pause"}).status, 3);
  EXPECT_EQ(run({"pause"}).status, 5);
  const Ended ended = run({"pause"});
  EXPECT_EQ(ended.status, 1);
  EXPECT_EQ(ended.errors, "ipodctl: The server refuses the request; check --url.\n");
}

TEST_F(CommandTest, PrintsADocumentForEachChangeOfTheState) {
  announceServe(getpid());
  server.answer("/v1/events", {{200,
                                "event: state\ndata: {\"generation\":1}\n\n: \n\n"
                                "event: state\ndata: {\"generation\":1}\n\n"
                                "event: state\ndata: {\"generation\":2}\n\n"}});
  const Ended two = run({"watch", "--json", "--lines", "2"});
  EXPECT_EQ(two.output, "{\"generation\":1}\n{\"generation\":2}\n");
  EXPECT_EQ(two.status, 0);
  const Ended all = run({"watch", "--json"});
  EXPECT_THAT(all.output, HasSubstr("\"stream-ended\""));
  EXPECT_EQ(all.status, 1);
}

TEST_F(CommandTest, NeedsServeToChangeWhatPlays) {
  const std::vector<std::vector<std::string>> commands = {
      {"pause"}, {"next"}, {"play"}, {"play", "artists"}, {"shuffle", "off"}, {"watch"}};
  for (const auto& arguments : commands) {
    const Ended ended = run(arguments);
    EXPECT_EQ(ended.status, 4) << arguments[0];
    EXPECT_THAT(ended.errors, HasSubstr("No ipodctl serve is running")) << arguments[0];
  }
}

TEST_F(CommandTest, IgnoresTheFileOfAServeThatHasEnded) {
  Program ended("/bin/true", {});
  const int process = ended.process();
  ASSERT_EQ(ended.waitForEnd(), 0);
  announceServe(process);
  EXPECT_EQ(run({"pause"}).status, 4);
  EXPECT_TRUE(server.requests().empty());
}

TEST_F(CommandTest, RefusesAFileThatOthersCanRead) {
  announceServe(getpid(), 0644);
  const Ended ended = run({"pause", "--json"});
  EXPECT_THAT(ended.output, HasSubstr("others may use it"));
  EXPECT_EQ(ended.status, 1);
  EXPECT_TRUE(server.requests().empty());
}

TEST_F(CommandTest, FollowsNoLinkToAFile) {
  announceServe(getpid());
  const std::filesystem::path name = folder / "ipodctl/serve.json";
  std::filesystem::rename(name, folder / "elsewhere.json");
  std::filesystem::create_symlink(folder / "elsewhere.json", name);
  EXPECT_EQ(run({"pause"}).status, 4);
  std::filesystem::remove(name);
  std::filesystem::rename(folder / "elsewhere.json", name);
  std::filesystem::rename(folder / "ipodctl", folder / "real");
  std::filesystem::create_symlink(folder / "real", folder / "ipodctl");
  EXPECT_EQ(run({"pause"}).status, 4);
  EXPECT_TRUE(server.requests().empty());
}

TEST_F(CommandTest, AsksAServeElsewhereWithATokenFile) {
  server.answer("/v1/command", {{200, kOk}});
  const std::string token = folder / "token";
  std::ofstream(token) << "4567\n";
  EXPECT_EQ(run({"pause", "--url", server.url() + "/", "--token-file", token}).status, 0);
  ASSERT_EQ(server.requests().size(), 1u);
  EXPECT_EQ(server.requests()[0].token, "Bearer 4567");
  EXPECT_EQ(run({"pause", "--url", server.url()}).status, 1);
  EXPECT_EQ(run({"pause", "--url", "http://127.0.0.1:1", "--token-file", token}).status, 4);
}

TEST_F(CommandTest, ReturnsTwoForAWrongCommandLine) {
  const std::vector<std::vector<std::string>> commands = {{"frob"},
                                                          {"ls"},
                                                          {"shuffle", "all"},
                                                          {"play", "artists", "-2"},
                                                          {"watch", "--lines", "0"},
                                                          {"status", "--format", "{x}"}};
  for (const auto& arguments : commands) {
    const Ended text = run(arguments);
    EXPECT_EQ(text.status, 2) << arguments[0];
    EXPECT_THAT(text.output, IsEmpty()) << arguments[0];
    std::vector<std::string> withJson = arguments;
    withJson.emplace_back("--json");
    EXPECT_THAT(run(withJson).output, testing::StartsWith(R"({"error":{"code":"bad-usage")"));
  }
}

TEST_F(CommandTest, ListsTheExitStatusesInItsHelp) {
  EXPECT_THAT(run({"status", "--help"}).output, HasSubstr("4 no serve"));
}

// 1x1: the colour 0B1621.
constexpr unsigned char kPng[] = {
    0x89, 0x50, 0x4E, 0x47, 0x0D, 0x0A, 0x1A, 0x0A, 0x00, 0x00, 0x00, 0x0D, 0x49, 0x48,
    0x44, 0x52, 0x00, 0x00, 0x00, 0x01, 0x00, 0x00, 0x00, 0x01, 0x08, 0x02, 0x00, 0x00,
    0x00, 0x90, 0x77, 0x53, 0xDE, 0x00, 0x00, 0x00, 0x0C, 0x49, 0x44, 0x41, 0x54, 0x78,
    0xDA, 0x63, 0xE0, 0x16, 0x53, 0x04, 0x00, 0x00, 0x72, 0x00, 0x43, 0x0E, 0x34, 0xBA,
    0x26, 0x00, 0x00, 0x00, 0x00, 0x49, 0x45, 0x4E, 0x44, 0xAE, 0x42, 0x60, 0x82};

/// Returns the width and the height in the head of a PNG.
std::string sizeInPng(const std::string& bytes) {
  if (bytes.compare(0, 8, "\x89PNG\r\n\x1A\n") != 0) return "not a PNG";
  return bytes.substr(16, 8);
}

TEST_F(CommandTest, WritesALogoAndItsPreview) {
  const std::string png = folder / "logo.png";
  std::ofstream(png, std::ios::binary).write(reinterpret_cast<const char*>(kPng), sizeof kPng);
  const auto contentOf = [&](const std::string& name) {
    std::ifstream file(folder / name, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(file), {});
  };
  const Ended ended =
      run({"logo", png, "-o", folder / "logo.bmp", "--preview", folder / "classic.png"});
  EXPECT_EQ(ended.status, 0) << ended.errors;
  EXPECT_THAT(ended.output, IsEmpty());
  // Blue first; the width is padded to four pixels.
  EXPECT_EQ(contentOf("logo.bmp").substr(54),
            std::string("\x00\x00\x00\x21\x16\x0B\x00\x00\x00\x00\x00\x00", 12));
  EXPECT_EQ(sizeInPng(contentOf("classic.png")), std::string("\0\0\x01\x40\0\0\0\xF0", 8));
  EXPECT_EQ(run({"logo", png, "--preview", folder / "nano.png", "--model", "nano"}).status, 0);
  EXPECT_EQ(sizeInPng(contentOf("nano.png")), std::string("\0\0\0\xB0\0\0\0\x84", 8));
  EXPECT_TRUE(server.requests().empty());
}

TEST_F(CommandTest, SendsALogoWithItsModel) {
  announceServe(getpid());
  server.answer("/v1/logo", {{200, kOk}});
  const std::string png = folder / "logo.png";
  std::ofstream(png, std::ios::binary).write(reinterpret_cast<const char*>(kPng), sizeof kPng);
  const Ended ended = run({"logo", png, "--model", "nano"});
  EXPECT_EQ(ended.status, 0) << ended.errors;
  EXPECT_THAT(ended.errors, HasSubstr("playback stops"));
  ASSERT_EQ(server.requests().size(), 1u);
  EXPECT_THAT(server.requests()[0].body,
              testing::StartsWith(R"({"model":"nano","png":"iVBORw0KGgo)"));
}

TEST_F(CommandTest, WritesNoLogoOfADamagedPictureOrForAModelWithout) {
  const std::string png = folder / "logo.png";
  std::ofstream(png, std::ios::binary) << "not one";
  EXPECT_EQ(run({"logo", png, "-o", folder / "logo.bmp"}).status, 1);
  EXPECT_FALSE(std::filesystem::exists(folder / "logo.bmp"));
  EXPECT_EQ(run({"logo", png, "-o", folder / "logo.bmp", "--model", "touch"}).errors,
            "ipodctl: the model touch shows no logo; choose another one\n");
}

class SessionTest : public CommandTest {
 protected:
  SessionTest() : ipod(IPODSIM_PROGRAM, {"--link", folder / "ipod"}) {
    EXPECT_EQ(ipod.readLine(), "iPod ready on " + (folder / "ipod").string());
  }

  Program ipod;
};

TEST_F(SessionTest, ConnectsTheIpodItselfAndPrintsOneDocument) {
  const Ended ended = run({"ls", "artists/2/albums", "--json", "--count", "1", "--device",
                           folder / "ipod", "--log", folder / "log"});
  EXPECT_EQ(
      ended.output,
      R"({"above":[{"index":2,"name":"Amos Ferriday","path":"artists"}],"count":3,)"
      R"("generation":1,"items":[{"index":0,"name":"Gravel Road Ledger","opens":["tracks"]}],)"
      R"("offset":0,"path":"artists/2/albums","play_all":true,"tabbed":false,)"
      R"("type":"albums","via":"session"})"
      "\n");
  EXPECT_THAT(ended.errors, IsEmpty());
  EXPECT_EQ(ended.status, 0);
  std::ifstream log(folder / "log");
  EXPECT_THAT(std::string(std::istreambuf_iterator<char>(log), {}), HasSubstr("IPod connected"));
}

TEST_F(SessionTest, SaysThatConnectingStopsWhatPlays) {
  const Ended ended = run({"info", "--device", folder / "ipod", "--format", "{name}"});
  EXPECT_EQ(ended.output, "Demo iPod\n");
  EXPECT_THAT(ended.errors, HasSubstr("stops what"));
}

TEST_F(SessionTest, HoldsAConnectionUntilCtrlC) {
  Program held(IPODCTL_PROGRAM,
               {"play", "artists/2/tracks", "0", "--hold", "-v", "--device", folder / "ipod"});
  EXPECT_FALSE(held.waitForEnd(simulator::seconds(3)));
  held.signal(2);
  EXPECT_EQ(held.waitForEnd(), 0);
  EXPECT_THAT(held.errors(), HasSubstr("until Ctrl-C"));
}

TEST_F(CommandTest, ReturnsThreeWithoutAnIpod) {
  const Ended ended = run({"status", "--json"});
  EXPECT_THAT(ended.output, testing::StartsWith(R"({"error":{"code":"no-ipod")"));
  EXPECT_EQ(ended.status, 3);
}

}  // namespace
