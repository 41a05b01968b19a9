// A cable that corrupts the bytes of one direction at one place.
#pragma once

#include <windows.h>

#include <cstddef>
#include <optional>
#include <vector>

namespace virtual_platform {

struct ByteFault {
  enum class Kind { kFlipped, kLost, kDoubled, kInserted };

  Kind kind;
  std::size_t at;  ///< the byte that it changes, counted from 0
  BYTE value;  ///< kFlipped: the bits that change; kInserted: the byte that is inserted before it
};

class SpoiledLine {
 public:
  /// Starts to count with the next byte.
  void spoil(const ByteFault& byteFault);
  void heal() { fault.reset(); }
  bool hasStruck() const { return struck; }

  std::vector<BYTE> carry(const BYTE* bytes, std::size_t count) {
    std::vector<BYTE> arrived;
    carry(bytes, count, arrived);
    return arrived;
  }
  /// Appends what arrives of these bytes.
  void carry(const BYTE* bytes, std::size_t count, std::vector<BYTE>& arrived);

 private:
  void carryByte(BYTE byte, std::vector<BYTE>& arrived);

  std::optional<ByteFault> fault;
  std::size_t carried = 0;
  bool struck = false;
};

}  // namespace virtual_platform
