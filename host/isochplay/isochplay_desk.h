/*
 * What the desk's audio library offers beyond the platform's: a host program or a test can receive
 * the calls and set their results. There is no sound on the desk; without a sink the library says
 * each call in a line on stderr, such as isochplay: StartIpodAudioPlay(44100 Hz, 2 channels, 16
 * bits) All functions may be called on any thread.
 */
#ifndef ISOCHPLAY_DESK_H
#define ISOCHPLAY_DESK_H

#include <isochplay.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef enum IsochplayFunction {
  kSelectZeroBandwithInterface,
  kSelectFullBandwithInterface,
  kStartIpodAudioPlay,
  kStopIpodAudioPlay,
  kSelectFrequency,
  kIpodAudioPresent
} IsochplayFunction;

typedef struct IsochplayCall {
  IsochplayFunction function;
  const char* text;           /* "SelectFrequency(48000 Hz)"; the sink's for the time of the call */
  const WAVEFORMATEX* format; /* StartIpodAudioPlay's, NULL without one; as long as the text */
  int sampleRate;             /* SelectFrequency's, in Hz */
  int words[4];               /* IpodAudioPresent's */
} IsochplayCall;

/* Receives one call on the calling thread, before its result is returned. Must not block. */
typedef void (*IsochplaySink)(void* context, const IsochplayCall* call);

/*
 * Hands every call from now on to `sink` in place of the line on stderr (NULL: to stderr, as at the
 * start). When it returns, no call of the sink before is running any more; the sink must not call
 * it.
 */
void isochplaySetSink(IsochplaySink sink, void* context);

/*
 * Sets what a function returns from now on. At the start IpodAudioPresent returns 1 (the iPod's
 * audio is there) and every other one 0. A value that is no IsochplayFunction changes nothing.
 */
void isochplaySetResult(IsochplayFunction function, int result);

#ifdef __cplusplus
}
#endif

#endif
