#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace simulator {

using Bytes = std::vector<uint8_t>;

/// A view of bytes with another owner; valid as long as they are not moved.
class ByteView {
 public:
  ByteView() = default;
  ByteView(const uint8_t* data, size_t size) : first(data), count(size) {}
  ByteView(const Bytes& bytes) : first(bytes.data()), count(bytes.size()) {}

  const uint8_t* begin() const { return first; }
  const uint8_t* end() const { return first + count; }
  size_t size() const { return count; }
  bool empty() const { return count == 0; }
  uint8_t operator[](size_t index) const { return first[index]; }

  /// Returns the first `size` bytes, or all of them when there are fewer.
  ByteView prefix(size_t size) const { return {first, size < count ? size : count}; }
  /// Returns what follows the first `size` bytes; empty when there are no more.
  ByteView from(size_t size) const {
    return size < count ? ByteView{first + size, count - size} : ByteView{};
  }

 private:
  const uint8_t* first = nullptr;
  size_t count = 0;
};

}  // namespace simulator
