// What each address does.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <thread>

#include "ipodctl/serve/base64.h"
#include "ipodctl/serve/runtime_file.h"
#include "serve_bench.h"
#include "support/eventually.h"
#include "support/temporary_folder.h"

namespace serving::routes {
namespace {

using testing::AllOf;
using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

class ServeRoutes : public testing::Test {
 protected:
  ServeBench bench;
};

TEST_F(ServeRoutes, ShowTheState) {
  EXPECT_THAT(bench.get("/v1/state"),
              EndsWith("\r\n\r\n{\"generation\":3,\"ipod_control\":false,\"playback\":{\"title\":"
                       "\"L\u00e4ngtan\"},\"version\":1}"));
}

TEST_F(ServeRoutes, PassTheListRequest) {
  EXPECT_THAT(bench.get("/v1/list/artists/3/albums?generation=3&offset=40&count=100"),
              AllOf(StartsWith("HTTP/1.1 200 "), HasSubstr("application/json"),
                    EndsWith("{\"count\":12,\"items\":null}")));
  bench.get("/v1/tabs/artists?generation=3");
  bench.get("/v1/tabs/artists?generation=3&offset=2&count=5");
  EXPECT_THAT(bench.headUnit.asked(),
              ElementsAre("list artists/3/albums 3 40 100", "tabs artists 0", "tabs artists 5"));
}

TEST_F(ServeRoutes, ShowARefusalOfTheHeadUnit) {
  EXPECT_THAT(bench.get("/v1/list/artists?generation=2"),
              AllOf(StartsWith("HTTP/1.1 409 "),
                    EndsWith("{\"error\":{\"code\":\"stale-generation\",\"message\":\"Ask for "
                             "/v1/state again.\"}}")));
}

TEST_F(ServeRoutes, RefuseNumbersThatAreNone) {
  for (const char* const query :
       {"", "?generation=", "?generation=x", "?generation=-1", "?generation=3&count=101",
        "?generation=3&count=-1", "?generation=3&offset=-1", "?generation=3&offset=99999999999",
        "?generation=3&count=1%00"}) {
    EXPECT_THAT(bench.get(std::string("/v1/list/artists") + query),
                AllOf(StartsWith("HTTP/1.1 400 "), HasSubstr("bad-request")))
        << query;
  }
  EXPECT_THAT(bench.headUnit.asked(), IsEmpty());
}

TEST_F(ServeRoutes, PassChanges) {
  bench.post("/v1/play", R"({"generation":3,"path":"artists/3/tracks","index":7})");
  bench.post("/v1/play", R"({"generation":3,"path":"albums","index":"all"})");
  bench.post("/v1/command", R"({"command":"previous-track-no-restart"})");
  bench.post("/v1/modes", R"({"shuffle":"tracks"})");
  bench.post("/v1/modes", R"({"repeat":"track","shuffle":"off"})");
  bench.post("/v1/logo", R"({"png":"UE5H"})");
  bench.post("/v1/logo", R"({"png":"UE5H","model":"nano"})");
  bench.post("/v1/logo", R"({"remove":true})");
  EXPECT_THAT(bench.post("/v1/reconnect", "{}"),
              AllOf(StartsWith("HTTP/1.1 200 "), EndsWith("{\"ok\":true}")));
  EXPECT_THAT(bench.headUnit.asked(),
              ElementsAre("play artists/3/tracks 7", "play albums -1",
                          "command previous-track-no-restart", "modes tracks/", "modes off/track",
                          "logo of 6 bytes", "logo of 10 bytes", "logo of 0 bytes", "reconnect"));
}

TEST_F(ServeRoutes, RefuseDocumentsThatTheyDoNotKnow) {
  const std::pair<const char*, std::string> kRequests[] = {
      {"/v1/play", "{}"},
      {"/v1/play", R"({"generation":3,"path":"albums","index":-1})"},
      {"/v1/play", R"({"generation":3,"path":"albums","index":4294967296})"},
      {"/v1/play", R"({"generation":"3","path":"albums","index":1})"},
      {"/v1/play", R"({"generation":3,"path":7,"index":1})"},
      {"/v1/command", R"({"command":"explode"})"},
      {"/v1/command", R"({"command":""})"},
      {"/v1/command", "[]"},
      {"/v1/command", "{"},
      {"/v1/command", ""},
      {"/v1/command", std::string(60000, '[')},
      {"/v1/command", R"({"command":"toggle","x":[[[[[[[[[[1]]]]]]]]]]})"},
      {"/v1/modes", "{}"},
      {"/v1/modes", R"({"shuffle":"songs"})"},
      {"/v1/logo", R"({"png":"*"})"},
      {"/v1/logo", R"({"png":"AAAA"})"},
      {"/v1/logo", R"({"png":"UE5H","model":7})"},
      {"/v1/trace", R"({"trace":""})"},
      {"/v1/trace", R"({"trace":7})"}};
  for (const auto& [path, body] : kRequests) {
    EXPECT_THAT(bench.post(path, body),
                AllOf(StartsWith("HTTP/1.1 400 "), HasSubstr("bad-request")))
        << path << ' ' << body.substr(0, 80);
  }
  EXPECT_THAT(bench.headUnit.asked(), IsEmpty());
}

TEST_F(ServeRoutes, DownloadTheTrace) {
  EXPECT_THAT(bench.get("/v1/trace"),
              AllOf(HasSubstr("Content-Disposition: attachment"), EndsWith("# ipodctl-trace 1\n")));
}

TEST_F(ServeRoutes, HaveNoSimulatedIpodWithoutOne) {
  EXPECT_THAT(bench.post("/v1/ipod", R"({"do":"unplug"})"),
              AllOf(StartsWith("HTTP/1.1 404 "), HasSubstr("no-simulated-ipod")));
  EXPECT_THAT(bench.get("/v1/ipod/screen.png"), StartsWith("HTTP/1.1 404 "));
}

TEST_F(ServeRoutes, BeginAStreamWithTheStateAndGoOnWithEachEvent) {
  Client client(bench.server.port());
  client.send(bench.getText("/v1/events"));
  EXPECT_THAT(client.readUntil("\n\n"),
              AllOf(HasSubstr("Content-Type: text/event-stream\r\n"),
                    HasSubstr("\r\n\r\nid: 0\nevent: state\ndata: {\"generation\":3,")));
  bench.events.publish(tool::Topic::kConsole, R"({"line":"IPod connected"})");
  EXPECT_EQ(client.readUntil("\n\n"),
            "id: 1\nevent: console\ndata: {\"line\":\"IPod connected\"}\n\n");
  bench.events.publish(tool::Topic::kState, R"({"generation":4})");
  EXPECT_EQ(client.readUntil("\n\n"),
            "id: 2\nevent: state\ndata: {\"generation\":4,\"ipod_control\":false}\n\n");
}

TEST_F(ServeRoutes, StreamTheChosenTopics) {
  Client client(bench.server.port());
  client.send(bench.getText("/v1/events?topics=refresh%2Cipod"));
  EXPECT_THAT(client.readUntil(": ready\n\n"), EndsWith("\r\n\r\n: ready\n\n"));
  bench.events.publish(tool::Topic::kConsole, "{}");
  bench.events.publish(tool::Topic::kRefresh, "{}");
  EXPECT_EQ(client.readUntil("\n\n"), "id: 2\nevent: refresh\ndata: {}\n\n");
  EXPECT_EQ(bench.streams.readersOf(tool::Topic::kIpod), 1U);
  EXPECT_EQ(bench.streams.readersOf(tool::Topic::kState), 0U);
}

TEST_F(ServeRoutes, RefuseAnUnknownTopic) {
  EXPECT_THAT(bench.get("/v1/events?topics=state,x"), StartsWith("HTTP/1.1 400 "));
}

TEST(ServeFiles, AreThoseOfTheFolderAtTheStart) {
  const simulator::TemporaryFolder folder;
  std::filesystem::create_directories(folder / "page/parts");
  std::ofstream(folder / "page/index.html") << "<p>page";
  std::ofstream(folder / "page/parts/a.js") << "let a;";
  std::ofstream(folder / "secret") << "secret";
  std::filesystem::create_symlink("../secret", folder / "page/link.html");
  const ServeBench bench((folder / "page").string());
  EXPECT_THAT(bench.get("/"), AllOf(HasSubstr("Content-Type: text/html; charset=utf-8\r\n"),
                                    EndsWith("\r\n\r\n<p>page")));
  EXPECT_THAT(
      bench.get("/parts/a.js"),
      AllOf(HasSubstr("Content-Type: text/javascript; charset=utf-8\r\n"), EndsWith("let a;")));
  EXPECT_THAT(bench.get("/link.html"), StartsWith("HTTP/1.1 404 "));
  EXPECT_THAT(bench.get("/../secret"), StartsWith("HTTP/1.1 404 "));
  EXPECT_THAT(bench.post("/index.html", "{}"), StartsWith("HTTP/1.1 404 "));
}

TEST(ServeFiles, NeedAnIndex) {
  const simulator::TemporaryFolder folder;
  EXPECT_THROW(tool::StaticFiles((folder / ".").string()), std::runtime_error);
  EXPECT_THROW(tool::StaticFiles((folder / "none").string()), std::runtime_error);
}

/// The other end of the control socket: notes a line, and answers it.
class FakeControl {
 public:
  FakeControl(const std::string& path, std::string answer)
      : listener(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    path.copy(address.sun_path, sizeof address.sun_path - 1);
    bind(listener, reinterpret_cast<const sockaddr*>(&address), sizeof address);
    listen(listener, 8);
    thread = std::thread([this, answer = std::move(answer)] { answerOne(answer + "\n"); });
  }
  FakeControl(const FakeControl&) = delete;
  FakeControl& operator=(const FakeControl&) = delete;
  ~FakeControl() {
    shutdown(listener, SHUT_RDWR);
    thread.join();
    close(listener);
  }

