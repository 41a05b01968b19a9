#include "race/slow_audio.h"

#include <dlfcn.h>
#include <isochplay.h>

#include <atomic>
#include <thread>

namespace {

using std::chrono::milliseconds;

std::atomic<milliseconds> slowness{milliseconds(0)};
std::atomic<int> inside{0};

// Searched for before the library is loaded. The thread that unloads the library holds the loader
// lock while it waits for the reader, and a search would need that lock.
const auto selectFrequency =
    reinterpret_cast<decltype(::SelectFrequency)*>(dlsym(RTLD_NEXT, "SelectFrequency"));

}  // namespace

extern "C" int WINAPI SelectFrequency(int sampleRate) {
  ++inside;
  std::this_thread::sleep_for(slowness.load());
  const int result = selectFrequency(sampleRate);
  --inside;
  return result;
}

namespace race {

SlowAudio::SlowAudio(milliseconds duration) { slowness = duration; }

SlowAudio::~SlowAudio() { slowness = milliseconds(0); }

bool SlowAudio::isBusy() { return inside > 0; }

}  // namespace race
