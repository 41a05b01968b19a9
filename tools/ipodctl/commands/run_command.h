// The commands for shells and scripts: ipodctl status, ls, play, and so on.
#pragma once

#include <string>

#include "ipodctl/commands/exit_status.h"

namespace tool {

struct CommandOptions {
  std::string command;  ///< "status"
  std::string path;     ///< of ls and play
  std::string index;    ///< of play
  std::string mode;     ///< of shuffle and repeat; empty: print it
  std::string url;      ///< empty: the serve that this user has started
  std::string tokenFile;
  std::string device;   ///< the end of the wire for a session; empty: as IPODCTL_DEVICES says
  std::string format;   ///< empty: the command's own
  std::string log;      ///< for the library's console lines
  std::string picture;  ///< of logo
  std::string output;
  std::string preview;
  std::string model = "classic";
  int offset = 0;
  int count = 20;
  int lines = 0;  ///< of watch; 0: until Ctrl-C
  bool all = false;
  bool hold = false;
  bool json = false;
  bool verbose = false;
  bool remove = false;
};

/// Carries out one command and returns the program's exit status.
int runCommand(const CommandOptions& options);

/// Prints a failure in the form that the user wants, and returns its exit status.
int printFailure(bool json, int exitStatus, const std::string& code, const std::string& message);

}  // namespace tool
