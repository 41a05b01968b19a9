// What one client may need: sizes, times and numbers, each with its attack.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <memory>
#include <thread>
#include <vector>

#include "ipodctl/serve/limits.h"
#include "serve_bench.h"
#include "support/eventually.h"

namespace serving::limits_of_a_client {
namespace {

using session::eventually;
using std::chrono::seconds;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

using Clock = std::chrono::steady_clock;
namespace limits = tool::limits;

class ServeLimits : public testing::Test {
 protected:
  /// Returns clients that are connected and send nothing.
  std::vector<std::unique_ptr<Client>> idleClients(size_t count) const {
    std::vector<std::unique_ptr<Client>> clients;
    while (clients.size() < count)
      clients.push_back(std::make_unique<Client>(bench.server.port()));
    return clients;
  }

  ServeBench bench;
};

TEST_F(ServeLimits, RefusesAHeadOfMoreThan8KB) {
  const std::string head = bench.head("GET /v1/state") + "X: ";
  const std::string fits(limits::kHeadSize - head.size() - 4, 'x');
  EXPECT_THAT(bench.answerTo(head + fits + "x\r\n\r\n"), StartsWith("HTTP/1.1 431 "));
  Client client(bench.server.port());
  client.send(head + fits + "\r\n\r\n");
  EXPECT_THAT(client.readUntil("\r\n"), StartsWith("HTTP/1.1 200 "));
}

TEST_F(ServeLimits, RefusesAHeadWithoutAnEnd) {
  EXPECT_THAT(bench.answerTo(std::string(limits::kHeadSize, 'x')), StartsWith("HTTP/1.1 431 "));
}

TEST_F(ServeLimits, RefusesALongAddress) {
  EXPECT_THAT(bench.get("/" + std::string(limits::kTargetSize, 'x')), StartsWith("HTTP/1.1 414 "));
}

// Waits for the time limit of a head.
TEST_F(ServeLimits, RefusesAHeadOfOneByteASecond) {
  Client client(bench.server.port());
  const auto begin = Clock::now();
  std::thread slow([&client] {
    for (int i = 0; i < 9 && client.send("x"); ++i)
      std::this_thread::sleep_for(seconds(1));
  });
  EXPECT_THAT(client.readUntil("\r\n\r\n"), StartsWith("HTTP/1.1 408 "));
  EXPECT_LT(Clock::now() - begin, limits::kHeadTime + seconds(2));
  slow.join();
}

TEST_F(ServeLimits, RefusesALargeBodyBeforeItIsSent) {
  const std::string head = bench.head("POST /v1/command") + "Content-Type: application/json\r\n";
  for (const char* const size : {"65537", "99999999999999999999999999"}) {
    EXPECT_THAT(bench.answerTo(head + "Content-Length: " + size + "\r\n\r\n"),
                StartsWith("HTTP/1.1 413 "))
        << size;
  }
}

TEST_F(ServeLimits, ReadsABodyOf64KB) {
  const std::string body = R"({"command":"toggle","x":")" + std::string(65536 - 27, 'x') + "\"}";
  ASSERT_EQ(body.size(), 65536U);
  EXPECT_THAT(bench.post("/v1/command", body), StartsWith("HTTP/1.1 200 "));
}

TEST_F(ServeLimits, ReadsAnUploadOf4MB) {
  const std::string start = R"({"trace":")";
  const std::string body = start + std::string(limits::kUploadSize - start.size() - 2, 'x') + "\"}";
  EXPECT_THAT(bench.post("/v1/trace", body), StartsWith("HTTP/1.1 200 "));
  EXPECT_THAT(bench.post("/v1/trace", body + " "), StartsWith("HTTP/1.1 413 "));
}

TEST_F(ServeLimits, ShowsTheRefusalToAClientThatSendsEverythingFirst) {
  // More than the system keeps for the server. A busy machine may need another try.
  const std::string request = bench.postText("/v1/command", std::string(900 << 10, 'x'));
  EXPECT_TRUE(eventually([&] {
    Client client(bench.server.port());
    client.keepLittle();
    return client.send(request) && client.readAll().compare(0, 13, "HTTP/1.1 413 ") == 0;
  }));
}

TEST_F(ServeLimits, RefusesABodyInChunks) {
  EXPECT_THAT(bench.answerTo(bench.head("POST /v1/command") +
                             "Content-Type: application/json\r\nTransfer-Encoding: chunked\r\n\r\n"
                             "5\r\nxxxxx\r\n5\r\nxxxxx\r\n"),
              StartsWith("HTTP/1.1 411 "));
}

TEST_F(ServeLimits, RefusesAPostWithoutALength) {
  EXPECT_THAT(
      bench.answerTo(bench.head("POST /v1/command") + "Content-Type: application/json\r\n\r\n"),
      StartsWith("HTTP/1.1 411 "));
}

