// The image's entry point, and the small part of the C++ runtime that the library needs. coredll
// has memory, strings and streams.
#include <windows.h>

#include "runtime/static_objects.h"

extern "C" BOOL WINAPI DllMain(HINSTANCE module, DWORD reason, LPVOID reserved);

/// The system's loader calls this. Global objects are constructed before the attach and destroyed
/// after the detach.
extern "C" BOOL WINAPI _DllMainCRTStartup(HINSTANCE module, DWORD reason, LPVOID reserved) {
  if (reason == DLL_PROCESS_ATTACH) buildStaticObjects();
  const BOOL isDone = DllMain(module, reason, reserved);
  const bool isRefused = reason == DLL_PROCESS_ATTACH && !isDone;
  if (reason == DLL_PROCESS_DETACH || isRefused) destroyStaticObjects();
  return isDone;
}
