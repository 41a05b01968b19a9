/* The wave format record of the platform's multimedia interface: CE's layout, packed to 18 bytes.
 */
#pragma once

#include <windows.h>

#define WAVE_FORMAT_PCM 1

#pragma pack(push, 1)
typedef struct tWAVEFORMATEX {
  WORD wFormatTag;
  WORD nChannels;
  DWORD nSamplesPerSec;
  DWORD nAvgBytesPerSec;
  WORD nBlockAlign;
  WORD wBitsPerSample;
  WORD cbSize;
} WAVEFORMATEX, *LPWAVEFORMATEX;
#pragma pack(pop)
