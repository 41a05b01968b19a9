// headunit as a program for Windows CE. It has no options.
#include <windows.h>

#include "headunit/session.h"
#include "runtime/program.h"

int runProgram() { return static_cast<int>(runSession()); }
