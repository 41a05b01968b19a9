#pragma once

#include <cstdint>
#include <string>

#include "support/script.h"

/// The library's exports, called as a script says: with any numbers, and with null or buffers of
/// exactly the stated size.

constexpr uint8_t kExports = 35;

/// Calls the export of this number, from 0. Ends the program when the result, or what it writes, is
/// not what ipodctl.h promises.
void callExport(uint8_t number, Script arguments);

const char* exportName(uint8_t number);

/// Returns whether the call requests every track's name until the group changes. Such a call takes
/// longer with a longer list.
bool isGroupStep(uint8_t number, Script arguments);
