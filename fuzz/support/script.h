#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

/// Input as a list of steps, from its first byte on:
///
///     operation, lane and length, arguments...
///
/// The second byte has the lane in its upper two bits and the number of argument bytes in the lower
/// six. A change of one step does not change the others. Missing bytes at the end have the value 0.
class Script {
 public:
  struct Step;

  Script() = default;
  Script(const uint8_t* bytes, size_t size) : next(bytes), left(size) {}

  uint8_t byte() {
    if (left == 0) return 0;
    --left;
    return *next++;
  }
  uint16_t word() {
    const uint8_t high = byte();
    return static_cast<uint16_t>(high << 8 | byte());
  }
  uint32_t number() {
    const uint32_t high = word();
    return high << 16 | word();
  }
  std::vector<uint8_t> rest() {
    std::vector<uint8_t> bytes(next, next + left);
    left = 0;
    return bytes;
  }

  std::optional<Step> step();

 private:
  static constexpr unsigned kLaneShift = 6;
  static constexpr uint8_t kLengthMask = 0x3F;

  const uint8_t* next = nullptr;
  size_t left = 0;
};

struct Script::Step {
  uint8_t operation;
  uint8_t lane;  ///< 0 to 3
  Script arguments;
};

/// Returns the next step; no value at the end.
inline std::optional<Script::Step> Script::step() {
  if (left == 0) return std::nullopt;
  const uint8_t operation = byte();
  const uint8_t shape = byte();
  const size_t length = shape & kLengthMask;
  const size_t size = length < left ? length : left;
  const Step step{operation, static_cast<uint8_t>(shape >> kLaneShift), Script(next, size)};
  next += size;
  left -= size;
  return step;
}
