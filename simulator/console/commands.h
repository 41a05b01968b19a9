#pragma once

#include <string>

#include "link/pty_ipod.h"

namespace simulator {

/// The result of a typed command.
struct CommandResult {
  std::string answer;  ///< for the user; can be empty
  bool quit = false;
};

/// Runs the command of a line. The answer to an unknown command says how to find help.
CommandResult doCommand(PtyIpod& pty, const std::string& line);

}  // namespace simulator
