#include "support/simulated_faults.h"

namespace {

using simulator::Fault;
using simulator::FaultKind;

constexpr uint16_t kMostRepeated = 300;
constexpr uint8_t kAny = 0xFF;

/// Returns whether the fault repeats something. Milliseconds and lengths need no limit.
bool isRepeated(FaultKind kind) {
  switch (kind) {
    case FaultKind::kNoise:
    case FaultKind::kNotificationsBefore:
    case FaultKind::kNotificationsBetween:
    case FaultKind::kShortListing:
    case FaultKind::kLongListing:
    case FaultKind::kDrift:
      return true;
    default:
      return false;
  }
}

}  // namespace

Fault faultFrom(Script& script) {
  Fault fault;
  fault.kind = static_cast<FaultKind>(script.byte() % simulator::kFaultKinds);
  const uint16_t value = script.word();
  fault.value = isRepeated(fault.kind) ? value % kMostRepeated : value;
  fault.value2 = script.word();
  const uint8_t lingo = script.byte();
  if (lingo != kAny) fault.target.lingo = lingo;
  const uint8_t command = script.byte();
  if (command != kAny) fault.target.command = command;
  fault.target.first = script.byte() + 1u;
  const uint8_t replies = script.byte();
  if (replies > 0) fault.target.last = fault.target.first + replies - 1u;
  return fault;
}
