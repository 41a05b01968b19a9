#pragma once

#include "player/player.h"

namespace simulator {

/// Returns the name of a state or mode, as programs read and write it.
const char* nameOf(PlayState state);
const char* nameOf(Shuffle mode);
const char* nameOf(Repeat mode);

}  // namespace simulator
