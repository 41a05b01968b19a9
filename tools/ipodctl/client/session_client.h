#pragma once

#include <memory>
#include <string>

#include "ipodctl/client/player_client.h"

namespace tool {

struct SessionOptions {
  std::string log;       ///< the file for the library's console lines; empty: none
  bool verbose = false;  ///< write them to standard error
};

/// Connects the iPod, and disconnects it with the object. Meanwhile standard output is the
/// library's. Throws CommandFailure when there is no iPod.
std::unique_ptr<PlayerClient> makeSessionClient(const SessionOptions& options);

}  // namespace tool
