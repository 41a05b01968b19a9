// The socket of `ipodsim --control`: the simulated iPod itself.
#pragma once

#include <chrono>
#include <functional>
#include <string>

#include "ipodctl/serve/request.h"

namespace tool {

/// Passes requests to the simulated iPod. All functions may be called on any thread.
class IpodControl {
 public:
  /// An empty path: there is no simulated iPod.
  explicit IpodControl(std::string socketPath) : path(std::move(socketPath)) {}

  bool isThere() const { return !path.empty(); }

  /// Passes a document of one request, and returns the iPod's answer.
  Answer pass(const std::string& document, const std::function<bool()>& isWanted) const;

  /// Returns the iPod's screen as a PNG.
  Answer screen(const std::function<bool()>& isWanted) const;

  /// Returns the line of the iPod's status; empty when it does not answer.
  std::string status() const;

 private:
  std::string ask(const std::string& line, std::chrono::milliseconds limit,
                  const std::function<bool()>& isWanted) const;

  const std::string path;
};

}  // namespace tool
