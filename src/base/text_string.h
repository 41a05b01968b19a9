#pragma once

#include <cstdint>
#include <cstring>
#include <memory>
#include <new>

namespace ipodctl {

/// An owned string of 8-bit or 16-bit units, which may contain zero units. A change can fail for
/// lack of memory and reports it. Always zero-terminated; size() excludes the terminator.
template <class Unit>
class TextString {
 public:
  uint32_t size() const { return length; }
  bool empty() const { return length == 0; }

  Unit& operator[](uint32_t index) { return units[index]; }
  const Unit& operator[](uint32_t index) const { return units[index]; }

  /// Returns the text with its terminator; never null.
  const Unit* text() const { return units ? units.get() : &kTerminator; }

  /// Replaces the text by `newLength` zero units. Returns false, and leaves the text unchanged,
  /// when there is no memory.
  [[nodiscard]] bool resize(uint32_t newLength) {
    std::unique_ptr<Unit[]> fresh(new (std::nothrow) Unit[newLength + 1]());
    if (!fresh) return false;
    units = std::move(fresh);
    length = newLength;
    return true;
  }

  /// Cuts the text to its first `newLength` units, at most size().
  void shorten(uint32_t newLength) {
    if (newLength == length) return;
    units[newLength] = Unit{};
    length = newLength;
  }

  /// Replaces the text by a copy of `count` units. Returns false, and leaves the text unchanged,
  /// when there is no memory.
  [[nodiscard]] bool assign(const Unit* source, uint32_t count) {
    if (!resize(count)) return false;
    if (count > 0) std::memcpy(units.get(), source, count * sizeof(Unit));
    return true;
  }

 private:
  static constexpr Unit kTerminator{};

  std::unique_ptr<Unit[]> units;
  uint32_t length = 0;
};

using ByteString = TextString<uint8_t>;
using WideString = TextString<char16_t>;

}  // namespace ipodctl
