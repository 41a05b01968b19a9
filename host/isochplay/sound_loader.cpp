// Loads the sound when it is wanted for the first time, so that other programs need none of its
// libraries.
#include <dlfcn.h>

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <mutex>
#include <string>

#include "sound.h"
#include "sound/sound_module.h"

namespace {

std::atomic<IsochplaySoundCall> loaded{nullptr};

/// Returns the path of a file in the folder of this library.
std::string inThisFolder(const char* file) {
  Dl_info info = {};
  if (dladdr(reinterpret_cast<const void*>(&passToSound), &info) == 0) return file;
  const std::string self = info.dli_fname;
  return self.substr(0, self.rfind('/') + 1) + file;
}

void load() {
  void* const module = dlopen(inThisFolder(kSoundModule).c_str(), RTLD_NOW | RTLD_LOCAL);
  void* const entry = module != nullptr ? dlsym(module, kSoundModuleEntry) : nullptr;
  if (entry == nullptr) {
    std::fprintf(stderr, "ipodctl: IPODCTL_AUDIO: there is no sound: %s\n", dlerror());
    return;
  }
  loaded = reinterpret_cast<IsochplaySoundCall>(entry);
}

bool mayChangeTheOutput(const IsochplayCall& call) {
  return call.function == kSelectFullBandwithInterface ||
         call.function == kSelectZeroBandwithInterface;
}

}  // namespace

void passToSound(const IsochplayCall& call) {
  static std::once_flag once;
  const char* wanted = "";
  if (mayChangeTheOutput(call)) {
    const char* const variable = std::getenv("IPODCTL_AUDIO");
    if (variable != nullptr) wanted = variable;
    if (*wanted != 0) std::call_once(once, load);
  }
  if (const IsochplaySoundCall sound = loaded) sound(&call, wanted);
}
