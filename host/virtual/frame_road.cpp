#include "frame_road.h"

#include <utility>

namespace virtual_platform {

void FrameRoad::rewrite(FrameRewriter wanted) {
  rewriter = std::move(wanted);
  number = 0;
  rewritten = false;
}

void FrameRoad::heal() {
  rewriter = nullptr;
  clear();
}

void FrameRoad::send(Time now, const simulator::Bytes& frame) {
  if (!rewriter) {
    underWay.emplace(now, frame);
    return;
  }
  const std::vector<ComingFrame> coming = rewriter(number++, frame);
  const bool isItself =
      coming.size() == 1 && coming.front().delay == Time(0) && coming.front().bytes == frame;
  rewritten = rewritten || !isItself;
  for (const ComingFrame& each : coming)
    underWay.emplace(now + each.delay, each.bytes);
}

std::vector<simulator::Bytes> FrameRoad::takeArrived(Time now) {
  std::vector<simulator::Bytes> arrived;
  const auto end = underWay.upper_bound(now);
  for (auto each = underWay.begin(); each != end; ++each)
    arrived.push_back(std::move(each->second));
  underWay.erase(underWay.begin(), end);
  return arrived;
}

std::optional<Time> FrameRoad::nextArrival() const {
  if (underWay.empty()) return std::nullopt;
  return underWay.begin()->first;
}

}  // namespace virtual_platform
