#pragma once

#include <cstddef>
#include <cstdint>

namespace recorder {

/// A short text that is put together; what does not fit is cut.
class Text {
 public:
  Text& add(const char* words);
  Text& add(uint32_t number);

  const char* begin() const { return characters; }
  uint32_t size() const { return length; }

 private:
  static constexpr uint32_t kMost = 800;

  void put(char one) {
    if (length < kMost) characters[length++] = one;
  }

  char characters[kMost + 1] = {};
  uint32_t length = 0;
};

}  // namespace recorder
