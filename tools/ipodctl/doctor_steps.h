// The steps of a recorded session that were completed.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "trace/trace.h"

namespace tool {

/// A step of the short session.
struct Step {
  std::string what;
  std::optional<trace::Time> done;  ///< since the device was opened; no value: not reached
  bool isOptional = false;          ///< a session can go on without it
};

/// Returns the steps of the last opening of a device, in their order.
std::vector<Step> stepsOf(const trace::Trace& records);

}  // namespace tool
