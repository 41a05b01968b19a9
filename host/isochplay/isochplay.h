/*
 * The platform's audio library: it streams the iPod's digital audio from the USB isochronous
 * endpoint to the head unit's speakers. It is closed; these are the six functions that ipodctl
 * calls.
 */
#ifndef ISOCHPLAY_H
#define ISOCHPLAY_H

#include <windows.h>

#include <mmsystem.h>

#ifdef __cplusplus
extern "C" {
#endif

/* Choose the USB interface without, or with, bandwidth reserved for audio. */
int WINAPI SelectZeroBandwithInterface(void);
int WINAPI SelectFullBandwithInterface(void);

/* Starts streaming in the given format. -1 when the stream cannot start. */
int WINAPI StartIpodAudioPlay(const WAVEFORMATEX* format);
int WINAPI StopIpodAudioPlay(void);

/* Follows a new sample rate (Hz) while streaming. */
int WINAPI SelectFrequency(int sampleRate);

/* Asks the audio driver about the iPod's audio; what the four words mean is the driver's business.
 */
int WINAPI IpodAudioPresent(int first, int second, int third, int fourth);

#ifdef __cplusplus
}
#endif

#endif
