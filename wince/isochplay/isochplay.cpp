// A silent audio library, with which ipodctl.dll can be loaded before the platform's isochplay.dll
// is there. Each call succeeds and plays nothing.
#include <isochplay.h>

int WINAPI SelectZeroBandwithInterface() { return 0; }
int WINAPI SelectFullBandwithInterface() { return 0; }
int WINAPI StartIpodAudioPlay(const WAVEFORMATEX*) { return 0; }
int WINAPI StopIpodAudioPlay() { return 0; }
int WINAPI SelectFrequency(int) { return 0; }

/// Returns that the iPod's audio is there: the program then goes on as with the platform's library.
int WINAPI IpodAudioPresent(int, int, int, int) { return 1; }

extern "C" BOOL WINAPI DllMain(HINSTANCE module, DWORD reason, LPVOID) {
  if (reason == DLL_PROCESS_ATTACH) DisableThreadLibraryCalls(module);
  return TRUE;
}
