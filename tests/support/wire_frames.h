#pragma once

#include <optional>

#include "support/pty_pair.h"

/// The two links: frames begin with FF 55 on a serial line and with 55 over USB.
enum class WireKind { kUsb, kSerial };

/// A payload in its frame; the long form when the payload does not fit the short one.
Bytes frameOf(const Bytes& payload, WireKind kind);

/// Cuts the library's frames out of the bytes that it writes. It is strict: a byte that belongs to
/// no frame, and a frame with a wrong checksum, comes out as an error. Sync bytes alone are
/// skipped.
class FrameCutter {
 public:
  explicit FrameCutter(WireKind wireKind) : kind(wireKind) {}

  struct Piece {
    bool good;
    Bytes bytes;  ///< the payload, or what is wrong
  };

  void feed(const Bytes& bytes);

  /// The next piece, none when more bytes are needed.
  std::optional<Piece> next();

 private:
  Piece cut(std::size_t count, bool good, std::size_t payloadStart, std::size_t payloadLength);

  WireKind kind;
  Bytes buffered;
};
