// Says what went wrong in a trace.
#pragma once

#include <string>
#include <vector>

#include "iaptrace/check_findings.h"

namespace iaptrace::checking {

/// Applies all rules.
Diagnosis diagnose(const trace::Trace& records);

/// Returns the diagnosis as it is printed.
std::string textOf(const Diagnosis& diagnosis);

}  // namespace iaptrace::checking
