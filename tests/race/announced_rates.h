#pragma once

#include <memory>

#include "race/stoppable_thread.h"
#include "support/session_ipod.h"

namespace race {

/// While the thread lives, the iPod announces one sample rate after the other, at most `most`
/// times.
std::unique_ptr<StoppableThread> announceRates(session::SessionIpod& ipod, int most);

}  // namespace race
