// What stands behind the handles of the virtual platform.
#ifndef VIRTUAL_NAMED_OBJECT_H
#define VIRTUAL_NAMED_OBJECT_H

#include <windows.h>

#include <cstdint>
#include <string>

#include "coredll/kernel_object.h"

namespace virtual_platform {

// An object with a name for traces: it counts the objects of a kind in the order in which the world
// meets them, whatever the values of their handles are.
class NamedObject : public coredll::KernelObject {
 public:
  explicit NamedObject(const char* objectKind) : kind(objectKind) {}

  std::string name();
  // From now on in every world.
  void rename(const std::string& name) { givenName = name; }
  void close() override;

 protected:
  bool isClosed = false;

 private:
  const char* const kind;
  std::uint64_t namedIn = 0;  // the world's id
  unsigned number = 0;
  std::string givenName;
};

// Nothing for a handle that is not open.
void nameHandle(HANDLE handle, const std::string& name);

}  // namespace virtual_platform

#endif
