#include "race/slow_audio.h"

#include <dlfcn.h>
#include <isochplay.h>

#include <atomic>
#include <thread>

namespace {

using std::chrono::milliseconds;

std::atomic<milliseconds> slowness{milliseconds(0)};
std::atomic<int> inside{0};

}  // namespace

extern "C" int WINAPI SelectFrequency(int sampleRate) {
  static const auto select =
      reinterpret_cast<decltype(::SelectFrequency)*>(dlsym(RTLD_NEXT, "SelectFrequency"));
  ++inside;
  std::this_thread::sleep_for(slowness.load());
  const int result = select(sampleRate);
  --inside;
  return result;
}

namespace race {

SlowAudio::SlowAudio(milliseconds duration) { slowness = duration; }

SlowAudio::~SlowAudio() { slowness = milliseconds(0); }

bool SlowAudio::isBusy() { return inside > 0; }

}  // namespace race
