#pragma once

#include "screen/display_image.h"

namespace simulator {

/// The whole screen as a person sees it: the image centred between left and right, from the top
/// down, on the iPod's own background. Without an image just the background.
Picture renderScreen(uint16_t width, uint16_t height, const std::optional<Picture>& image);

}  // namespace simulator
