// What each address of `ipodctl serve` does: docs/head-unit-api.md.
#pragma once

#include <functional>
#include <string>

#include "ipodctl/serve/request.h"

namespace tool {

class EventStreams;
class HeadUnit;
class IpodControl;
class StaticFiles;

/// What the requests are about. All of it must outlive the routes.
struct RoutedParts {
  HeadUnit& headUnit;
  EventStreams& events;
  const StaticFiles& files;
  const IpodControl& ipod;
  /// Returns the recorded trace.
  std::function<std::string()> trace;
  /// Returns the document about an uploaded trace. Throws std::runtime_error for one that cannot be
  /// read.
  std::function<std::string(const std::string&)> explain;
  /// Returns the logo's bitmap of a PNG for a model, or for the largest one when its name is empty.
  /// Throws std::runtime_error with a message for the user.
  std::function<std::string(const std::string& png, const std::string& model)> convertLogo;
};

/// Returns the document of GET /v1/state.
std::string stateDocument(const RoutedParts& parts);

/// Adds to the document of a state event whether there is a simulated iPod.
void completeState(const RoutedParts& parts, std::string& document);

/// Answers a request. May be called on any thread.
Answer route(const RoutedParts& parts, const Request& request);

}  // namespace tool
