#include "last_error.h"

namespace {

thread_local DWORD lastError = ERROR_SUCCESS;

}  // namespace

DWORD WINAPI GetLastError() { return lastError; }

void WINAPI SetLastError(DWORD error) { lastError = error; }
