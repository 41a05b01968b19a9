#include "virtual_ipod.h"

#include <algorithm>

namespace virtual_platform {

namespace {

bool isDue(std::optional<Time> moment, Time now) { return moment && *moment <= now; }

}  // namespace

VirtualIpod::VirtualIpod(simulator::SimulatedIpod& device, simulator::FrameKind frames)
    : ipod(device), kind(frames) {
  plug(Time(0));
}

void VirtualIpod::plug(Time now) {
  ipod.plugIn(now, kind);
  loss.reset();
  cut.reset();
  pull.reset();
  stop.reset();
  unread.clear();
  passedBytes[0] = passedBytes[1] = 0;
  for (auto& each : ends)
    each.clear();
  road.heal();
  for (SpoiledLine& line : lines)
    line.heal();
  frameCount = 0;
  swappedFrame.reset();
  deferred.clear();
  delivery = {};
  heldUntil.reset();
}

void VirtualIpod::unplug(Time now, Loss how) {
  if (!isPlugged()) return;
  ipod.unplug(now);
  loss = how;
  cut.reset();
  pull.reset();
  unread.clear();
  road.clear();
}

void VirtualIpod::unplugAfter(Direction direction, std::size_t bytes, Loss how) {
  cut = Cut{direction, bytes, how};
}

void VirtualIpod::stopReading(std::size_t bytes, Time patience, Loss how) {
  stop = Stop{bytes, patience, how, false};
}

void VirtualIpod::spoil(Direction direction, const ByteFault& fault) {
  lines[indexOf(direction)].spoil(fault);
}

void VirtualIpod::swapFrame(std::size_t number) {
  swappedFrame = number;
  swapped = false;
}

void VirtualIpod::opened(Time now) {
  fetch(now);
  unread.clear();  // what nobody has read is lost
  isOpen = true;
  pass(now, Direction::kFromIpod, 0);
}

void VirtualIpod::closed(Time now) {
  isOpen = false;
  unread.clear();
  deferred.clear();
  road.clear();
  if (isPlugged()) ipod.hangUp(now);
}

Readiness VirtualIpod::readReadiness(Time now) {
  fetch(now);
  if (heldUntil && now < *heldUntil) return Readiness::kWaits;
  heldUntil.reset();
  if (!unread.empty()) return Readiness::kReady;
  if (loss == Loss::kEndOfFile) return Readiness::kEnded;
  if (loss == Loss::kReadError || loss == Loss::kGone) return Readiness::kFailed;
  return Readiness::kWaits;
}

Readiness VirtualIpod::writeReadiness(Time now) {
  if (takesNoMore(now)) return Readiness::kWaits;
  const bool fails = loss == Loss::kWriteError || loss == Loss::kGone;
  return fails ? Readiness::kFailed : Readiness::kReady;
}

std::size_t VirtualIpod::read(Time now, BYTE* buffer, std::size_t count) {
  const std::size_t most = untilCut(
      Direction::kFromIpod, untilPause(std::min({count, unread.size(), delivery.longestRead})));
  std::copy_n(unread.begin(), most, buffer);
  unread.erase(unread.begin(), unread.begin() + static_cast<std::ptrdiff_t>(most));
  pass(now, Direction::kFromIpod, most);
  if (delivery.pauseAt == passed(Direction::kFromIpod)) heldUntil = now + delivery.pause;
  return most;
}

std::size_t VirtualIpod::write(Time now, const BYTE* bytes, std::size_t count) {
  if (!isPlugged()) return count;
  const std::size_t most = untilCut(Direction::kToIpod, untilStop(count));
  std::vector<BYTE> arrived;
  arrived.swap(written);
  lines[indexOf(Direction::kToIpod)].carry(bytes, most, arrived);
  ipod.receive(now, {arrived.data(), arrived.size()});
  arrived.clear();
  written.swap(arrived);
  pass(now, Direction::kToIpod, most);
  ends[indexOf(Direction::kToIpod)].push_back(passed(Direction::kToIpod));
  return most;
}

std::optional<Time> VirtualIpod::nextWake() const {
  std::optional<Time> wake = earlier(ipod.nextWake(), heldUntil);
  if (pull) wake = earlier(wake, pull->moment);
  return earlier(wake, road.nextArrival());
}

std::size_t VirtualIpod::untilStop(std::size_t count) const {
  if (!stop) return count;
  return std::min(count, stop->bytes - std::min(stop->bytes, passed(Direction::kToIpod)));
}

void VirtualIpod::pullWhenDue(Time now) {
  if (pull && now >= pull->moment) unplug(now, pull->how);
}

bool VirtualIpod::takesNoMore(Time now) {
  pullWhenDue(now);
  if (!stop || !isPlugged() || passed(Direction::kToIpod) < stop->bytes) return false;
  if (!stop->isFelt) unplugAt(now + stop->patience, stop->how);
  stop->isFelt = true;
  return true;
}

/// A longer read may have passed the place already; then there is no pause.
std::size_t VirtualIpod::untilPause(std::size_t count) const {
  const std::size_t done = passed(Direction::kFromIpod);
  const bool isAhead = delivery.pauseAt && *delivery.pauseAt > done;
  return isAhead ? std::min(count, *delivery.pauseAt - done) : count;
}

std::size_t VirtualIpod::untilCut(Direction direction, std::size_t count) const {
  if (!cut || cut->direction != direction) return count;
  return std::min(count, cut->bytes - std::min(cut->bytes, passed(direction)));
}

void VirtualIpod::pass(Time now, Direction direction, std::size_t count) {
  passedBytes[indexOf(direction)] += count;
  if (cut && cut->direction == direction && passed(direction) >= cut->bytes) unplug(now, cut->how);
}

void VirtualIpod::fetch(Time now) {
  pullWhenDue(now);
  if (isDue(ipod.nextWake(), now)) {
    for (const simulator::Bytes& bytes : ipod.takeOutput(now)) {
      if (isOpen && isPlugged()) takeFrame(now, bytes);
    }
  }
  if (!isDue(road.nextArrival(), now)) return;
  for (const simulator::Bytes& bytes : road.takeArrived(now))
    append(now, bytes);
}

void VirtualIpod::takeFrame(Time now, const simulator::Bytes& bytes) {
  if (frameCount++ == swappedFrame) {
    // Not a copy into the old memory: the marks that AddressSanitizer has for vectors miss that.
    deferred = simulator::Bytes(bytes);
    return;
  }
  if (deferred.empty() && road.isEmpty()) return append(now, bytes);
  road.send(now, bytes);
  if (deferred.empty()) return;
  road.send(now, deferred);
  deferred.clear();
  swapped = true;
}

void VirtualIpod::append(Time now, const simulator::Bytes& bytes) {
  if (unread.empty() && delivery.gathering > Time(0)) heldUntil = now + delivery.gathering;
  const std::size_t before = unread.size();
  lines[indexOf(Direction::kFromIpod)].carry(bytes.data(), bytes.size(), unread);
  auto& fromIpod = ends[indexOf(Direction::kFromIpod)];
  fromIpod.push_back((fromIpod.empty() ? 0 : fromIpod.back()) + unread.size() - before);
}

}  // namespace virtual_platform
