#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "device/personality.h"
#include "faults/fault_plan.h"

namespace simulator {

/// The options of ipodsim's command line.
struct Options {
  std::filesystem::path link = "/tmp/ipod";
  std::string device;         ///< a terminal; empty: a pseudo-terminal, or listenAddress
  unsigned baud = 57600;      ///< of the device
  std::string listenAddress;  ///< numeric; empty: no TCP port
  uint16_t listenPort = 0;    ///< 0: the system selects one
  bool serial = false;
  std::filesystem::path music;    ///< a folder; empty: none given
  std::filesystem::path library;  ///< a JSON file; empty: none given
  std::optional<size_t> tracks;
  std::filesystem::path screen;   ///< a PNG file; empty: none wanted
  std::string font;               ///< a file for the screen's texts; empty: one of the system
  std::filesystem::path control;  ///< a Unix socket; empty: none wanted
  Personality personality;
  std::vector<std::string> faults;  ///< already checked
  uint32_t seed = 1;
  std::string record;  ///< a trace file; empty: none wanted
  bool trace = false;
  bool quiet = false;
  bool interactive = false;
};

/// Parses the command line. Returns no value when a help text was printed and the program has
/// nothing more to do. Throws std::invalid_argument with a message for the user.
std::optional<Options> parseOptions(int argc, const char* const* argv);

}  // namespace simulator
