#include <windows.h>

#include <cstdlib>

#include "entry_events.h"

BOOL WINAPI DllMain(HINSTANCE module, DWORD reason, LPVOID reserved) {
  if (module == nullptr || reserved != nullptr) entryEvent("wrong arguments");
  if (reason == DLL_PROCESS_ATTACH) entryEvent("attach");
  if (reason == DLL_PROCESS_DETACH) entryEvent("detach");
  return std::getenv("REFUSE_TO_ATTACH") == nullptr ? TRUE : FALSE;
}
