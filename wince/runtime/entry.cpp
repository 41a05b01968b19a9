// The image's entry point, and the little that a C++ library needs of a runtime. Memory, strings
// and streams come from coredll.
#include <windows.h>

#include "runtime/static_objects.h"

extern "C" BOOL WINAPI DllMain(HINSTANCE module, DWORD reason, LPVOID reserved);

/// Called by the system's loader: global objects live from before the attach to after the detach.
extern "C" BOOL WINAPI _DllMainCRTStartup(HINSTANCE module, DWORD reason, LPVOID reserved) {
  if (reason == DLL_PROCESS_ATTACH) buildStaticObjects();
  const BOOL isDone = DllMain(module, reason, reserved);
  const bool isRefused = reason == DLL_PROCESS_ATTACH && !isDone;
  if (reason == DLL_PROCESS_DETACH || isRefused) destroyStaticObjects();
  return isDone;
}
