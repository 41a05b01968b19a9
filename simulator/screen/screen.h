#pragma once

#include "screen/display_image.h"

namespace simulator {

/// Returns the whole screen as a person sees it: the image at the top, centred between left and
/// right, on the iPod's background. Without an image it is only the background.
Picture renderScreen(uint16_t width, uint16_t height, const std::optional<Picture>& image);

}  // namespace simulator
