#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace tool {

/// Returns the bytes of a base64 text; no value when it is not one.
std::optional<std::string> decodedBase64(std::string_view text);

}  // namespace tool
