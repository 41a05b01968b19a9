#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "device/personality.h"
#include "faults/fault_plan.h"

namespace simulator {

/// What the command line of ipodsim asks for.
struct Options {
  std::filesystem::path link = "/tmp/ipod";
  bool serial = false;
  std::filesystem::path music;    ///< a folder; empty: none given
  std::filesystem::path library;  ///< a JSON file; empty: none given
  std::optional<size_t> tracks;
  std::filesystem::path screen;  ///< a PNG file; empty: none wanted
  Personality personality;
  std::vector<std::string> faults;  ///< known to be well written
  uint32_t seed = 1;
  bool trace = false;
  bool quiet = false;
  bool interactive = false;
};

/// Takes the command line; no value when the program has nothing more to do because a help text was
/// printed. Throws std::invalid_argument with a text for a person.
std::optional<Options> parseOptions(int argc, const char* const* argv);

}  // namespace simulator
