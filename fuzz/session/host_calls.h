#pragma once

#include <cstdint>
#include <string>

#include "support/script.h"

/// The library's exports, called as a script says: with any numbers, and with buffers that are
/// exactly as large as the library is told, or null.

constexpr uint8_t kExports = 35;

/// Calls the export of this number, from 0. Ends the program when the result, or what it writes, is
/// not what ipodctl.h promises.
void callExport(uint8_t number, Script arguments);

const char* exportName(uint8_t number);

/// Whether the call asks for every track's name until the group changes: it lasts as long as the
/// list that it was told of.
bool isGroupStep(uint8_t number, Script arguments);
