// The linker puts these before the platform's function: see --wrap.

#include <windows.h>

#include "support/require.h"

extern "C" BOOL __real_CloseHandle(HANDLE object);

/// On a device the number of a handle that is closed twice may be another one's by then.
extern "C" BOOL __wrap_CloseHandle(HANDLE object) {
  const BOOL wasOpen = __real_CloseHandle(object);
  require(wasOpen != FALSE || object == nullptr, "a handle is closed that is not open");
  return wasOpen;
}
