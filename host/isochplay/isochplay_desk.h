/*
 * The functions of the Linux host's audio library that the platform's does not have: a host program
 * or a test can receive the calls and set their results. Without a sink the library writes each
 * call to stderr, for example isochplay: StartIpodAudioPlay(44100 Hz, 2 channels, 16 bits) All
 * functions may be called on any thread.
 *
 * On Linux the environment variable IPODCTL_AUDIO says where the sound of a simulated iPod is
 * played. The calls that select a bandwidth read it. Without it there is no sound.
 *   IPODCTL_AUDIO=alsa      the default sound card; alsa:NAME is another device of ALSA
 *   IPODCTL_AUDIO=FILE.wav  a file, which gets the rate of the first StartIpodAudioPlay
 * As on the device, samples are played at the rate that StartIpodAudioPlay or SelectFrequency set
 * last. There is silence without the full bandwidth, and until StartIpodAudioPlay is called after
 * it. What fails is a line on stderr, once.
 */
#pragma once

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
  const char* text; /* "SelectFrequency(48000 Hz)"; valid during the call of the sink */
  const WAVEFORMATEX*
      format;     /* StartIpodAudioPlay's, NULL without one; valid as long as the text */
  int sampleRate; /* SelectFrequency's, in Hz */
  int words[4];   /* IpodAudioPresent's */
} IsochplayCall;

/* Receives one call on the calling thread, before its result is returned. Must not block. */
typedef void (*IsochplaySink)(void* context, const IsochplayCall* call);

/*
 * Passes every call from now on to `sink` instead of writing it to stderr (NULL: to stderr, as at
 * the start). When it returns, no call of the previous sink is running. The sink must not call it.
 */
void isochplaySetSink(IsochplaySink sink, void* context);

/*
 * Sets what a function returns from now on. At the start IpodAudioPresent returns 1 (the iPod's
 * audio is there) and every other one 0. A value that is not an IsochplayFunction changes nothing.
 */
void isochplaySetResult(IsochplayFunction function, int result);

#ifdef __cplusplus
}
#endif