  std::string line;  ///< read after the answer

 private:
  void answerOne(const std::string& answer) {
    const int client = accept(listener, nullptr, nullptr);
    char one = 0;
    while (recv(client, &one, 1, 0) == 1 && one != '\n')
      line += one;
    send(client, answer.data(), answer.size(), MSG_NOSIGNAL);
    close(client);
  }

  const int listener;
  std::thread thread;
};

TEST(ServeIpod, PassesTheRequestAndTheAnswer) {
  const simulator::TemporaryFolder folder;
  const std::string path = (folder / "control").string();
  const ServeBench bench("", path);
  const FakeControl control(path, R"({"ok":false,"error":{"code":"unknown-verb"}})");
  EXPECT_THAT(bench.post("/v1/ipod", "{\"do\":\n\"dance\"}"),
              AllOf(StartsWith("HTTP/1.1 200 "),
                    EndsWith(R"({"ok":false,"error":{"code":"unknown-verb"}})")));
  EXPECT_EQ(control.line, R"({"do":"dance"})");
  EXPECT_THAT(bench.get("/v1/state"), HasSubstr("\"ipod_control\":true"));
}

TEST(ServeIpod, ShowsTheScreen) {
  const simulator::TemporaryFolder folder;
  const std::string path = (folder / "control").string();
  const ServeBench bench("", path);
  const FakeControl control(path, R"({"ok":true,"png":"iVBORw==","revision":17})");
  EXPECT_THAT(bench.get("/v1/ipod/screen.png"),
              AllOf(HasSubstr("Content-Type: image/png\r\n"), EndsWith("\r\n\r\n\x89PNG")));
}

TEST(ServeIpod, SaysThatTheSocketDoesNotAnswer) {
  const ServeBench bench("", "/tmp/no/socket");
  EXPECT_THAT(bench.post("/v1/ipod", R"({"do":"status"})"),
              AllOf(StartsWith("HTTP/1.1 504 "), HasSubstr("no-answer")));
}

TEST(Base64, IsDecodedStrictly) {
  EXPECT_EQ(tool::decodedBase64("AAECAw=="), std::string("\0\1\2\3", 4));
  EXPECT_EQ(tool::decodedBase64("/+8="), "\xFF\xEF");
  EXPECT_EQ(tool::decodedBase64(""), "");
  EXPECT_EQ(tool::decodedBase64("AAE"), std::nullopt);
  EXPECT_EQ(tool::decodedBase64("A==="), std::nullopt);
  EXPECT_EQ(tool::decodedBase64("A-B="), std::nullopt);
  EXPECT_EQ(tool::decodedBase64("AB=C"), std::nullopt);
}

class RuntimeFile : public testing::Test {
 protected:
  std::string text() const {
    std::ifstream file(path + "/serve.json");
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
  }

