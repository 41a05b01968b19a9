#pragma once

#include <functional>
#include <string>

#include "ipodctl/client/serve_address.h"

namespace tool {

/// What serve answered. Status 0: there is no answer, and the body says why.
struct HttpAnswer {
  int status = 0;
  std::string body;
};

/// Requests to `ipodctl serve`. Every wait has an end.
class HttpClient {
 public:
  explicit HttpClient(ServeAddress where) : address(std::move(where)) {}

  HttpAnswer get(const std::string& path) const;
  HttpAnswer post(const std::string& path, const std::string& json) const;
  /// Hands the stream on, piece by piece, until `take` returns false or the stream ends.
  HttpAnswer follow(const std::string& path,
                    const std::function<bool(const std::string&)>& take) const;

  const std::string& url() const { return address.url; }

 private:
  ServeAddress address;
};

}  // namespace tool
