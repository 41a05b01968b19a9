#pragma once

#include "session/scene.h"
#include "support/script.h"

/// The disturbances of a session: of the cable, the bytes, the iPod and the platform.

constexpr uint8_t kDisturbances = 20;

/// Causes the disturbance of this number, from 0. Called while the world runs.
void disturb(uint8_t number, Script arguments, Scene& scene);

/// Plugs a healthy iPod into a working platform.
void mend(Scene& scene);

/// Registers everything that can fail on demand, the library's allocations included.
void prepareFailures();
