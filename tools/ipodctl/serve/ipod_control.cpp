#include "ipodctl/serve/ipod_control.h"

#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <nlohmann/json.hpp>

#include "ipodctl/serve/base64.h"
#include "link/file_descriptor.h"

namespace tool {
namespace {

using Clock = std::chrono::steady_clock;
using nlohmann::json;
using simulator::FileDescriptor;

constexpr std::chrono::milliseconds kAnswerTime{3000};
constexpr std::chrono::milliseconds kStatusTime{400};
constexpr int kLongestWait = 60000;  ///< of wait-until, in ms
constexpr int kGlance = 200;         ///< whether somebody waits, in ms
constexpr size_t kLongestLine = 8 << 20;

FileDescriptor connectTo(const std::string& path) {
  sockaddr_un address = {};
  address.sun_family = AF_UNIX;
  if (path.size() >= sizeof address.sun_path) return {};
  path.copy(address.sun_path, path.size());
  FileDescriptor made(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
  const auto* const generic = reinterpret_cast<const sockaddr*>(&address);
  if (made && connect(made.get(), generic, sizeof address) == 0) return made;
  return {};
}

/// Appends what arrives within the time. Returns false at the end.
bool receive(const FileDescriptor& from, std::string& line) {
  pollfd one = {from.get(), POLLIN, 0};
  if (poll(&one, 1, kGlance) <= 0) return true;
  char bytes[16 << 10];
  const ssize_t count = recv(from.get(), bytes, sizeof bytes, MSG_DONTWAIT);
  if (count > 0) line.append(bytes, static_cast<size_t>(count));
  return count > 0 && line.size() <= kLongestLine;
}

Answer noAnswer() {
  return answerOf({504, "no-answer", "The simulated iPod does not answer; start ipodsim again."});
}

Answer noIpod() {
  return answerOf({404, "no-simulated-ipod",
                   "Start ipodsim --control SOCKET, and ipodctl serve --control SOCKET."});
}

}  // namespace

std::string IpodControl::ask(const std::string& line, std::chrono::milliseconds limit,
                             const std::function<bool()>& isWanted) const {
  const FileDescriptor connection = connectTo(path);
  if (!connection) return "";
  const std::string request = line + "\n";
  const ssize_t sent =
      send(connection.get(), request.data(), request.size(), MSG_NOSIGNAL | MSG_DONTWAIT);
  if (sent != static_cast<ssize_t>(request.size())) return "";
  std::string answer;
  const auto end = Clock::now() + limit;
  while (Clock::now() < end && isWanted() && receive(connection, answer)) {
    const size_t at = answer.find('\n');
    if (at != std::string::npos) return answer.substr(0, at);
  }
  return "";
}

Answer IpodControl::pass(const std::string& document, const std::function<bool()>& isWanted) const {
  if (!isThere()) return noIpod();
  const json request = json::parse(document, nullptr, false);
  if (!request.is_object()) {
    return answerOf({400, "bad-request", "Send one JSON object, such as {\"do\":\"status\"}."});
  }
  const auto wait = request.find("timeout_ms");
  const bool waits = wait != request.end() && wait->is_number_unsigned();
  const auto longest =
      waits ? std::min<uint64_t>(wait->get<uint64_t>(), kLongestWait) : uint64_t{0};
  Answer answer;
  answer.body = ask(request.dump(), kAnswerTime + std::chrono::milliseconds(longest), isWanted);
  return answer.body.empty() ? noAnswer() : answer;
}

Answer IpodControl::screen(const std::function<bool()>& isWanted) const {
  if (!isThere()) return noIpod();
  const json reply = json::parse(ask("{\"do\":\"screen\"}", kAnswerTime, isWanted), nullptr, false);
  const bool hasPicture = reply.is_object() && reply.contains("png") && reply["png"].is_string();
  const auto png = hasPicture ? decodedBase64(reply["png"].get<std::string>()) : std::nullopt;
  if (!png) return noAnswer();
  Answer answer;
  answer.type = "image/png";
  answer.body = *png;
  return answer;
}

std::string IpodControl::status() const {
  return ask("{\"do\":\"status\"}", kStatusTime, [] { return true; });
}

}  // namespace tool
