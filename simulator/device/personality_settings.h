#pragma once

#include <string>

#include "device/personality.h"

namespace simulator {

/// Changes one switch of a personality, written as NAME=VALUE. Throws std::invalid_argument with a
/// message for the user.
void applySetting(Personality& personality, const std::string& text);

/// Returns a table of every switch and how to write it, for a help text.
std::string settingsHelp();

}  // namespace simulator
