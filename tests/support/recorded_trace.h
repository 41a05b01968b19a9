// A trace file, for tests of recorders.
#pragma once

#include <fstream>
#include <optional>
#include <regex>
#include <string>
#include <vector>

namespace recorded {

using Lines = std::vector<std::string>;

inline Lines linesOf(const std::string& path) {
  std::ifstream file(path);
  Lines lines;
  for (std::string line; std::getline(file, line);)
    lines.push_back(line);
  return lines;
}

/// A line with a time.
struct Entry {
  double seconds;
  std::string text;  ///< without the time: "IPD1: < 55", "# IPD1: close"
};

/// Returns no value for a line without a time.
inline std::optional<Entry> entryOf(const std::string& line) {
  static const std::regex kTime(R"((# )?(\d+\.\d{6}) )");
  std::smatch parts;
  constexpr auto kAtTheBegin = std::regex_constants::match_continuous;
  if (!std::regex_search(line, parts, kTime, kAtTheBegin)) return std::nullopt;
  return Entry{std::stod(parts[2]), parts[1].str() + parts.suffix().str()};
}

/// Returns the lines with a time, without it.
inline Lines textsOf(const std::string& path) {
  Lines texts;
  for (const std::string& line : linesOf(path)) {
    if (const auto entry = entryOf(line)) texts.push_back(entry->text);
  }
  return texts;
}

}  // namespace recorded
