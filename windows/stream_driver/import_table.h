#pragma once

#include <windows.h>

/// Replaces a function that a loaded module imports with the one at another address. Returns false
/// when the module imports no function of that name.
bool replaceImport(HMODULE module, const char* name, ULONG_PTR address);
