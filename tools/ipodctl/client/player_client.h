#pragma once

#include <functional>
#include <memory>
#include <nlohmann/json.hpp>
#include <string>

#include "ipodctl/client/serve_address.h"

namespace tool {

/// A request that was not carried out.
struct CommandFailure {
  int exitStatus;
  std::string code;
  std::string message;  ///< what to do
};

/// What the commands ask for: of a running serve, or of a connection that this process holds. All
/// functions throw CommandFailure when they are refused.
class PlayerClient {
 public:
  virtual ~PlayerClient() = default;

  /// "serve" or "session".
  virtual const char* name() const = 0;
  virtual nlohmann::json state() = 0;
  virtual nlohmann::json list(const std::string& path, uint64_t generation, int offset,
                              int count) = 0;
  /// Carries out a change: "/v1/play" with its body, and so on.
  virtual void change(const std::string& path, const nlohmann::json& body) = 0;
  /// Hands each state document on, until `take` returns false.
  virtual void watch(const std::function<bool(const nlohmann::json&)>& take) = 0;
};

std::unique_ptr<PlayerClient> makeServeClient(const ServeAddress& address);

}  // namespace tool
