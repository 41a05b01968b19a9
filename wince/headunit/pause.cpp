#include "headunit/pause.h"

#include <windows.h>

void waitMilliseconds(int milliseconds) { Sleep(static_cast<DWORD>(milliseconds)); }
