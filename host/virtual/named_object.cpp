#include "named_object.h"

#include "call.h"
#include "virtual_world.h"

namespace virtual_platform {

std::string NamedObject::name() {
  VirtualWorld* const world = VirtualWorld::current();
  if (world != nullptr && namedIn != world->id()) {
    namedIn = world->id();
    number = world->nextNumber(kind);
  }
  return kind + (" " + std::to_string(number));
}

void NamedObject::close() {
  beginCall();
  isClosed = true;
  note("CloseHandle(" + name() + ")");
}

}  // namespace virtual_platform
