// Says what went wrong in a trace.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "iaptrace/check_findings.h"

namespace iaptrace::checking {

/// Returns the lines of a trace's text in which a recorder says that it lost lines: it could not
/// write them fast enough, or at all.
std::vector<size_t> gapsIn(std::string_view text);

/// Applies all rules. Nothing is concluded from what is missing at one of the gaps.
Diagnosis diagnose(const trace::Trace& records, const std::vector<size_t>& gaps = {});

/// Returns the diagnosis as it is printed.
std::string textOf(const Diagnosis& diagnosis);

}  // namespace iaptrace::checking
