#pragma once

#include "virtual/host.h"

namespace virtual_session {

/// Walks every kind of list of the reference library, and plays from it by steps.
void browseEverything(Host& host);

}  // namespace virtual_session
