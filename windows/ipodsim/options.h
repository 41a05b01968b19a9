#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "console/listen_place.h"
#include "device/personality.h"

namespace simulator {

/// The options of ipodsim's command line on Windows.
struct Options {
  ListenPlace place;
  std::filesystem::path library;  ///< a JSON file; empty: none given
  std::optional<size_t> tracks;
  Personality personality;
  std::vector<std::string> faults;  ///< already checked
  uint32_t seed = 1;
  bool trace = false;
  bool quiet = false;
};

/// Parses the command line. Returns no value when a help text was printed and the program has
/// nothing more to do. Throws std::invalid_argument with a message for the user.
std::optional<Options> parseOptions(int argc, const char* const* argv);

}  // namespace simulator
