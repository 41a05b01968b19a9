#pragma once

/// Ends the process with a status.
[[noreturn]] void endProgram(int status);

/// The program. Returns its status.
int runProgram();
