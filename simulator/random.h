#pragma once

#include <cstdint>
#include <random>
#include <utility>
#include <vector>

namespace simulator {

/// Numbers that look random and are the same for the same seed on every machine.
class Random {
 public:
  explicit Random(uint32_t seed) : engine(seed) {}

  /// Returns a number from 0 to limit - 1; 0 for a limit of 0.
  uint32_t below(uint32_t limit) {
    return limit == 0 ? 0 : static_cast<uint32_t>(engine() % limit);
  }

  template <typename Item>
  void shuffle(std::vector<Item>& items) {
    for (size_t left = items.size(); left > 1; --left) {
      std::swap(items[left - 1], items[below(static_cast<uint32_t>(left))]);
    }
  }

 private:
  std::mt19937 engine;
};

}  // namespace simulator
