// Adds and removes the sync byte FF, which every frame begins with on a serial line.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace coredll {

/// Follows the frames in a stream of bytes by their lengths:
///
///     55 length payload... checksum, or 55 00 length-high length-low payload... checksum
class FramePlace {
 public:
  enum class Part { kBetween, kStart, kInside };

  /// Says where the next byte of the stream is. A byte 55 between frames starts one.
  Part of(std::uint8_t byte);
  /// Returns where the next byte will be, apart from kStart.
  bool isInside() const { return state != State::kBetween; }

 private:
  enum class State { kBetween, kLength, kLongLengthHigh, kLongLengthLow, kRest };

  State state = State::kBetween;
  std::size_t left = 0;  ///< kRest: bytes of the frame, its checksum included
};

/// For what is written.
class SyncBytesAdded {
 public:
  /// Returns the bytes with a sync byte before each start of a frame. A frame can be in the bytes
  /// of several calls.
  std::vector<std::uint8_t> with(const std::uint8_t* bytes, std::size_t count);

 private:
  FramePlace place;
};

/// For what is read.
class SyncBytesRemoved {
 public:
  /// Appends the bytes to `out`, without the sync byte directly before the start of each frame.
  /// A last byte that may be a sync byte is kept until the next call.
  void append(const std::uint8_t* bytes, std::size_t count, std::vector<std::uint8_t>& out);
  /// Appends the byte that was kept, when no more bytes arrive. Returns false when there is none.
  bool appendKept(std::vector<std::uint8_t>& out);

 private:
  FramePlace place;
  bool isKept = false;  ///< a sync byte, or noise of this value
};

}  // namespace coredll
