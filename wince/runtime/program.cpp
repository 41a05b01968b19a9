// The entry point of a program, with the part of the C++ runtime that a program needs and the
// library does not.
#include "runtime/program.h"

#include <windows.h>

#include <cstdint>

#include "runtime/static_objects.h"

extern "C" {
BOOL WINAPI TerminateProcess(HANDLE process, DWORD status);
void WinMainCRTStartup(HINSTANCE program, HINSTANCE previous, WCHAR* commandLine, int show);
}

namespace {

/// The handle by which a process of this system names itself.
constexpr uintptr_t kThisProcess = 0x42;

}  // namespace

void endProgram(int status) {
  TerminateProcess(reinterpret_cast<HANDLE>(kThisProcess), static_cast<DWORD>(status));
  for (;;)
    Sleep(INFINITE);
}

/// The system's loader calls this on the program's first thread.
void WinMainCRTStartup(HINSTANCE, HINSTANCE, WCHAR*, int) {
  buildStaticObjects();
  const int status = runProgram();
  destroyStaticObjects();
  endProgram(status);
}
