#include "ipodctl/serve/request_head.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstring>

#include "ipodctl/serve/limits.h"

namespace tool {
namespace {

Failure badRequest(const std::string& message) { return {400, "bad-request", message}; }

bool isVisible(char one) { return one > ' ' && one <= '~'; }

bool isTokenCharacter(char one) {
  return isVisible(one) && std::strchr("\"(),/:;<=>?@[\\]{}", one) == nullptr;
}

char smallLetter(char one) {
  return one >= 'A' && one <= 'Z' ? static_cast<char>(one + 'a' - 'A') : one;
}

std::string_view trimmed(std::string_view text) {
  constexpr std::string_view kBlanks = " \t";
  text.remove_prefix(std::min(text.find_first_not_of(kBlanks), text.size()));
  return text.substr(0, text.find_last_not_of(kBlanks) + 1);
}

/// Removes the text up to the next `end`, and `end`. Returns the text, or all when there is none.
std::string_view takeUntil(std::string_view& rest, std::string_view end) {
  const size_t at = rest.find(end);
  const std::string_view taken = rest.substr(0, at);
  rest.remove_prefix(at == std::string_view::npos ? rest.size() : at + end.size());
  return taken;
}

int hexDigit(char one) {
  constexpr std::string_view kDigits = "0123456789abcdef";
  const size_t at = kDigits.find(smallLetter(one));
  return at == std::string_view::npos ? -1 : static_cast<int>(at);
}

/// Returns what %41 and + mean in a query. A % without two digits stays.
std::string decoded(std::string_view text) {
  std::string result;
  for (size_t i = 0; i < text.size(); ++i) {
    const bool isCode = text[i] == '%' && i + 2 < text.size() && hexDigit(text[i + 1]) >= 0 &&
                        hexDigit(text[i + 2]) >= 0;
    if (isCode) {
      result += static_cast<char>(16 * hexDigit(text[i + 1]) + hexDigit(text[i + 2]));
      i += 2;
    } else {
      result += text[i] == '+' ? ' ' : text[i];
    }
  }
  return result;
}

std::map<std::string, std::string> queryOf(std::string_view text) {
  std::map<std::string, std::string> query;
  while (!text.empty()) {
    std::string_view pair = takeUntil(text, "&");
    const std::string name = decoded(takeUntil(pair, "="));
    query.emplace(name, decoded(pair));
  }
  return query;
}

std::optional<Failure> parseTarget(std::string_view target, RequestHead& head) {
  if (target.size() > limits::kTargetSize) {
    return Failure{414, "long-address", "Use an address of at most 1024 characters."};
  }
  if (target.empty() || target[0] != '/' || !std::all_of(target.begin(), target.end(), isVisible)) {
    return badRequest("Begin the path with / and write other characters than ASCII as %41.");
  }
  head.path = takeUntil(target, "?");
  head.query = queryOf(target);
  return std::nullopt;
}

std::optional<Failure> parseFirstLine(std::string_view line, RequestHead& head) {
  head.method = takeUntil(line, " ");
  const std::string_view target = takeUntil(line, " ");
  head.isOld = line == "HTTP/1.0";
  if (!head.isOld && line != "HTTP/1.1") return badRequest("Send a request of HTTP/1.1.");
  if (head.method != "GET" && head.method != "POST") {
    return Failure{405, "bad-method", "Use GET to look and POST to change."};
  }
  return parseTarget(target, head);
}

/// Headers that must not have two meanings.
bool mattersOnce(const std::string& name) {
  constexpr std::array<std::string_view, 7> kOnce = {
      "host", "origin", "authorization", "cookie", "content-length", "content-type", "connection"};
  return std::find(kOnce.begin(), kOnce.end(), name) != kOnce.end();
}

bool isText(std::string_view value) {
  return std::all_of(value.begin(), value.end(), [](char one) {
    return one == '\t' || (static_cast<unsigned char>(one) >= ' ' && one != 0x7F);
  });
}

std::optional<Failure> parseHeader(std::string_view line, RequestHead& head) {
  const bool hasColon = line.find(':') != std::string_view::npos;
  std::string name(takeUntil(line, ":"));
  const bool isName = !name.empty() && std::all_of(name.begin(), name.end(), isTokenCharacter);
  if (!hasColon || !isName || !isText(line)) {
    return badRequest("Write each header as NAME: VALUE in one line of text.");
  }
  std::transform(name.begin(), name.end(), name.begin(), smallLetter);
  const bool isNew = head.headers.emplace(name, trimmed(line)).second;
  if (!isNew && mattersOnce(name)) return badRequest("Send the header " + name + " once.");
  return std::nullopt;
}

}  // namespace

const std::string* RequestHead::header(const std::string& name) const {
  const auto found = headers.find(name);
  return found == headers.end() ? nullptr : &found->second;
}

bool RequestHead::keepsAlive() const {
  const std::string* const connection = header("connection");
  if (connection == nullptr) return !isOld;
  std::string value = *connection;
  std::transform(value.begin(), value.end(), value.begin(), smallLetter);
  return value == "keep-alive" || (!isOld && value.find("close") == std::string::npos);
}

std::variant<RequestHead, Failure> parseHead(std::string_view text) {
  RequestHead head;
  if (const auto failure = parseFirstLine(takeUntil(text, "\r\n"), head)) return *failure;
  while (!text.empty()) {
    if (const auto failure = parseHeader(takeUntil(text, "\r\n"), head)) return *failure;
  }
  return head;
}

std::variant<size_t, Failure> bodySizeOf(const RequestHead& head, size_t most) {
  if (head.header("transfer-encoding") != nullptr) {
    return Failure{411, "no-length", "Send the body with a Content-Length, not in chunks."};
  }
  const std::string* const length = head.header("content-length");
  if (length == nullptr && head.method == "GET") return size_t{0};
  if (length == nullptr) return Failure{411, "no-length", "Send the body with a Content-Length."};
  size_t size = 0;
  const char* const end = length->data() + length->size();
  const auto result = std::from_chars(length->data(), end, size);
  if (result.ec == std::errc::result_out_of_range || (result.ptr == end && size > most)) {
    return Failure{413, "large-body",
                   "Send at most " + std::to_string(most >> 10) + " KB in the body."};
  }
  if (result.ec != std::errc() || result.ptr != end) {
    return badRequest("Write the Content-Length as a decimal number.");
  }
  return size;
}

}  // namespace tool
