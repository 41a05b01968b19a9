#pragma once

#include <string>

#include "faults/fault.h"

namespace simulator {

/// The stage of a message at which a fault happens.
enum class FaultStage { kReply, kListing, kCount, kCable };

/// One kind of fault, as the user writes it and as the plan uses it.
struct FaultRow {
  FaultKind kind;
  FaultStage stage;
  const char* name;
  const char* values;  ///< the numbers, in brackets if they are optional; empty: none
  const char* meaning;
  bool survivable;  ///< a host that only checks what it receives survives it
};

const FaultRow& faultRow(FaultKind kind);
/// Returns the row of a name, or null.
const FaultRow* findFaultRow(const std::string& name);
/// Returns the first of all rows, in the order of FaultKind.
const FaultRow* faultRowsBegin();
const FaultRow* faultRowsEnd();

}  // namespace simulator
