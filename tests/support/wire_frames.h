#pragma once

#include <optional>

#include "support/pty_pair.h"

/// The two links: frames begin with FF 55 on a serial line and with 55 over USB.
enum class WireKind { kUsb, kSerial };

/// Returns a payload in its frame, in the long form if it does not fit the short form.
Bytes frameOf(const Bytes& payload, WireKind kind);

/// Cuts the library's frames out of the bytes that it writes. It is strict: a byte outside a frame
/// and a frame with a wrong checksum are errors. Only sync bytes are skipped.
class FrameCutter {
 public:
  explicit FrameCutter(WireKind wireKind) : kind(wireKind) {}

  struct Piece {
    bool good;
    Bytes bytes;  ///< the payload, or what is wrong
  };

  void feed(const Bytes& bytes);

  /// Returns the next piece, or nothing if more bytes are needed.
  std::optional<Piece> next();

 private:
  Piece cut(std::size_t count, bool good, std::size_t payloadStart, std::size_t payloadLength);

  WireKind kind;
  Bytes buffered;
};
