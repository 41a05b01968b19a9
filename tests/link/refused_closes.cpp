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

/// Stands in front of the platform's.
BOOL WINAPI CloseHandle(HANDLE object) {
  static const auto platformsClose =
      reinterpret_cast<CloseFunction>(dlsym(RTLD_NEXT, "CloseHandle"));
  const BOOL closed = platformsClose(object);
  if (closed == FALSE && object != nullptr) ++refused;
  return closed;
}
