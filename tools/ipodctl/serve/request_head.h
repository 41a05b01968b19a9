// The head of a request: its first line and its headers.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <variant>

#include "ipodctl/serve/request.h"

namespace tool {

struct RequestHead {
  std::string method;
  std::string path;
  std::map<std::string, std::string> query;
  bool isOld = false;                          ///< HTTP/1.0
  std::map<std::string, std::string> headers;  ///< the names in small letters

  /// Returns the header's value; null without one.
  const std::string* header(const std::string& name) const;
  bool keepsAlive() const;
};

/// Parses a head, up to and without the empty line. It is strict: a header that matters twice, a
/// character that no client needs, or a line without CR LF is a failure.
std::variant<RequestHead, Failure> parseHead(std::string_view text);

/// Returns the length of the body, or why there can be none: it must be stated, and at most `most`.
std::variant<size_t, Failure> bodySizeOf(const RequestHead& head, size_t most);

}  // namespace tool
