#pragma once

namespace tool {

/// The exit statuses of the commands.
enum CommandStatus {
  kDone = 0,
  kFailed = 1,    ///< refused, or it failed
  kBadUsage = 2,  ///< a wrong command line
  kNoIpod = 3,
  kNoServe = 4,   ///< the command needs a running serve
  kNoAnswer = 5,  ///< the iPod did not answer in time
};

}  // namespace tool
