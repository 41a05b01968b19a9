// The command `ipodctl doctor`: which step of a connection fails, and why.
#pragma once

#include <string>

namespace tool {

struct DoctorOptions {
  std::string device;  ///< the end of the wire for IPD1:; empty: as IPODCTL_DEVICES says
  std::string trace;   ///< the file to record to; empty: a new one among the temporary files
  bool probe = false;  ///< try other frames and speeds when the iPod does not answer
  bool yes = false;    ///< do not ask before the connection
};

enum ExitStatus { kHealthy = 0, kFault = 1, kWrongUsage = 2 };

/// Runs the short session with a recorder in a separate process, and prints the steps as they are
/// reached, the diagnosis and where the trace is.
ExitStatus runDoctor(const DoctorOptions& options);

}  // namespace tool
