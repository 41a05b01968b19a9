/*
 * The platform's audio library: it streams the iPod's digital audio from the USB isochronous
 * endpoint to the head unit's speakers. It is closed; these are the six functions that ipodctl
 * calls.
 */
#pragma once

#include <windows.h>

#include <mmsystem.h>

#ifdef __cplusplus
extern "C" {
#endif

/* Select the USB interface without, or with, bandwidth reserved for audio. */
int WINAPI SelectZeroBandwithInterface(void);
int WINAPI SelectFullBandwithInterface(void);

/* Starts streaming in the given format. Returns -1 when the stream cannot start. */
int WINAPI StartIpodAudioPlay(const WAVEFORMATEX* format);
int WINAPI StopIpodAudioPlay(void);

/* Follows a new sample rate (Hz) while streaming. */
int WINAPI SelectFrequency(int sampleRate);

/* Asks the audio driver about the iPod's audio; the driver defines what the four words mean.
 */
int WINAPI IpodAudioPresent(int first, int second, int third, int fourth);

#ifdef __cplusplus
}
#endif
