#pragma once

#include <string>

#include "faults/fault.h"

namespace simulator {

/// Where on the way of a message a fault strikes.
enum class FaultStage { kReply, kListing, kCount, kCable };

/// One kind of fault, as a person writes it and as the plan uses it.
struct FaultRow {
  FaultKind kind;
  FaultStage stage;
  const char* name;
  const char* values;  ///< what the numbers are, in brackets if they may be left out; empty: none
  const char* meaning;
  bool survivable;  ///< a host that only checks what it receives gets along with it
};

const FaultRow& faultRow(FaultKind kind);
/// The row of a name, or null.
const FaultRow* findFaultRow(const std::string& name);
/// All rows, in the order of FaultKind.
const FaultRow* faultRowsBegin();
const FaultRow* faultRowsEnd();

}  // namespace simulator
