#include "link/transport_registry.h"

#include <algorithm>

#include "link/transport.h"

namespace ipodctl {

TransportRegistry& TransportRegistry::instance() {
  // Made by the first transport, and so destroyed after the last one that lives as long as the
  // library.
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
