#pragma once

#include <string>
#include <vector>

/// A case is one exact run, which its name brings back: VIRTUAL_CASE=<name> runs that one alone,
/// the same again, and shows what the platform was asked. A name that no case has is a failure.
namespace virtual_session {

/// Whether one case is to be run alone.
bool isReplay();

/// The case that is to be run alone; "" when it is all of them.
std::string replayedCase();

/// Whether this case is among those that are to be run.
bool isWanted(const std::string& name);

/// Prints what the platform was asked, in a replay.
void showReplay(const std::vector<std::string>& trace);

/// The command that runs a case of the present test again. It says how many cases the test had,
/// too: among fewer there may be none of this name.
std::string replayCommand(const std::string& name);

}  // namespace virtual_session
