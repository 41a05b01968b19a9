// The sound of the Linux host's audio library.
#pragma once

#include "isochplay_desk.h"

/// Plays or records what the iPod sends, as the calls say, if the environment variable
/// IPODCTL_AUDIO asks for it (isochplay_desk.h). Otherwise it does nothing. On any thread.
void passToSound(const IsochplayCall& call);
