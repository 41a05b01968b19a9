#pragma once

#include <nlohmann/json.hpp>

#include "ipodctl/commands/run_command.h"

namespace tool {

/// Writes the converted logo, and its preview, where the options say. Returns what was written.
/// Throws std::runtime_error with one line for the user.
nlohmann::json writeLogo(const CommandOptions& options);

/// Returns the body of the request that changes or removes serve's logo. The picture is tried
/// first. Throws std::runtime_error with one line for the user.
nlohmann::json logoRequest(const CommandOptions& options);

}  // namespace tool
