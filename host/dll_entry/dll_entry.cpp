// Gives a shared object the calls of DllMain that a DLL gets. Linked into the object whose DllMain
// it is, behind everything that has static objects.
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

// Static objects are built in the order of the link line and destroyed in the opposite one: this
// one is built last. A program that loaded the module and ends destroys it first.
const struct Attachment {
  Attachment() { attach(); }
  Attachment(const Attachment&) = delete;
  Attachment& operator=(const Attachment&) = delete;
  ~Attachment() { detach(); }
} attachment;

// Destructor functions run before the module's static objects go, those too that were built while
// it was in use: at dlclose, and at the end of a program that is linked to the module.
__attribute__((destructor)) void leave() { detach(); }

}  // namespace
