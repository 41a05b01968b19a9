#pragma once

#include "faults/fault.h"
#include "support/script.h"

/// A fault of the simulated iPod, of any kind and for any reply. The numbers are kept so small that
/// the iPod does not spend the fuzzer's time on what it repeats.
simulator::Fault faultFrom(Script& script);
