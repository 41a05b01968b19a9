#include "device_map.h"

#include <charconv>
#include <cstdint>
#include <optional>
#include <string_view>

#include "comm_state.h"
#include "open_failure.h"

namespace coredll {
namespace {

constexpr std::string_view kSerialPrefix = "serial:";
constexpr std::string_view kSocketPrefix = "tcp:";
constexpr DWORD kLastPort = 65535;

bool startsWith(const std::string& text, std::string_view prefix) {
  return text.compare(0, prefix.size(), prefix) == 0;
}

std::optional<DWORD> numberOf(std::string_view digits) {
  DWORD value = 0;
  const auto [end, error] = std::from_chars(digits.begin(), digits.end(), value);
  const bool isWhole = !digits.empty() && error == std::errc() && end == digits.end();
  return isWhole ? std::optional(value) : std::nullopt;
}

WireEnd serialLineOf(const std::string& text) {
  const std::string rest = text.substr(kSerialPrefix.size());
  const auto at = rest.rfind('@');
  if (at == std::string::npos || at == 0) {
    throw OpenFailure(ERROR_FILE_NOT_FOUND,
                      text + " is not complete; write it like serial:/dev/ttyUSB0@57600");
  }
  WireEnd end;
  end.kind = WireEnd::Kind::kSerialLine;
  end.path = rest.substr(0, at);
  end.speed = numberOf(rest.substr(at + 1)).value_or(0);
  if (!isUsualSpeed(end.speed)) {
    throw OpenFailure(ERROR_FILE_NOT_FOUND,
                      text + " has no usual speed; write one of " + usualSpeeds() + " after the @");
  }
  return end;
}

/// Returns the text without the brackets that an IPv6 address has.
std::string withoutBrackets(const std::string& text) {
  const bool has = text.size() > 2 && text.front() == '[' && text.back() == ']';
  return has ? text.substr(1, text.size() - 2) : text;
}

WireEnd socketOf(const std::string& text) {
  const std::string rest = text.substr(kSocketPrefix.size());
  const auto colon = rest.rfind(':');
  WireEnd end;
  end.kind = WireEnd::Kind::kSocket;
  if (colon != std::string::npos) {
    end.host = withoutBrackets(rest.substr(0, colon));
    end.port = rest.substr(colon + 1);
  }
  const DWORD port = numberOf(end.port).value_or(0);
  if (end.host.empty() || port < 1 || port > kLastPort) {
    throw OpenFailure(ERROR_FILE_NOT_FOUND, text +
                                                " is not complete; write it like "
                                                "tcp:127.0.0.1:5000, with a port from 1 to 65535");
  }
  return end;
}

}  // namespace

WireEnd wireEndOf(const std::string& text) {
  if (text.empty()) {
    throw OpenFailure(ERROR_FILE_NOT_FOUND,
                      "has no path in IPODCTL_DEVICES; write one after the =");
  }
  if (startsWith(text, kSerialPrefix)) return serialLineOf(text);
  if (startsWith(text, kSocketPrefix)) return socketOf(text);
  WireEnd end;
  end.path = text;
  return end;
}

}  // namespace coredll
