// The bytes of a client of `ipodctl serve`: heads, access, routes and bodies up to the head unit.

#include <sys/socket.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <fstream>
#include <nlohmann/json.hpp>
#include <string>
#include <string_view>
#include <vector>

#include "ipodctl/logo/convert_logo.h"
#include "ipodctl/serve/event_log.h"
#include "ipodctl/serve/event_stream.h"
#include "ipodctl/serve/http_server.h"
#include "ipodctl/serve/ipod_control.h"
#include "ipodctl/serve/routes.h"
#include "ipodctl/serve/static_files.h"
#include "ipodctl/serve/wire_monitor.h"
#include "link/file_descriptor.h"
#include "support/require.h"
#include "support/temporary_folder.h"
#include "tools/serve/fake_head_unit.h"

namespace {

using std::string_view;

constexpr string_view kToken = "0123456789abcdef0123456789abcdef";
/// An input has this port in Host, Origin and the cookie; the system chooses the port.
constexpr string_view kWrittenPort = "8730";
/// The answers to more requests would not fit into the socket.
constexpr size_t kMostHeads = 24;
constexpr size_t kMostPieces = 48;
constexpr size_t kLargestPiece = 8 << 10;

/// The page is small: the answers must fit into the socket.
tool::StaticFiles smallPage() {
  const simulator::TemporaryFolder folder;
  std::ofstream(folder / "index.html") << "<p>page";
  return tool::StaticFiles((folder / "").string());
}

/// What one client talks to.
struct Scene {
  explicit Scene(const tool::StaticFiles& files)
      : parts{headUnit,
              streams,
              files,
              ipod,
              [] { return std::string("# ipodctl-trace 1\n"); },
              tool::explainedTrace,
              [](const std::string& png, const std::string&) {
                return tool::convertLogo(png, 320, 240);
              }} {
    events.close();  // so that a stream ends after its first event
  }

  tool::EventLog events;
  serving::FakeHeadUnit headUnit;
  const tool::IpodControl ipod{""};
  tool::EventStreams streams{events, [this] { return tool::stateDocument(parts); },
                             [this](std::string& state) { tool::completeState(parts, state); }};
  tool::RoutedParts parts;
};

/// Answers on this thread; it does not listen.
struct Bench {
  Scene* scene = nullptr;
  const tool::StaticFiles files = smallPage();
  tool::HttpServer server{"127.0.0.1", 0, std::string(kToken), [this](const tool::Request& one) {
                            return tool::route(scene->parts, one);
                          }};
};

/// Sends the bytes in pieces, each of which is read alone, and nothing more.
void sendInPieces(int socket, const std::string& bytes, size_t wantedSize) {
  const size_t size = std::min(std::max(wantedSize, bytes.size() / kMostPieces + 1), kLargestPiece);
  for (size_t at = 0; at < bytes.size(); at += size) {
    const string_view piece = string_view(bytes).substr(at, size);
    const ssize_t sent = send(socket, piece.data(), piece.size(), MSG_DONTWAIT | MSG_NOSIGNAL);
    require(sent == static_cast<ssize_t>(piece.size()), "the socket does not take the input");
  }
  shutdown(socket, SHUT_WR);
}

std::string received(int socket) {
  static std::array<char, 256 << 10> some;
  std::string bytes;
  for (ssize_t size; (size = recv(socket, some.data(), some.size(), MSG_DONTWAIT)) > 0;)
    bytes.append(some.data(), static_cast<size_t>(size));
  return bytes;
}

/// Returns what a client reads that sends these bytes. A socket of packets keeps the pieces apart.
std::string answersTo(tool::HttpServer& server, const std::string& bytes, size_t pieceSize) {
  int ends[2];
  require(socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends) == 0, "no socket");
  const simulator::FileDescriptor client(ends[0]);
  const simulator::FileDescriptor served(ends[1]);
  sendInPieces(client.get(), bytes, pieceSize);
  server.serve(served.get());
  return received(client.get());
}

struct Seen {
  int status = 0;
  std::string head;  ///< with CR LF at its end
  std::string body;
};

/// Removes the text up to the next `end`, and `end`, which must be there.
std::string takeUntil(string_view& rest, string_view end, const char* what) {
  const size_t at = rest.find(end);
  require(at != string_view::npos, what);
  std::string taken(rest.substr(0, at));
  rest.remove_prefix(at + end.size());
  return taken;
}

size_t countOf(string_view text, string_view part) {
  size_t count = 0;
  for (size_t at = 0; (at = text.find(part, at)) != string_view::npos; at += part.size())
    ++count;
  return count;
}

/// Returns the value of a header that must be there once.
std::string headerOf(const std::string& head, const std::string& name) {
  const std::string start = "\r\n" + name + ": ";
  require(countOf(head, start) == 1, [&] { return "not one header " + name + ":\n" + head; });
  string_view rest = string_view(head).substr(head.find(start) + start.size());
  return takeUntil(rest, "\r\n", "a header without an end");
}

size_t numberOf(string_view text) {
  size_t number = 0;
  const auto result = std::from_chars(text.data(), text.data() + text.size(), number);
  require(!text.empty() && result.ptr == text.data() + text.size(), "a length is not a number");
  return number;
}

