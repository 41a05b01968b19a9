#include "link/transport_registry.h"

#include <algorithm>

#include "link/transport.h"

namespace ipodctl {

TransportRegistry& TransportRegistry::instance() {
  // The first transport creates it. It is therefore destroyed after the last transport of static
  // storage duration.
  static TransportRegistry registry;
  return registry;
}

TransportRegistry::TransportRegistry() { registryGuard.ensure(); }

bool TransportRegistry::add(Transport* transport) {
  if (!registryGuard.ensure()) return false;
  const SemaphoreHold hold(registryGuard);
  const bool known = std::find(transportRegistry.begin(), transportRegistry.end(), transport) !=
                     transportRegistry.end();
  return known || transportRegistry.append(transport);
}

void TransportRegistry::remove(Transport* transport) {
  const SemaphoreHold hold(registryGuard);
  for (uint32_t i = 0; i < transportRegistry.size(); ++i) {
    if (transportRegistry[i] == transport) {
      transportRegistry.removeAt(i);
      return;
    }
  }
}

void TransportRegistry::releaseReaderLocks() {
  registryGuard.give();
  for (Transport* transport : transportRegistry)
    transport->releaseReaderLocks();
}

void TransportRegistry::closeAll() {
  const SemaphoreHold hold(registryGuard);
  for (Transport* transport : transportRegistry)
    transport->close();
}

}  // namespace ipodctl
