#pragma once

#include <windows.h>

/// Lets a loaded module call what is at another address in place of a function that it imports;
/// false when it imports none of that name.
bool replaceImport(HMODULE module, const char* name, ULONG_PTR address);