TEST_F(ServeLimits, RefusesALengthThatIsNotANumber) {
  for (const char* const length : {"-1", "+1", "0x10", "1 1", "", "1,1"}) {
    EXPECT_THAT(bench.answerTo(bench.head("POST /v1/command") +
                               "Content-Type: application/json\r\nContent-Length: " + length +
                               "\r\n\r\n{}"),
                AllOf(StartsWith("HTTP/1.1 400 "), HasSubstr("as a decimal number")))
        << length;
  }
}

TEST_F(ServeLimits, RefusesGarbage) {
  for (const char* const bytes :
       {"\r\n\r\n", "GET\r\n\r\n", "GET / HTTP/9\r\n\r\n", "GET /\x01 HTTP/1.1\r\n\r\n",
        "GET / HTTP/1.1\r\nHost\r\n\r\n", "GET / HTTP/1.1\r\n: x\r\n\r\n",
        "GET / HTTP/1.1\r\nA: b\r\n c\r\n\r\n", "GET / HTTP/1.1\r\nHost : x\r\n\r\n",
        "\x16\x03\x01\x02\r\n\r\n"}) {
    const std::string answer = bench.answerTo(bytes);
    EXPECT_THAT(answer, AllOf(StartsWith("HTTP/1.1 400 "), HasSubstr("\"code\":\"bad-request\"")))
        << bytes;
    EXPECT_THAT(answer, HasSubstr("Content-Security-Policy: default-src 'self'\r\n")) << bytes;
  }
}

TEST_F(ServeLimits, RefusesAHeaderThatIsNotAnotherLineOfText) {
  for (const std::string& line :
       {std::string("A"), std::string(": b"), std::string("A : b"), std::string(" b"),
        std::string("A\tB: c"), std::string("A: b\nC: d"), std::string("A: b\rC: d"),
        std::string("A: \0", 4), std::string("A: \x7F")}) {
    EXPECT_THAT(bench.answerTo(bench.head("GET /v1/state") + line + "\r\n\r\n"),
                AllOf(StartsWith("HTTP/1.1 400 "), HasSubstr("in one line of text")))
        << line;
  }
}

TEST_F(ServeLimits, AnswersRequestsThatAreSentTogetherInTheirOrder) {
  const std::string answer = bench.answerTo(bench.head("GET /v1/list/artists?generation=3") +
                                            "\r\n" + bench.getText("/v1/list/albums?generation=3"));
  EXPECT_THAT(bench.headUnit.asked(), ElementsAre("list artists 3 0 20", "list albums 3 0 20"));
  EXPECT_THAT(answer, StartsWith("HTTP/1.1 200 "));
  EXPECT_THAT(answer.substr(12), HasSubstr("HTTP/1.1 200 "));
}

TEST_F(ServeLimits, ReadsTheBodyOfARefusedRequestAsNoRequest) {
  const std::string hidden = bench.postText("/v1/command", R"({"command":"toggle"})");
  const std::string answer =
      bench.answerTo("POST /v1/command HTTP/1.1\r\nHost: evil.example\r\nContent-Length: " +
                     std::to_string(hidden.size()) + "\r\n\r\n" + hidden);
  EXPECT_THAT(answer, StartsWith("HTTP/1.1 403 "));
  EXPECT_THAT(bench.headUnit.asked(), IsEmpty());
}

TEST_F(ServeLimits, ReadsOneBodyOfTwoLengthsAsNone) {
  EXPECT_THAT(
      bench.answerTo(bench.head("POST /v1/reconnect") +
                     "Content-Type: application/json\r\nContent-Length: 2\r\nContent-Length: "
                     "30\r\n\r\n{}"),
      StartsWith("HTTP/1.1 400 "));
}

TEST_F(ServeLimits, RefusesALengthThatContradictsTheChunks) {
  for (const char* const headers : {"Content-Length: 2\r\nTransfer-Encoding: chunked\r\n",
                                    "Transfer-Encoding: identity\r\nContent-Length: 2\r\n"}) {
    EXPECT_THAT(bench.answerTo(bench.head("POST /v1/reconnect") +
                               "Content-Type: application/json\r\n" + headers + "\r\n{}"),
                StartsWith("HTTP/1.1 411 "))
        << headers;
  }
  EXPECT_THAT(bench.headUnit.asked(), IsEmpty());
}

TEST_F(ServeLimits, ReadsTheBodyOfAGetAsNoRequest) {
  const std::string hidden = bench.postText("/v1/command", R"({"command":"toggle"})");
  const std::string answer =
      bench.answerTo(bench.head("GET /v1/state") + "Connection: close\r\n" +
                     "Content-Length: " + std::to_string(hidden.size()) + "\r\n\r\n" + hidden);
  EXPECT_THAT(answer, StartsWith("HTTP/1.1 200 "));
  const std::string kept = bench.answerTo(bench.head("GET /v1/state") +
                                          "Content-Length: " + std::to_string(hidden.size()) +
                                          "\r\n\r\n" + hidden + bench.getText("/v1/state"));
  EXPECT_THAT(kept.substr(12), HasSubstr("HTTP/1.1 200 "));
  EXPECT_THAT(bench.headUnit.asked(), IsEmpty());
}

