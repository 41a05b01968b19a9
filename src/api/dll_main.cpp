#include <windows.h>

/// The library's entry point. Its globals are built before the attach and destroyed after the
/// detach; threads that come and go do not concern it.
extern "C" BOOL WINAPI DllMain(HINSTANCE module, DWORD reason, LPVOID) {
  if (reason == DLL_PROCESS_ATTACH) DisableThreadLibraryCalls(module);
  return TRUE;
}
