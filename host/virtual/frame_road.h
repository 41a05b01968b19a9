// The way of an iPod's frames to the program: others can come in the place of each, and late.
#ifndef VIRTUAL_FRAME_ROAD_H
#define VIRTUAL_FRAME_ROAD_H

#include <cstddef>
#include <functional>
#include <map>
#include <optional>
#include <vector>

#include "virtual_time.h"
#include "wire/bytes.h"

namespace virtual_platform {

// What comes instead of a frame, so long after the frame would have come.
struct ComingFrame {
  Time delay;
  simulator::Bytes bytes;
};

// For the frame with this number, from 0, what comes in its place: nothing, itself, others.
using FrameRewriter =
    std::function<std::vector<ComingFrame>(std::size_t number, const simulator::Bytes& frame)>;

class FrameRoad {
 public:
  // Numbers the frames from the next one on.
  void rewrite(FrameRewriter wanted);
  // Whether something else came in the place of a frame.
  bool hasRewritten() const { return rewritten; }
  // From now on every frame comes as it is.
  void heal();
  // What is under way never arrives.
  void clear() { underWay.clear(); }

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

#endif
