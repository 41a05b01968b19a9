#pragma once

#include <optional>
#include <string>

namespace tool {

/// Where `ipodctl serve` listens, and the token that it wants.
struct ServeAddress {
  std::string url;  ///< "http://127.0.0.1:8730"
  std::string token;
};

/// Finds the serve that this user has started; no value when none runs. A folder or a file that
/// another user could have written is refused with std::runtime_error.
std::optional<ServeAddress> findServe();

/// Returns the address of a serve elsewhere, with the token in a file. Throws std::runtime_error
/// with one line for the user.
ServeAddress serveAt(const std::string& url, const std::string& tokenFile);

}  // namespace tool