  static mode_t modeOf(const std::string& name) {
    struct stat status = {};
    lstat(name.c_str(), &status);
    return status.st_mode & 0777;
  }

  const simulator::TemporaryFolder folder;
  const std::string path = (folder / "ipodctl").string();
};

TEST_F(RuntimeFile, IsThereForThisUserDuringTheServer) {
  {
    const tool::RuntimeFile file(path, "http://127.0.0.1:1", "t");
    EXPECT_EQ(text(), "{\"url\":\"http://127.0.0.1:1\",\"token\":\"t\",\"pid\":" +
                          std::to_string(getpid()) + "}\n");
    EXPECT_EQ(modeOf(path), 0700U);
    EXPECT_EQ(modeOf(path + "/serve.json"), 0600U);
    EXPECT_EQ(file.otherProcess(), 0);
  }
  EXPECT_FALSE(std::filesystem::exists(path + "/serve.json"));
}

TEST_F(RuntimeFile, ReplacesThatOfAProcessThatHasGone) {
  tool::prepareRuntimeFolder(path);
  std::ofstream(path + "/serve.json") << R"({"url":"x","token":"y","pid":2147483646})";
  const tool::RuntimeFile file(path, "http://127.0.0.1:1", "t");
  EXPECT_THAT(text(), HasSubstr("http://127.0.0.1:1"));
}

TEST_F(RuntimeFile, LeavesThatOfARunningProcess) {
  tool::prepareRuntimeFolder(path);
  const std::string other = R"({"url":"x","token":"y","pid":)" + std::to_string(getppid()) + "}";
  std::ofstream(path + "/serve.json") << other;
  {
    const tool::RuntimeFile file(path, "http://127.0.0.1:1", "t");
    EXPECT_EQ(file.otherProcess(), getppid());
  }
  EXPECT_EQ(text(), other);
}

TEST_F(RuntimeFile, FollowsNoLink) {
  tool::prepareRuntimeFolder(path);
  const std::string target = (folder / "target").string();
  std::ofstream(target) << "mine";
  std::filesystem::create_symlink(target, path + "/serve.json");
  const tool::RuntimeFile file(path, "http://127.0.0.1:1", "t");
  std::ifstream kept(target);
  std::string word;
  kept >> word;
  EXPECT_EQ(word, "mine");
  EXPECT_FALSE(std::filesystem::is_symlink(path + "/serve.json"));
}

TEST_F(RuntimeFile, IsRefusedInAFolderThatIsALinkOrThatOthersMayUse) {
  std::filesystem::create_directory(folder / "real");
  std::filesystem::permissions(folder / "real", static_cast<std::filesystem::perms>(0700));
  EXPECT_NO_THROW(tool::prepareRuntimeFolder((folder / "real").string()));
  std::filesystem::create_symlink(folder / "real", path);
  EXPECT_THROW(tool::prepareRuntimeFolder(path), std::runtime_error);
  std::filesystem::permissions(folder / "real", static_cast<std::filesystem::perms>(0755));
  EXPECT_THROW(tool::prepareRuntimeFolder((folder / "real").string()), std::runtime_error);
}

}  // namespace
}  // namespace serving::routes
