#pragma once

#include <string>

#include "device/personality.h"

namespace simulator {

/// Changes one switch of a personality, written as NAME=VALUE. Throws std::invalid_argument with a
/// text for a person.
void applySetting(Personality& personality, const std::string& text);

/// A table of every switch and how to write it, for a help text.
std::string settingsHelp();

}  // namespace simulator
