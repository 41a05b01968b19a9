#include <windows.h>

#include "controller/call_log.h"

using namespace ipodctl;

/// Replaces the platform's function: the test takes no time and knows each pause.
void WINAPI Sleep(DWORD milliseconds) {
  callLog().push_back("sleep " + std::to_string(milliseconds));
}
