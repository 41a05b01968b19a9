// Converts a serial line's settings between the platform's and the kernel's form.
#pragma once

#include <termios.h>
#include <windows.h>

#include <string>

namespace coredll {

/// Sets speed, byte size, parity and stop bits as `state` says. Returns false when a line cannot
/// have these; `line` may then be partly changed.
bool putLineSettings(const DCB& state, termios& line);

/// Returns whether a line can have this speed, in baud.
bool isUsualSpeed(DWORD speed);
/// Returns all of them, with blanks between them.
std::string usualSpeeds();
/// Sets the speed, one that a line can have, 8 data bits, one stop bit and no parity.
void putSpeed(DWORD speed, termios& line);

/// Sets `state` as `line` says. An unusual speed becomes 0.
void getLineSettings(const termios& line, DCB& state);

/// Returns whether the two differ only in settings that a port can change.
bool differInSettingsOnly(const DCB& wanted, const DCB& current);

}  // namespace coredll
