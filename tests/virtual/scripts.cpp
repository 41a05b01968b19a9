#include "virtual/scripts.h"

#include <stdexcept>

namespace virtual_session {

const Script& scriptCalled(const std::string& name) {
  for (const Script* const script : {&shortScript(), &referenceScript(), &serialScript()}) {
    if (name == script->name) return *script;
  }
  throw std::invalid_argument("no script " + name);
}

}  // namespace virtual_session
