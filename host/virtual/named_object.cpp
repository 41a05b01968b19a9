#include "named_object.h"

#include "call.h"
#include "coredll/handle_table.h"
#include "virtual_world.h"

namespace virtual_platform {

std::string NamedObject::name() {
  if (!givenName.empty()) return givenName;
  VirtualWorld* const world = VirtualWorld::current();
  if (world != nullptr && namedIn != world->id()) {
    namedIn = world->id();
    number = world->nextNumber(kindWord);
  }
  return kindWord + (" " + std::to_string(number));
}

void NamedObject::close() {
  beginCall();
  isClosed = true;
  note("CloseHandle(" + name() + ")");
}

void nameHandle(HANDLE handle, const std::string& name) {
  const coredll::Use<NamedObject> object(coredll::handles().enter(handle, NamedObject::kKinds));
  if (object) object->rename(name);
}

}  // namespace virtual_platform
