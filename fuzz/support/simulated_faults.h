#pragma once

#include "faults/fault.h"
#include "support/script.h"

/// Returns a fault of the simulated iPod, of any kind and for any reply. Its numbers are small, so
/// that repetitions do not take the fuzzer's time.
simulator::Fault faultFrom(Script& script);
