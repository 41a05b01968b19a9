// What a trace shows of the model of its iPod.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "iaptrace/asked.h"

namespace iaptrace {

/// The switches of a personality that a trace shows. Each is as ipodsim reads it.
struct ShownPersonality {
  std::optional<std::string> name;
  std::optional<std::string> softwareVersion;
  std::optional<std::string> serialNumber;
  std::optional<uint32_t> modelId;
  std::optional<std::string> modelNumber;
  /// The versions of lingoes; without a version one that it does not speak.
  std::map<uint8_t, std::optional<std::string>> lingoes;
  std::optional<std::string> imageLimits;
  std::optional<std::vector<uint8_t>> extraAccessoryInfo;
  std::map<std::string, std::variant<uint32_t, std::string>> settings;

  void set(const std::string& flag, bool value) { settings[flag] = value ? "yes" : "no"; }
};

/// Returns what the conversation shows. A switch that it does not show is left out.
ShownPersonality shownPersonality(const Conversation& items);

/// Returns the file that ipodsim --personality reads.
std::string personalityJson(const ShownPersonality& shown);

/// Parts of the above: each adds what it finds.
void showDescriptions(const std::vector<Asked>& asked, ShownPersonality& shown);
void showIdentification(const Conversation& items, const std::vector<Asked>& asked,
                        ShownPersonality& shown);
void showAnswers(const Conversation& items, const std::vector<Asked>& asked,
                 ShownPersonality& shown);
void showDatabase(const std::vector<Asked>& asked, ShownPersonality& shown);
void showPlayback(const Conversation& items, const std::vector<Asked>& asked,
                  ShownPersonality& shown);

/// The time that the iPod needs for any answer: the shortest that the trace has.
trace::Time answerDelay(const std::vector<Asked>& asked);

/// Returns a span of time as a switch has it: whole milliseconds, and 0 for what a busy machine
/// needs, too.
uint32_t delayMs(trace::Time span, trace::Time usual);

}  // namespace iaptrace
