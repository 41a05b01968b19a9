// Who may send requests to `ipodctl serve`.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "ipodctl/serve/request_head.h"

namespace tool {

/// Returns 128 random bits as hexadecimal digits. Throws std::runtime_error without a random
/// source.
std::string newToken();

/// Returns the token of a file, which only this user may read and which has at least 32 visible
/// characters. Throws std::runtime_error with a message for the user.
std::string tokenOfFile(const std::string& path);

/// Returns whether only this computer reaches the address.
bool isLoopback(const std::string& address);

/// The rules for every request. A page of another site can make a browser send requests here: it
/// can choose a name that leads here (Host), and cannot hide where it is from (Origin). The token
/// keeps out other users of this computer.
class Access {
 public:
  /// `address` is numeric.
  Access(const std::string& address, int port, std::string token);

  /// Returns why the request is refused, if it is. Changes are only made by POST with JSON.
  std::optional<Failure> refusalOf(const RequestHead& head) const;

  /// Returns whether the request is GET /?token=TOKEN, the address that is printed at the start.
  bool opensThePage(const RequestHead& head) const;

  /// Returns the value of Set-Cookie for it.
  std::string cookie() const;

  /// "http://127.0.0.1:8730"
  std::string url() const { return "http://" + hostName; }

 private:
  bool isOwnHost(std::string_view host) const;
  bool isToken(std::string_view text) const;
  bool hasToken(const RequestHead& head) const;

  const std::string token;
  const std::string hostName;   ///< address and port
  const std::string otherName;  ///< localhost and the port; empty beyond the loopback address
  const std::string cookieName;
};

}  // namespace tool
