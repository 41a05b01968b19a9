#pragma once

#include <string>

#include "link/pty_ipod.h"

namespace simulator {

/// What a person types while the iPod runs.
struct CommandResult {
  std::string answer;  ///< for the person; can be empty
  bool quit = false;
};

/// Does what a line says; a line that says nothing that is known is answered with how to find help.
CommandResult doCommand(PtyIpod& pty, const std::string& line);

}  // namespace simulator