std::string takeBytes(string_view& rest, size_t size) {
  require(rest.size() >= size, "an answer is cut short");
  std::string taken(rest.substr(0, size));
  rest.remove_prefix(size);
  return taken;
}

/// An event stream ends with the connection.
std::string takeEvents(string_view& rest) {
  std::string taken = takeBytes(rest, rest.size());
  const bool isWhole = taken.size() > 2 && taken.compare(taken.size() - 2, 2, "\n\n") == 0;
  require(isWhole, "an event is cut short");
  return taken;
}

Seen takeAnswer(string_view& rest) {
  Seen seen;
  seen.head = takeUntil(rest, "\r\n\r\n", "an answer without the end of its head") + "\r\n";
  require(seen.head.compare(0, 9, "HTTP/1.1 ") == 0, "an answer without a status line");
  seen.status = static_cast<int>(numberOf(string_view(seen.head).substr(9, 3)));
  require(seen.head[12] == ' ', "a status line without a reason");
  if (seen.status == 100) return seen;
  require(headerOf(seen.head, "Content-Security-Policy") == "default-src 'self'", "another policy");
  headerOf(seen.head, "X-Content-Type-Options");
  headerOf(seen.head, "Cache-Control");
  headerOf(seen.head, "Referrer-Policy");
  const bool isStream = headerOf(seen.head, "Content-Type") == "text/event-stream";
  if (isStream) require(headerOf(seen.head, "Connection") == "close", "a stream without an end");
  seen.body = isStream ? takeEvents(rest)
                       : takeBytes(rest, numberOf(headerOf(seen.head, "Content-Length")));
  return seen;
}

/// Returns the code of a refusal; empty when it is none.
std::string codeOf(const Seen& seen) {
  if (seen.status < 400) return "";
  const auto document = nlohmann::json::parse(seen.body, nullptr, false);
  require(document.is_object() && document.contains("error"), "a refusal without a document");
  require(!document["error"]["message"].get<std::string>().empty(), "refused without a reason");
  return document["error"]["code"];
}

/// What follows such a refusal may be the rest of the refused request.
bool endsTheConnection(const std::string& code) {
  constexpr std::array<string_view, 10> kCodes = {
      "foreign-host", "foreign-origin", "no-token",     "not-json",  "no-length",
      "large-body",   "long-address",   "slow-request", "long-head", "fault"};
  return std::find(kCodes.begin(), kCodes.end(), code) != kCodes.end();
}

/// Returns whether a client without the token may have the answer.
bool isForEverybody(int status) {
  constexpr std::array<int, 8> kRefused = {100, 400, 401, 403, 405, 408, 414, 431};
  return std::find(kRefused.begin(), kRefused.end(), status) != kRefused.end();
}

/// Returns the number of answers that need the token.
size_t checkAnswers(string_view text) {
  size_t trusted = 0;
  for (bool isOver = false; !text.empty();) {
    require(!isOver, "an answer after the last one");
    const Seen seen = takeAnswer(text);
    require(seen.status != 500, [&] { return "a fault: " + seen.body; });
    isOver = endsTheConnection(codeOf(seen));
    if (!isForEverybody(seen.status)) ++trusted;
  }
  return trusted;
}

bool isChange(const std::string& call) {
  return call.compare(0, 5, "list ") != 0 && call.compare(0, 5, "tabs ") != 0;
}

/// Each request that is carried out has its own Host and token, and each change is a POST of JSON.
void checkCalls(const std::vector<std::string>& calls, const std::string& input, size_t trusted,
                const std::string& host) {
  const auto changes = static_cast<size_t>(std::count_if(calls.begin(), calls.end(), isChange));
  const size_t most = std::min(countOf(input, kToken), countOf(input, "\r\n\r\n"));
  require(trusted <= most, "an answer without the token");
  require(calls.size() <= most, "a call without the token");
  const size_t hosts = countOf(input, host) + countOf(input, "localhost:");
  require(calls.size() <= hosts, "a call for another host");
  require(changes <= countOf(input, "POST /v1/"), "a change without POST");
  require(changes <= countOf(input, "application/json"), "a change without JSON");
}

/// Writes the port of the server.
std::string withPort(std::string text, const std::string& port) {
  for (size_t at = 0; (at = text.find(kWrittenPort, at)) != std::string::npos; at += port.size())
    text.replace(at, kWrittenPort.size(), port);
  return text;
}

}  // namespace

/// The first byte is the size of the pieces; 0: large ones.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static Bench bench;
  if (size == 0) return 0;
  const std::string port = std::to_string(bench.server.port());
  const std::string input = withPort(std::string(data + 1, data + size), port);
  if (countOf(input, "\r\n\r\n") > kMostHeads) return 0;
  Scene scene(bench.files);
  bench.scene = &scene;
  const size_t pieceSize = data[0] == 0 ? kLargestPiece : data[0];
  const size_t trusted = checkAnswers(answersTo(bench.server, input, pieceSize));
  checkCalls(scene.headUnit.asked(), input, trusted, "127.0.0.1:" + port);
  return 0;
}
