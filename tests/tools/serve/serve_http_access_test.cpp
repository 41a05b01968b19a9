// Each rule about who may send requests, with its attack.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "ipodctl/serve/access.h"
#include "serve_bench.h"
#include "support/temporary_folder.h"

namespace serving::access {
namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

/// Refused with the status and the code, with the headers of every answer, and closed.
auto refused(const std::string& status, const std::string& code) {
  return AllOf(StartsWith("HTTP/1.1 " + status + " "), HasSubstr("{\"error\":{\"code\":\"" + code),
               HasSubstr("Content-Security-Policy: default-src 'self'\r\n"),
               HasSubstr("X-Content-Type-Options: nosniff\r\n"),
               HasSubstr("Cache-Control: no-store\r\n"),
               HasSubstr("Referrer-Policy: no-referrer\r\n"));
}

class ServeAccess : public testing::Test {
 protected:
  std::string request(const std::string& host, const std::string& headers) const {
    return bench.answerTo("GET /v1/state HTTP/1.1\r\nConnection: close\r\n" +
                          (host.empty() ? "" : "Host: " + host + "\r\n") + headers + "\r\n");
  }

  const std::string bearer = std::string("Authorization: Bearer ") + kToken + "\r\n";
  ServeBench bench;
  const std::string port = std::to_string(bench.server.port());
};

TEST_F(ServeAccess, AnswersARequestWithTheTokenAndTheSafeHeaders) {
  const std::string answer = request(bench.host(), bearer);
  EXPECT_THAT(answer, StartsWith("HTTP/1.1 200 OK\r\n"));
  EXPECT_THAT(answer, HasSubstr("Content-Security-Policy: default-src 'self'\r\n"));
  EXPECT_THAT(answer, HasSubstr("X-Content-Type-Options: nosniff\r\n"));
  EXPECT_THAT(answer, HasSubstr("Cache-Control: no-store\r\n"));
  EXPECT_THAT(answer, HasSubstr("Referrer-Policy: no-referrer\r\n"));
  EXPECT_THAT(answer, HasSubstr("\"generation\":3"));
}

TEST_F(ServeAccess, AnswersLocalhost) {
  EXPECT_THAT(request("localhost:" + port, bearer), StartsWith("HTTP/1.1 200 "));
}

TEST_F(ServeAccess, RefusesANameThatSomebodyElseLedHere) {
  for (const std::string& host :
       {"evil.example:" + port, std::string("evil.example"), std::string("127.0.0.1"),
        "127.0.0.1:1" + port, "127.0.0.1:" + port + ".evil.example", "localhost.:" + port,
        "127.0.0.1.:" + port, "LOCALHOST:" + port, "[::1]:" + port, "[::ffff:127.0.0.1]:" + port,
        "127.1:" + port, "2130706433:" + port, "me@127.0.0.1:" + port, "127.0.0.1:" + port + "/",
        "127.0.0.1:" + port + "," + "127.0.0.1:" + port}) {
    EXPECT_THAT(request(host, bearer), refused("403", "foreign-host")) << host;
  }
}

TEST_F(ServeAccess, RefusesARequestWithoutAHost) {
  EXPECT_THAT(request("", bearer), refused("403", "foreign-host"));
}

TEST_F(ServeAccess, RefusesTwoHosts) {
  EXPECT_THAT(request(bench.host(), bearer + "Host: evil.example\r\n"),
              refused("400", "bad-request"));
}

TEST_F(ServeAccess, RefusesAPageOfAnotherSite) {
  for (const std::string& origin :
       {std::string("http://evil.example"), std::string("null"), "https://127.0.0.1:" + port,
        "http://127.0.0.1:" + port + ".evil.example", std::string("http://127.0.0.1:1"),
        std::string(), "127.0.0.1:" + port, "http://me@127.0.0.1:" + port,
        "http://127.0.0.1:" + port + " http://evil.example"}) {
    EXPECT_THAT(request(bench.host(), bearer + "Origin: " + origin + "\r\n"),
                refused("403", "foreign-origin"))
        << origin;
  }
}

TEST_F(ServeAccess, AnswersItsOwnPage) {
  EXPECT_THAT(request(bench.host(), bearer + "Origin: http://" + bench.host() + "\r\n"),
              StartsWith("HTTP/1.1 200 "));
}

TEST_F(ServeAccess, RefusesARequestWithoutTheToken) {
  EXPECT_THAT(request(bench.host(), ""), refused("401", "no-token"));
}

TEST_F(ServeAccess, RefusesAWrongToken) {
  const std::string right(kToken);
  for (const std::string& token : {std::string("x"), std::string(), right.substr(1), right + "0",
                                   "1" + right.substr(1), right.substr(0, 31) + "0"}) {
    EXPECT_THAT(request(bench.host(), "Authorization: Bearer " + token + "\r\n"),
                refused("401", "no-token"))
        << token;
    EXPECT_THAT(request(bench.host(), "Cookie: ipodctl_" + port + "=" + token + "\r\n"),
                refused("401", "no-token"))
        << token;
  }
}

TEST_F(ServeAccess, RefusesTheTokenInAnotherPlace) {
  const std::string token(kToken);
  EXPECT_THAT(request(bench.host(), "Authorization: " + token + "\r\n"),
              refused("401", "no-token"));
  EXPECT_THAT(request(bench.host(), "Cookie: ipodctl_1=" + token + "\r\n"),
              refused("401", "no-token"));
  EXPECT_THAT(request(bench.host(), "X-Token: " + token + "\r\n"), refused("401", "no-token"));
  EXPECT_THAT(bench.answerTo("GET /v1/state?token=" + token + " HTTP/1.1\r\nHost: " + bench.host() +
                             "\r\n\r\n"),
              refused("401", "no-token"));
}

TEST_F(ServeAccess, AnswersTheCookieAmongOthers) {
  EXPECT_THAT(request(bench.host(), "Cookie: a=b; ipodctl_" + port + "=" + kToken + "; c=d\r\n"),
              StartsWith("HTTP/1.1 200 "));
}

TEST_F(ServeAccess, SetsTheCookieForTheAddressThatItPrints) {
  const std::string answer =
      bench.answerTo(std::string("GET /?token=") + kToken + " HTTP/1.1\r\nHost: " + bench.host() +
                     "\r\nConnection: close\r\n\r\n");
  EXPECT_THAT(answer, StartsWith("HTTP/1.1 303 "));
  EXPECT_THAT(answer, HasSubstr("Location: /\r\n"));
  EXPECT_THAT(answer, HasSubstr("Set-Cookie: ipodctl_" + port + "=" + kToken +
                                "; HttpOnly; SameSite=Strict; Path=/\r\n"));
}

TEST_F(ServeAccess, SetsNoCookieForAWrongToken) {
  const std::string answer = bench.answerTo("GET /?token=0123 HTTP/1.1\r\nHost: " + bench.host() +
                                            "\r\nConnection: close\r\n\r\n");
  EXPECT_THAT(answer, refused("401", "no-token"));
  EXPECT_THAT(answer, Not(HasSubstr("Set-Cookie")));
}

TEST_F(ServeAccess, SendsThePolicyWithEveryAnswer) {
  const std::string page = std::string("/?token=") + kToken;
  for (const std::string& target :
       {std::string("/"), page, std::string("/v1/state"), std::string("/v1/trace"),
        std::string("/v1/list/artists?generation=3"), std::string("/v1/events"),
        std::string("/v1/ipod/screen.png"), std::string("/none"), std::string("/v1/play")}) {
    Client client(bench.server.port());
    client.send(bench.getText(target));
    EXPECT_THAT(client.readUntil("\r\n\r\n"),
                HasSubstr("\r\nContent-Security-Policy: default-src 'self'\r\n"))
        << target;
  }
  EXPECT_THAT(bench.post("/v1/reconnect", "{}"),
              HasSubstr("\r\nContent-Security-Policy: default-src 'self'\r\n"));
}

TEST_F(ServeAccess, ChangesNothingByGet) {
  for (const char* const path :
       {"/v1/play", "/v1/command", "/v1/modes", "/v1/logo", "/v1/reconnect", "/v1/ipod"}) {
    EXPECT_THAT(bench.get(path), refused("405", "bad-method")) << path;
  }
  EXPECT_THAT(bench.headUnit.asked(), IsEmpty());
}

TEST_F(ServeAccess, ChangesNothingWithAnotherContentType) {
  const std::string body = R"({"command":"toggle"})";
  const std::string length = "Content-Length: " + std::to_string(body.size()) + "\r\n";
  for (const std::string& type :
       {std::string("Content-Type: text/plain\r\n"), std::string(),
        std::string("Content-Type: application/x-www-form-urlencoded\r\n"),
        std::string("Content-Type: multipart/form-data; boundary=b\r\n"),
        std::string("Content-Type: application/jsonx\r\n"),
        std::string("Content-Type: application/json\r\nContent-Encoding: gzip\r\n")}) {
    EXPECT_THAT(bench.answerTo(bench.head("POST /v1/command") + type + length + "\r\n" + body),
                refused("415", "not-json"))
        << type;
  }
  EXPECT_THAT(bench.headUnit.asked(), IsEmpty());
}

TEST_F(ServeAccess, RefusesOtherMethods) {
  for (const char* const method : {"PUT", "DELETE", "OPTIONS", "HEAD", "CONNECT", "TRACE", "get"}) {
    EXPECT_THAT(bench.answerTo(bench.head(std::string(method) + " /v1/command") + "\r\n"),
                refused("405", "bad-method"))
        << method;
  }
}

TEST_F(ServeAccess, RefusesAWebSocket) {
  EXPECT_THAT(bench.answerTo(bench.head("GET /v1/events") +
                             "Connection: Upgrade\r\nUpgrade: websocket\r\n"
                             "Sec-WebSocket-Key: dGhlIHNhbXBsZSBub25jZQ==\r\n\r\n"),
              refused("400", "bad-request"));
}

TEST_F(ServeAccess, LeadsNoPathToAnotherFile) {
  for (const char* const path :
       {"/../routes.cpp", "/..%2froutes.cpp", "/%2e%2e/routes.cpp", "/v1/../../etc/passwd",
        "//etc/passwd", "/%2fetc%2fpasswd", "/index.html%00.css", "/.", "/..", "/index.html/"}) {
    EXPECT_THAT(bench.get(path), refused("404", "not-found")) << path;
  }
}

TEST_F(ServeAccess, RefusesAPathWithANul) {
  const std::string path("GET /index\0.html", 16);
  EXPECT_THAT(bench.answerTo(bench.head(path) + "\r\n"), refused("400", "bad-request"));
}

class TokenFile : public testing::Test {
 protected:
  std::string write(const std::string& text, unsigned mode) const {
    std::ofstream(path) << text;
    std::filesystem::permissions(path, static_cast<std::filesystem::perms>(mode));
    return path;
  }

