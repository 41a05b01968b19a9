// Calls the DllMain of a shared object as the system calls that of a DLL. Link it into the object
// that defines DllMain, after everything that has static objects.
#include <windows.h>

#include <cstdio>
#include <cstdlib>

namespace {

char module;
bool isAttached = false;

void attach() {
  if (!DllMain(&module, DLL_PROCESS_ATTACH, nullptr)) {
    std::fputs("DllMain refused to be attached to the process\n", stderr);
    std::abort();
  }
  isAttached = true;
}

void detach() {
  if (!isAttached) return;
  isAttached = false;
  DllMain(&module, DLL_PROCESS_DETACH, nullptr);
}

/// Static objects are constructed in the order of the link line and destroyed in the opposite
/// order. This one is constructed last, and a program that loaded the module and ends destroys it
/// first.
const struct Attachment {
  Attachment() { attach(); }
  Attachment(const Attachment&) = delete;
  Attachment& operator=(const Attachment&) = delete;
  ~Attachment() { detach(); }
} attachment;

/// Destructor functions run before the module's static objects are destroyed, also before those
/// that were constructed while it was in use: at dlclose, and at the end of a program that is
/// linked to the module.
__attribute__((destructor)) void leave() { detach(); }

}  // namespace
