// The linker puts these before the platform's function: see --wrap.

#include <windows.h>

#include "support/require.h"

extern "C" BOOL __real_CloseHandle(HANDLE object);

/// A handle must not be closed twice: on a device its value may by then be that of another handle.
extern "C" BOOL __wrap_CloseHandle(HANDLE object) {
  const BOOL wasOpen = __real_CloseHandle(object);
  require(wasOpen != FALSE || object == nullptr, "a handle is closed that is not open");
  return wasOpen;
}
