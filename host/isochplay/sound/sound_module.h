// What the audio library loads when sound is wanted.
#pragma once

#include "isochplay_desk.h"

constexpr char kSoundModule[] = "libisochplay_sound.so";
constexpr char kSoundModuleEntry[] = "isochplaySound";

/// Receives each call, on the calling thread. `wanted` is the value of IPODCTL_AUDIO in calls that
/// select a bandwidth; it may be empty. Never blocks.
using IsochplaySoundCall = void (*)(const IsochplayCall* call, const char* wanted);