TEST_F(ServeLimits, RefusesTheConnectionAfter64AndTakesOneWhenOneHasGone) {
  auto clients = idleClients(limits::kConnections);
  Client one(bench.server.port());
  const std::string refusal = one.readAll();
  EXPECT_THAT(refusal, StartsWith("HTTP/1.1 503 "));
  EXPECT_THAT(refusal, HasSubstr("too-many-connections"));
  EXPECT_THAT(refusal, HasSubstr("Content-Security-Policy: default-src 'self'\r\n"));
  clients.pop_back();
  EXPECT_TRUE(
      eventually([this] { return bench.get("/v1/state").compare(0, 13, "HTTP/1.1 200 ") == 0; }));
}

TEST_F(ServeLimits, AnswersRequestsDuring32StreamsAndRefusesOneMore) {
  std::vector<std::unique_ptr<Client>> streams;
  for (size_t i = 0; i < limits::kEventStreams; ++i) {
    streams.push_back(std::make_unique<Client>(bench.server.port()));
    streams.back()->send(bench.getText("/v1/events"));
    EXPECT_THAT(streams.back()->readUntil("\n\n"), StartsWith("HTTP/1.1 200 "));
  }
  EXPECT_THAT(bench.get("/v1/events"),
              AllOf(StartsWith("HTTP/1.1 503 "), HasSubstr("too-many-streams")));
  EXPECT_THAT(bench.get("/v1/state"), StartsWith("HTTP/1.1 200 "));
  streams.pop_back();
  EXPECT_TRUE(eventually([this] {
    Client client(bench.server.port());
    client.send(bench.getText("/v1/events"));
    return client.readUntil("\r\n").compare(0, 13, "HTTP/1.1 200 ") == 0;
  }));
}

// Waits for the time limit of a write.
TEST_F(ServeLimits, ClosesAStreamWhoseReaderNeverReads) {
  Client reader(bench.server.port());
  reader.send(bench.getText("/v1/events?topics=console"));
  ASSERT_THAT(reader.readUntil(": ready\n\n"), HasSubstr(": ready"));
  // More than the system keeps for a connection, and less than the log keeps for a reader.
  constexpr size_t kEvents = 250;
  const std::string line = "{\"line\":\"" + std::string(60 << 10, 'x') + "\"}";
  for (size_t i = 0; i < kEvents; ++i)
    bench.events.publish(tool::Topic::kConsole, line);
  EXPECT_TRUE(eventually([&] { return bench.streams.readersOf(tool::Topic::kConsole) == 0; }));
}

TEST_F(ServeLimits, ClosesAStreamWhoseReaderIsMoreThan256EventsLate) {
  Client reader(bench.server.port());
  reader.send(bench.getText("/v1/events?topics=console"));
  ASSERT_THAT(reader.readUntil(": ready\n\n"), HasSubstr(": ready"));
  // The system keeps less than half of this, and the log 256 of the events.
  constexpr size_t kEvents = 600;
  const std::string line = "{\"line\":\"" + std::string(60 << 10, 'x') + "\"}";
  for (size_t i = 0; i < kEvents; ++i)
    bench.events.publish(tool::Topic::kConsole, line);
  // It can be closed before the first event is sent.
  const std::string read = reader.readAll();
  EXPECT_LT(read.size(), kEvents * line.size());
  EXPECT_THAT(read.substr(read.size() - std::min<size_t>(read.size(), 100)),
              Not(HasSubstr("nothing more within")));
}

TEST_F(ServeLimits, DropsARequestWhoseClientHasGone) {
  Client client(bench.server.port());
  client.send(bench.getText("/v1/list/slow?generation=3"));
  EXPECT_TRUE(eventually([this] { return !bench.headUnit.asked().empty(); }));
  EXPECT_EQ(bench.headUnit.dropped, 0);
  client.close();
  EXPECT_TRUE(eventually([this] { return bench.headUnit.dropped == 1; }));
}

TEST(ServeStop, EndsStreamsIdleConnectionsAndRequestsAtOnce) {
  auto bench = std::make_unique<ServeBench>();
  Client idle(bench->server.port());
  Client stream(bench->server.port());
  stream.send(bench->getText("/v1/events"));
  EXPECT_THAT(stream.readUntil("\n\n"), StartsWith("HTTP/1.1 200 "));
  Client slow(bench->server.port());
  slow.send(bench->getText("/v1/list/slow?generation=3"));
  EXPECT_TRUE(eventually([&bench] { return !bench->headUnit.asked().empty(); }));
  const auto begin = Clock::now();
  bench.reset();
  EXPECT_LT(Clock::now() - begin, seconds(2));
  idle.readAll();
}

TEST(ServePort, IsNotShared) {
  const ServeBench bench;
  EXPECT_THROW(tool::HttpServer("127.0.0.1", bench.server.port(), kToken,
                                [](const tool::Request&) { return tool::Answer(); }),
               std::runtime_error);
}

}  // namespace
}  // namespace serving::limits_of_a_client
