#include "runtime/static_objects.h"

#include <cstddef>

using Initialiser = void (*)();

/// The linker script sets these to the range of the initialisers.
extern "C" const Initialiser initialisersBegin[];
extern "C" const Initialiser initialisersEnd[];

namespace {

struct Destruction {
  void (*destroy)(void* object);
  void* object;
};

/// More than the number of the library's global objects. An object beyond it would not be
/// destroyed.
constexpr size_t kCapacity = 32;

Destruction destructions[kCapacity];
size_t destructionCount = 0;

}  // namespace

void buildStaticObjects() {
  for (const Initialiser* initialiser = initialisersBegin; initialiser != initialisersEnd;
       ++initialiser)
    (*initialiser)();
}

void destroyStaticObjects() {
  while (destructionCount > 0) {
    const Destruction& last = destructions[--destructionCount];
    last.destroy(last.object);
  }
}

/// The compiler's code calls this for each constructed global object.
extern "C" int __aeabi_atexit(void* object, void (*destroy)(void*), void*) {
  if (destructionCount == kCapacity) return -1;
  destructions[destructionCount++] = {destroy, object};
  return 0;
}

/// Identifies this image in calls of __aeabi_atexit.
extern "C" void* const __dso_handle = nullptr;
