#pragma once

#include <string>

namespace tool {

/// The largest logo that a model shows.
struct LogoLimits {
  unsigned width;
  unsigned height;
};

/// Returns the limits of a model, which has the name of a personality of the simulated iPod. Throws
/// std::runtime_error with one line for the user when there is none, or it shows no logo.
LogoLimits logoLimits(const std::string& model);

/// Writes a PNG of the model's whole screen with the logo, in the colours that it has. Throws
/// std::runtime_error with one line for the user.
void writeLogoPreview(const std::string& bitmap, const std::string& model, const std::string& file);

}  // namespace tool
