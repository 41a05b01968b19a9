// The text file with the recorder's settings.
#pragma once

#include <cstddef>
#include <cstdint>

namespace recorder {

constexpr uint32_t kSmallestBuffer = 8192;
constexpr uint32_t kLargestBuffer = 16 * 1024 * 1024;
constexpr uint32_t kLargestLimit = 2000000000;

/// The size of a path in bytes, with its zero, and of the settings file at most.
constexpr size_t kPathSize = 512;
constexpr size_t kSettingsSize = 4096;

/// The number of wrong lines that are kept.
constexpr size_t kWrongLines = 8;

struct Settings {
  char file[kPathSize] = "ipod.trace";    ///< UTF-8
  uint32_t buffer = 65536;                ///< bytes of memory for lines that are not yet written
  uint32_t limit = 16 * 1024 * 1024;      ///< bytes of the trace
  uint32_t wrongLines[kWrongLines] = {};  ///< the numbers of lines that are not settings, from 1
  size_t wrongCount = 0;                  ///< at most kWrongLines
};

/// Changes what the text sets: lines "NAME = VALUE". Empty lines, and those that begin with '#',
/// are ignored. A wrong line changes nothing except wrongLines.
void readSettings(const char* text, size_t size, Settings& settings);

}  // namespace recorder
