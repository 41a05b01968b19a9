#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "device/personality.h"

namespace CLI {
class App;
}

namespace simulator {

/// The options of a simulated iPod that do not depend on where it is plugged in: the model, and
/// what goes wrong.
class ModelOptions {
 public:
  /// Adds the options to a command line, which stores them here.
  void addTo(CLI::App& app);
  /// Adds those that ask for a help text.
  void addHelpTo(CLI::App& app);

  /// Returns the help texts that were asked for; empty: none.
  std::string help() const;
  /// Returns the model. Throws std::invalid_argument with a message for the user.
  Personality makePersonality() const;
  /// Throws std::invalid_argument when one of the faults is wrong.
  void checkFaults() const;

  const std::vector<std::string>& faults() const { return faultTexts; }
  uint32_t seed() const { return randomSeed; }

 private:
  std::string preset;
  std::string name;
  std::string version;
  std::string limits;
  std::vector<std::string> settings;
  std::vector<std::string> faultTexts;
  uint32_t randomSeed = 1;
  bool helpFaults = false;
  bool helpPersonalities = false;
};

}  // namespace simulator
