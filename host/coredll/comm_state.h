// A serial line's settings, in the platform's words and in the kernel's.
#ifndef COREDLL_COMM_STATE_H
#define COREDLL_COMM_STATE_H

#include <termios.h>
#include <windows.h>

namespace coredll {

// Sets speed, byte size, parity and stop bits as `state` says. False, with `line` perhaps half
// changed, when a line cannot have these.
bool putLineSettings(const DCB& state, termios& line);

// The other way round; a speed that is not among the usual ones is 0.
void getLineSettings(const termios& line, DCB& state);

// Whether the two differ in nothing but what a port can be asked to change.
bool differInSettingsOnly(const DCB& wanted, const DCB& current);

}  // namespace coredll

#endif
