#pragma once

#include <atomic>
#include <cstdint>

namespace recorder {

/// Text on its way to the file, in a memory of fixed size. One thread at a time appends, and
/// another one takes. Neither waits for the other.
class TextRing {
 public:
  /// A part of the text that is in one piece in memory.
  struct Piece {
    const char* text;
    uint32_t size;
  };

  /// Uses the memory from now on; one byte of it stays unused. The ring is empty.
  void use(char* memory, uint32_t bytes) {
    begin = memory;
    size = bytes;
  }
  char* memory() const { return begin; }

  uint32_t capacity() const { return size > 0 ? size - 1 : 0; }
  uint32_t used() const { return distance(taken, appended); }
  uint32_t room() const { return capacity() - used(); }

  /// Appends all of it or, without room for it, nothing. Returns whether it was appended.
  bool append(const char* text, uint32_t count);

  /// Returns the next text; there may be more after it.
  Piece first() const;
  /// Removes what the taking thread no longer needs.
  void remove(uint32_t count);

 private:
  uint32_t distance(uint32_t from, uint32_t to) const {
    return to >= from ? to - from : size - from + to;
  }
  uint32_t moved(uint32_t place, uint32_t count) const {
    return count < size - place ? place + count : count - (size - place);
  }

  char* begin = nullptr;
  uint32_t size = 0;
  std::atomic<uint32_t> appended{0};  ///< the place of the next byte
  std::atomic<uint32_t> taken{0};     ///< the place of the first byte
};

}  // namespace recorder
