#include <windows.h>

#include "windows/own_import.h"

OWN_IMPORT(CloseHandle);
OWN_IMPORT(CreateFileW);
OWN_IMPORT(CreateSemaphoreW);
OWN_IMPORT(CreateThread);
OWN_IMPORT(FlushFileBuffers);
OWN_IMPORT(GetCommState);
OWN_IMPORT(GetCommTimeouts);
OWN_IMPORT(GetLastError);
OWN_IMPORT(ReadFile);
OWN_IMPORT(ReleaseSemaphore);
OWN_IMPORT(SetCommState);
OWN_IMPORT(SetCommTimeouts);
OWN_IMPORT(Sleep);
OWN_IMPORT(WaitForSingleObject);
OWN_IMPORT(WriteFile);
