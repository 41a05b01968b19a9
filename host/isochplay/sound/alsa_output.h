#pragma once

#include <memory>
#include <string>

#include "output.h"

namespace isochplay {

/// Plays the samples on a sound card by ALSA, which is loaded here. Of samples that are more than a
/// second late only the last second is played. Without a card, or without ALSA, it reports that
/// once and is silent. `device` is ALSA's name, such as "default".
std::unique_ptr<Output> makeAlsaOutput(const std::string& device);

}  // namespace isochplay
