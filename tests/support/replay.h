#pragma once

#include <string>
#include <vector>

/// A case is one exact run, which its name reproduces: VIRTUAL_CASE=<name> runs only that case and
/// shows the calls of the platform. A name that no case has is a failure.
namespace virtual_session {

/// Returns whether only one case is to be run.
bool isReplay();

/// Returns the name of the only case to be run, or "" if all are to be run.
std::string replayedCase();

/// Returns whether this case is to be run.
bool isWanted(const std::string& name);

/// Prints the calls of the platform if only one case is run.
void showReplay(const std::vector<std::string>& trace);

/// Returns the command that runs a case of the current test again. It contains the settings that
/// choose the number of cases: with others, there may be no case of this name.
std::string replayCommand(const std::string& name);

}  // namespace virtual_session
