#include <windows.h>

BOOL WINAPI DisableThreadLibraryCalls(HMODULE) { return TRUE; }
