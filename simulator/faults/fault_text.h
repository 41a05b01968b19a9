#pragma once

#include <string>
#include <vector>

#include "faults/fault_plan.h"

namespace simulator {

/// Adds the fault that the user wrote to the plan:
///
///     KIND[=VALUE[/VALUE2]][@LINGO:COMMAND[#N|#N+]]     one fault
///     random=PERCENT[/KIND,KIND...]                     faults at random
///
/// LINGO and COMMAND are hexadecimal and name the request that is answered, or an unsolicited
/// message of the iPod; `*` is any. #N is the N-th reply, #N+ every reply from the N-th on, and
/// without either it is every reply. Values are decimal, or hexadecimal with 0x, or negative.
/// Throws std::invalid_argument with a message for the user.
void addFault(FaultPlan& plan, const std::string& text);

/// Parses a text of the first form. Throws like addFault().
Fault parseFault(const std::string& text);

/// Returns a fault in the first form, for example "late=200@04:001A#3".
std::string faultText(const Fault& fault);

/// Returns the faults of a plan as addFault() accepts them.
std::vector<std::string> faultTexts(const FaultPlan& plan);

/// Returns a table of every kind of fault and how to write it, for a help text.
std::string faultHelp();

}  // namespace simulator
