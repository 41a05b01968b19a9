#include "link/refused_closes.h"

#include <dlfcn.h>
#include <windows.h>

#include <atomic>

namespace ipodctl {
namespace {

std::atomic<int> refused{0};

using CloseFunction = BOOL(WINAPI*)(HANDLE);

}  // namespace

int refusedCloses() { return refused; }

}  // namespace ipodctl

using namespace ipodctl;

/// Replaces the platform's function and calls it.
BOOL WINAPI CloseHandle(HANDLE object) {
  static const auto platformsClose =
      reinterpret_cast<CloseFunction>(dlsym(RTLD_NEXT, "CloseHandle"));
  const BOOL closed = platformsClose(object);
  if (closed == FALSE && object != nullptr) ++refused;
  return closed;
}
