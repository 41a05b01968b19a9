// Carries an iPod's frames to the program. It can replace and delay each frame.
#pragma once

#include <cstddef>
#include <functional>
#include <map>
#include <optional>
#include <vector>

#include "virtual_time.h"
#include "wire/bytes.h"

namespace virtual_platform {

/// A frame that replaces another one, and its delay.
struct ComingFrame {
  Time delay;
  simulator::Bytes bytes;
};

/// Returns the frames that replace the frame with this number, from 0: none, itself, others.
using FrameRewriter =
    std::function<std::vector<ComingFrame>(std::size_t number, const simulator::Bytes& frame)>;

class FrameRoad {
 public:
  /// Sets the function that replaces frames. The next frame has the number 0.
  void rewrite(FrameRewriter wanted);
  /// Returns whether a frame was replaced by another one.
  bool hasRewritten() const { return rewritten; }
  /// Stops replacing frames.
  void heal();
  /// Drops the frames that have not arrived yet.
  void clear() { underWay.clear(); }

  /// Returns whether a frame that is sent now arrives at once, as it is, before all others.
  bool isEmpty() const { return !rewriter && underWay.empty(); }
  void send(Time now, const simulator::Bytes& frame);
  std::vector<simulator::Bytes> takeArrived(Time now);
  std::optional<Time> nextArrival() const;

 private:
  FrameRewriter rewriter;
  std::size_t number = 0;
  bool rewritten = false;
  std::multimap<Time, simulator::Bytes> underWay;
};

}  // namespace virtual_platform
