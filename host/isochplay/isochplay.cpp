#include "isochplay.h"

#include <atomic>
#include <cstddef>
#include <cstdio>
#include <initializer_list>
#include <iterator>

#include "common/guarded_sink.h"
#include "include/desk.h"
#include "isochplay_desk.h"
#include "sound.h"

namespace {

constexpr std::size_t kTextSize = 128;
constexpr int kFailed = -1;

std::atomic<int> results[] = {0, 0, 0, 0, 0, 1};
static_assert(std::size(results) == kIpodAudioPresent + 1, "a result for each function");

constexpr const char* kNames[] = {
    "SelectZeroBandwithInterface",
    "SelectFullBandwithInterface",
    "StartIpodAudioPlay",
    "StopIpodAudioPlay",
    "SelectFrequency",
    "IpodAudioPresent",
};
static_assert(std::size(kNames) == std::size(results), "a name for each function");

/// Never destroyed: threads may still play while the process ends.
GuardedSink<IsochplaySink>& sink() {
  static auto& callSink = *new GuardedSink<IsochplaySink>;
  return callSink;
}

IsochplayCall callOf(IsochplayFunction function, const char* text) {
  IsochplayCall call = {};
  call.function = function;
  call.text = text;
  return call;
}

/// `values` are the call's arguments, for a trace.
int tell(const IsochplayCall& call, std::initializer_list<int> values = {}) {
  deskTraceAudio(kNames[call.function], values.begin(), static_cast<unsigned>(values.size()));
  const int result = results[call.function];
  if (result != kFailed) passToSound(call);
  if (!sink().call(&call)) std::fprintf(stderr, "isochplay: %s\n", call.text);
  return result;
}

}  // namespace

int WINAPI SelectZeroBandwithInterface() {
  return tell(callOf(kSelectZeroBandwithInterface, "SelectZeroBandwithInterface()"));
}

int WINAPI SelectFullBandwithInterface() {
  return tell(callOf(kSelectFullBandwithInterface, "SelectFullBandwithInterface()"));
}

int WINAPI StartIpodAudioPlay(const WAVEFORMATEX* format) {
  char text[kTextSize] = "StartIpodAudioPlay(no format)";
  if (format != nullptr) {
    std::snprintf(text, sizeof text, "StartIpodAudioPlay(%u Hz, %u channels, %u bits)",
                  unsigned{format->nSamplesPerSec}, unsigned{format->nChannels},
                  unsigned{format->wBitsPerSample});
  }
  IsochplayCall call = callOf(kStartIpodAudioPlay, text);
  call.format = format;
  if (format == nullptr) return tell(call);
  return tell(
      call, {static_cast<int>(format->nSamplesPerSec), format->nChannels, format->wBitsPerSample});
}

int WINAPI StopIpodAudioPlay() { return tell(callOf(kStopIpodAudioPlay, "StopIpodAudioPlay()")); }

int WINAPI SelectFrequency(int sampleRate) {
  char text[kTextSize];
  std::snprintf(text, sizeof text, "SelectFrequency(%d Hz)", sampleRate);
  IsochplayCall call = callOf(kSelectFrequency, text);
  call.sampleRate = sampleRate;
  return tell(call, {sampleRate});
}

int WINAPI IpodAudioPresent(int first, int second, int third, int fourth) {
  char text[kTextSize];
  std::snprintf(text, sizeof text, "IpodAudioPresent(%d, %d, %d, %d)", first, second, third,
                fourth);
  IsochplayCall call = callOf(kIpodAudioPresent, text);
  call.words[0] = first;
  call.words[1] = second;
  call.words[2] = third;
  call.words[3] = fourth;
  return tell(call, {first, second, third, fourth});
}

void isochplaySetSink(IsochplaySink newSink, void* context) { sink().set(newSink, context); }

void isochplaySetResult(IsochplayFunction function, int result) {
  if (static_cast<std::size_t>(function) < std::size(results)) results[function] = result;
}
