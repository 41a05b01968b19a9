#pragma once

#include <string>

#include "faults/fault_plan.h"

namespace simulator {

/// Adds to the plan what a person wrote:
///
///     KIND[=VALUE[/VALUE2]][@LINGO:COMMAND[#N|#N+]]     one fault
///     random=PERCENT[/KIND,KIND...]                     faults at random
///
/// LINGO and COMMAND are hexadecimal and name the request that is answered, or a message that the
/// iPod sends on its own; `*` is any. #N is the N-th reply, #N+ every reply from the N-th on, and
/// without either it is every reply. Values are decimal, or hexadecimal with 0x, or negative.
/// Throws std::invalid_argument with a text for a person.
void addFault(FaultPlan& plan, const std::string& text);

/// The fault that a text of the first form means. Throws like addFault().
Fault parseFault(const std::string& text);

/// A fault in the first form, for example "late=200@04:001A#3".
std::string faultText(const Fault& fault);

/// A table of every kind of fault and how to write it, for a help text.
std::string faultHelp();

}  // namespace simulator