  const simulator::TemporaryFolder folder;
  const std::string path = (folder / "token").string();
};

TEST_F(TokenFile, GivesItsFirstLine) {
  EXPECT_EQ(tool::tokenOfFile(write("0123456789abcdef0123456789abcdef\n", 0600)),
            "0123456789abcdef0123456789abcdef");
}

TEST_F(TokenFile, IsRefusedWhenOthersCanReadIt) {
  EXPECT_THROW(tool::tokenOfFile(write("0123456789abcdef0123456789abcdef\n", 0640)),
               std::runtime_error);
}

TEST_F(TokenFile, IsRefusedWhenItIsTooShort) {
  EXPECT_THROW(tool::tokenOfFile(write("0123456789abcdef0123456789abcde\n", 0600)),
               std::runtime_error);
}

TEST_F(TokenFile, IsRefusedWhenItIsNotThere) {
  EXPECT_THROW(tool::tokenOfFile((folder / "none").string()), std::runtime_error);
}

TEST(NewToken, Has128RandomBits) {
  EXPECT_EQ(tool::newToken().size(), 32U);
  EXPECT_NE(tool::newToken(), tool::newToken());
}

TEST(Loopback, IsReachedFromThisComputerOnly) {
  EXPECT_TRUE(tool::isLoopback("127.0.0.1"));
  EXPECT_TRUE(tool::isLoopback("::1"));
  EXPECT_FALSE(tool::isLoopback("0.0.0.0"));
  EXPECT_FALSE(tool::isLoopback("192.168.1.2"));
  EXPECT_FALSE(tool::isLoopback("localhost"));
}

}  // namespace
}  // namespace serving::access
