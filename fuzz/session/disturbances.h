#pragma once

#include "session/hostile_cable.h"
#include "support/script.h"
#include "virtual/virtual_session.h"

/// What happens to a session beside the host's calls: to the cable, to the bytes, to the iPod and to
/// the platform.

constexpr uint8_t kDisturbances = 17;

/// In the session's run: does the disturbance of this number, from 0.
void disturb(uint8_t number, Script arguments, virtual_session::VirtualSession& session,
             HostileCable& cable);

/// Makes everything that can be told to fail known, and has the library's allocations asked.
void prepareFailures();
