// What the handles of the deterministic platform refer to.
#pragma once

#include <windows.h>

#include <cstdint>
#include <string>

#include "coredll/handle_table.h"

namespace virtual_platform {

/// An object with a name for traces: the name has the number of the object among those of its kind,
/// in the order in which the world meets them. It does not depend on the handle's value.
class NamedObject : public coredll::KernelObject {
 public:
  NamedObject(coredll::ObjectKind ownKind, const char* word)
      : KernelObject(ownKind), kindWord(word) {}

  /// Gives the object its number in the running world, unless it has one.
  void meet();
  std::string name();
  /// Sets the name in every world from now on.
  void rename(const std::string& name) { givenName = name; }
  void close() override;

 protected:
  bool isClosed = false;

 private:
  const char* const kindWord;
  std::uint64_t namedIn = 0;  ///< the world's id
  unsigned number = 0;
  std::string givenName;
};

/// Does nothing for a handle that is not open.
void nameHandle(HANDLE handle, const std::string& name);

}  // namespace virtual_platform
