#pragma once

#include "session/scene.h"
#include "support/script.h"

/// What happens to a session beside the host's calls: to the cable, to the bytes, to the iPod and
/// to the platform.

constexpr uint8_t kDisturbances = 20;

/// In the world's run: does the disturbance of this number, from 0.
void disturb(uint8_t number, Script arguments, Scene& scene);

/// Plugs an iPod that is well into a platform that works.
void mend(Scene& scene);

/// Makes everything that can be told to fail known, and has the library's allocations asked.
void prepareFailures();
