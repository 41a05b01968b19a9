#include "named_object.h"

#include "call.h"
#include "virtual_world.h"

namespace virtual_platform {

void NamedObject::meet() {
  VirtualWorld* const world = VirtualWorld::current();
  if (world == nullptr || namedIn == world->id() || !givenName.empty()) return;
  namedIn = world->id();
  number = world->nextNumber(kindWord);
}

std::string NamedObject::name() {
  if (!givenName.empty()) return givenName;
  meet();
  return kindWord + (" " + std::to_string(number));
}

void NamedObject::close() {
  beginCall();
  isClosed = true;
  meet();
  note([this] { return "CloseHandle(" + name() + ")"; });
}

void nameHandle(HANDLE handle, const std::string& name) {
  const coredll::Use<NamedObject> object(coredll::handles().enter(handle, NamedObject::kKinds));
  if (object) object->rename(name);
}

}  // namespace virtual_platform
