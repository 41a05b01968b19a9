#include "ipodctl/serve/access.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <sys/random.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <stdexcept>

#include "link/file_descriptor.h"

namespace tool {
namespace {

constexpr size_t kShortestToken = 32;
constexpr size_t kLongestToken = 512;

std::string hostNameOf(const std::string& address, int port) {
  const bool isSix = address.find(':') != std::string::npos;
  return (isSix ? "[" + address + "]" : address) + ":" + std::to_string(port);
}

/// Returns the value of the cookie in the header Cookie; empty without it.
std::string_view cookieIn(std::string_view header, const std::string& name) {
  while (!header.empty()) {
    const size_t end = std::min(header.find(';'), header.size());
    std::string_view pair = header.substr(0, end);
    header.remove_prefix(std::min(end + 1, header.size()));
    pair.remove_prefix(std::min(pair.find_first_not_of(' '), pair.size()));
    const bool isNamed = pair.size() > name.size() && pair.substr(0, name.size()) == name;
    if (isNamed && pair[name.size()] == '=') return pair.substr(name.size() + 1);
  }
  return {};
}

/// A parameter such as the character set is allowed.
bool isJson(const std::string* type) {
  constexpr std::string_view kJson = "application/json";
  if (type == nullptr || type->compare(0, kJson.size(), kJson) != 0) return false;
  const std::string_view rest = std::string_view(*type).substr(kJson.size());
  return rest.empty() || rest[0] == ';' || rest[0] == ' ';
}

std::optional<Failure> refusalOfChange(const RequestHead& head) {
  if (!isJson(head.header("content-type")) || head.header("content-encoding") != nullptr) {
    return Failure{415, "not-json", "Send the change with Content-Type: application/json."};
  }
  return std::nullopt;
}

}  // namespace

std::string newToken() {
  std::array<unsigned char, 16> bytes = {};
  if (getrandom(bytes.data(), bytes.size(), 0) != static_cast<ssize_t>(bytes.size())) {
    throw std::runtime_error("the system gives no random numbers; try again");
  }
  constexpr char kDigits[] = "0123456789abcdef";
  std::string token;
  for (const unsigned char byte : bytes) {
    token += kDigits[byte >> 4];
    token += kDigits[byte & 15];
  }
  return token;
}

std::string tokenOfFile(const std::string& path) {
  const simulator::FileDescriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
  struct stat status = {};
  if (!file || fstat(file.get(), &status) != 0) {
    throw std::runtime_error("cannot read the token file " + path + ": " + std::strerror(errno));
  }
  constexpr mode_t kOthers = 0077;
  if (!S_ISREG(status.st_mode) || status.st_uid != geteuid() || (status.st_mode & kOthers) != 0) {
    throw std::runtime_error("others can read the token file " + path + "; run chmod 600 " + path);
  }
  std::string token(kLongestToken, 0);
  token.resize(
      static_cast<size_t>(std::max<ssize_t>(0, read(file.get(), &token[0], token.size()))));
  while (!token.empty() && (token.back() == '\n' || token.back() == '\r'))
    token.pop_back();
  const auto isSafe = [](char one) {
    return one > ' ' && one <= '~' && one != '"' && one != ';' && one != '&' && one != '\\';
  };
  if (token.size() < kShortestToken || !std::all_of(token.begin(), token.end(), isSafe)) {
    throw std::runtime_error("the token in " + path +
                             " is too short; write at least 32 letters and digits into it");
  }
  return token;
}

bool isLoopback(const std::string& address) {
  in_addr four = {};
  if (inet_pton(AF_INET, address.c_str(), &four) == 1) return ntohl(four.s_addr) >> 24 == 127;
  return address == "::1";
}

Access::Access(const std::string& address, int port, std::string theToken)
    : token(std::move(theToken)),
      hostName(hostNameOf(address, port)),
      otherName(isLoopback(address) ? hostNameOf("localhost", port) : ""),
      cookieName("ipodctl_" + std::to_string(port)) {}

std::optional<Failure> Access::refusalOf(const RequestHead& head) const {
  const std::string* const host = head.header("host");
  if (host == nullptr || !isOwnHost(*host)) {
    return Failure{403, "foreign-host", "Open " + url() + " itself, by no other name."};
  }
  const std::string* const origin = head.header("origin");
  constexpr std::string_view kScheme = "http://";
  const bool isOwn = origin == nullptr || (origin->compare(0, kScheme.size(), kScheme) == 0 &&
                                           isOwnHost(origin->substr(kScheme.size())));
  if (!isOwn) return Failure{403, "foreign-origin", "A page of another site cannot use this one."};
  if (head.header("upgrade") != nullptr) {
    return Failure{400, "bad-request", "Read /v1/events: there are no web sockets here."};
  }
  if (!hasToken(head) && !opensThePage(head)) {
    return Failure{401, "no-token", "Open the address that ipodctl serve printed at its start."};
  }
  return head.method == "POST" ? refusalOfChange(head) : std::nullopt;
}

bool Access::opensThePage(const RequestHead& head) const {
  const auto given = head.query.find("token");
  const bool isAsked = head.method == "GET" && head.path == "/" && given != head.query.end();
  return isAsked && isToken(given->second);
}

std::string Access::cookie() const {
  return cookieName + "=" + token + "; HttpOnly; SameSite=Strict; Path=/";
}

bool Access::isOwnHost(std::string_view host) const {
  return host == hostName || (!otherName.empty() && host == otherName);
}

/// The time does not say how many characters are right.
bool Access::isToken(std::string_view text) const {
  unsigned difference = text.size() == token.size() ? 0 : 1;
  for (size_t i = 0; i < token.size(); ++i) {
    const char one = i < text.size() ? text[i] : '\0';
    difference |= static_cast<unsigned char>(one ^ token[i]);
  }
  return difference == 0;
}

bool Access::hasToken(const RequestHead& head) const {
  const std::string* const cookies = head.header("cookie");
  if (cookies != nullptr && isToken(cookieIn(*cookies, cookieName))) return true;
  const std::string* const header = head.header("authorization");
  constexpr std::string_view kBearer = "Bearer ";
  return header != nullptr && header->compare(0, kBearer.size(), kBearer) == 0 &&
         isToken(std::string_view(*header).substr(kBearer.size()));
}

}  // namespace tool
