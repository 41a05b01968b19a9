// The command `ipodctl serve`: the head unit for pages and programs.
#pragma once

#include <string>

#include "ipodctl/doctor.h"

namespace tool {

struct ServeOptions {
  int port = 8730;                    ///< 0: any free one
  std::string address = "127.0.0.1";  ///< numeric
  std::string tokenFile;              ///< empty: a new token
  std::string control;                ///< the socket of ipodsim --control; empty: none
  std::string device;  ///< the end of the wire for IPD1:; empty: as IPODCTL_DEVICES says
  std::string logo;    ///< a picture to show on the iPod; empty: none
  std::string page;    ///< the folder of the page; empty: the one that is built in
  bool opensBrowser = false;
  bool usesMpris = false;  ///< be a media player on the session bus
  bool isQuiet = false;    ///< prints only where it is ready, and failures
};

/// Serves until SIGINT or SIGTERM.
ExitStatus runServe(const ServeOptions& options);

}  // namespace tool
