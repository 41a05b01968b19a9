#pragma once

#include <string>

/// A case is one exact run, which its name brings back: VIRTUAL_CASE=<name> runs that one alone,
/// the same again, and shows what the platform was asked.
namespace virtual_session {

/// Whether one case is to be run alone.
bool isReplay();

/// The case that is to be run alone; "" when it is all of them.
std::string replayedCase();

/// The command that runs a case of the present test again.
std::string replayCommand(const std::string& name);

}  // namespace virtual_session
