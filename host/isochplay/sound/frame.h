#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace isochplay {

/// A sample of both channels.
struct Frame {
  int16_t left = 0;
  int16_t right = 0;
};

using Frames = std::vector<Frame>;

constexpr unsigned kChannels = 2;

constexpr int kLowestRate = 1000;     // Hz
constexpr int kHighestRate = 192000;  // Hz

inline bool isUsableRate(int rate) { return rate >= kLowestRate && rate <= kHighestRate; }

}  // namespace isochplay
