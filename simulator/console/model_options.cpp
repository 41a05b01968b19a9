#include "console/model_options.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdio>
#include <stdexcept>

#include "device/personality_file.h"
#include "device/personality_settings.h"
#include "faults/fault_plan.h"
#include "faults/fault_text.h"

namespace simulator {

namespace {

constexpr char kFaultUsage[] =
    "--fault KIND[=VALUE[/VALUE2]][@LINGO:COMMAND[#N]]\n"
    "\n"
    "LINGO and COMMAND are hexadecimal and name the request that is answered, or a\n"
    "message that the iPod sends on its own; * is any. #N is the N-th answer only,\n"
    "#N+ every one from the N-th on; without, it is every answer. Each record of a\n"
    "listing is a separate answer, except for the faults of a whole listing.\n"
    "\n"
    "--fault random=PERCENT[/KIND,KIND...]\n"
    "\n"
    "Any answer, by chance; the same answers for the same --seed and requests.\n"
    "\n"
    "Each fault that strikes is a line of output, which starts with the fault as it\n"
    "is written to strike the same answer again.\n"
    "\n";

/// Parses two numbers with one letter between them, like 320x240 or 1.14.
bool parsePair(const std::string& text, char between, unsigned most, unsigned& first,
               unsigned& second) {
  char letter = 0;
  char behind = 0;
  const int found = std::sscanf(text.c_str(), "%5u%c%5u%c", &first, &letter, &second, &behind);
  return found == 3 && letter == between && first <= most && second <= most;
}

void setVersion(Personality& personality, const std::string& text) {
  unsigned major = 0;
  unsigned minor = 0;
  if (!parsePair(text, '.', 0xFF, major, minor)) {
    throw std::invalid_argument("--ext-version " + text + ": write it like 1.14");
  }
  personality.lingoes[0x04] = {static_cast<uint8_t>(major), static_cast<uint8_t>(minor)};
}

void setLimits(Personality& personality, const std::string& text) {
  unsigned width = 0;
  unsigned height = 0;
  if (!parsePair(text, 'x', 0xFFF, width, height)) {
    throw std::invalid_argument("--image-limits " + text + ": write them like 320x240");
  }
  personality.display.limits = {static_cast<uint16_t>(width), static_cast<uint16_t>(height)};
  personality.screenWidth = std::max(personality.screenWidth, personality.display.limits.width);
  personality.screenHeight = std::max(personality.screenHeight, personality.display.limits.height);
}

/// Adds to an error message which option explains more.
template <typename Work>
void withHint(const char* option, Work work) {
  try {
    work();
  } catch (const std::invalid_argument& refused) {
    throw std::invalid_argument(refused.what() + std::string("\nTry ipodsim ") + option + ".");
  }
}

std::string personalitiesHelp() {
  constexpr size_t kColumn = 12;
  std::string help = "--personality NAME\n\n";
  for (const std::string& name : personalityNames()) {
    help += "  " + name + std::string(kColumn - name.size(), ' ') + personalityMeaning(name) + "\n";
  }
  return help + "\n" + personalityFileHelp() + "\n--set NAME=VALUE\n\n" + settingsHelp();
}

}  // namespace

void ModelOptions::addTo(CLI::App& app) {
  preset = personalityNames().front();
  app.add_option("--personality", preset, "The model; see --help-personalities")
      ->capture_default_str()
      ->type_name("NAME|FILE.json");
  app.add_option("--set", settings, "Change a switch of the model")->type_name("NAME=VALUE");
  app.add_option("--name", name, "The iPod's name")->type_name("TEXT");
  app.add_option("--ext-version", version, "Version of its Extended Interface")->type_name("M.N");
  app.add_option("--image-limits", limits, "The largest image that it shows")->type_name("WxH");
  app.add_option("--fault", faultTexts, "Something that goes wrong; see --help-faults")
      ->type_name("KIND...");
  app.add_option("--seed", randomSeed, "Seed of shuffling and of random faults")
      ->capture_default_str()
      ->type_name("N");
}

void ModelOptions::addHelpTo(CLI::App& app) {
  app.add_flag("--help-faults", helpFaults, "What can go wrong, and how to write it");
  app.add_flag("--help-personalities", helpPersonalities, "The models and their switches");
}

std::string ModelOptions::help() const {
  std::string text;
  if (helpFaults) text += kFaultUsage + faultHelp();
  if (helpPersonalities) text += personalitiesHelp();
  return text;
}

Personality ModelOptions::makePersonality() const {
  Personality made = isPersonalityFile(preset) ? readPersonality(preset) : personality(preset);
  if (!name.empty()) made.name = name;
  if (!version.empty()) setVersion(made, version);
  if (!limits.empty()) setLimits(made, limits);
  withHint("--help-personalities", [&] {
    for (const std::string& setting : settings)
      applySetting(made, setting);
  });
  return made;
}

void ModelOptions::checkFaults() const {
  Random random(1);
  FaultPlan plan(random);
  withHint("--help-faults", [&] {
    for (const std::string& fault : faultTexts)
      addFault(plan, fault);
  });
}

}  // namespace simulator
