#include "support/scripted_ipod.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <stdexcept>

#include "support/payload_text.h"

namespace {

/// The payload of a frame that settle() writes after the library's frames. No lingo has this
/// number.
constexpr char kMark[] = "FE 01";

constexpr const char* kAcknowledgedCommands[] = {"16", "17", "28", "29", "2E",
                                                 "31", "32", "37", "38"};

std::string deviceName(WireKind kind) { return kind == WireKind::kUsb ? "IPD1:" : "COM1:"; }

template <class Lines>
typename Lines::iterator longestFit(Lines& lines, const std::string& request) {
  auto best = lines.end();
  for (auto line = lines.begin(); line != lines.end(); ++line) {
    const bool longer = best == lines.end() || line->first.size() > best->first.size();
    if (beginsWith(request, line->first) && longer) best = line;
  }
  return best;
}

}  // namespace

ScriptedIpod::ScriptedIpod(EventLog& eventLog, WireKind wireKind)
    : log(eventLog),
      kind(wireKind),
      mapping(deviceName(wireKind), wire),
      cutter(wireKind),
      wakeUp(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {
  connectLikeAnIpod();
  acknowledgeCommands();
  thread = std::thread([this] { run(); });
}

ScriptedIpod::~ScriptedIpod() {
  order([this] { stopping = true; });
  thread.join();
  ::close(wakeUp);
}

void ScriptedIpod::connectLikeAnIpod() {
  lines["00 13"] = {"00 02 00 13", "0A 04 00 00 AC 44 00 00 00 00 00 00 00 00", "0A 02"};
  lines["00 0F 00"] = {"00 10 00 01 09"};
  lines["00 0F 04"] = {"00 10 04 01 0D"};
  lines["00 0F 0A"] = {"00 10 0A 01 02"};
  lines["00 05"] = {"00 02 00 05"};
  lines["00 06"] = {};
  lines["0A 00"] = {};
  lines["0A 03"] = {};
}

void ScriptedIpod::acknowledgeCommands() {
  for (const std::string command : kAcknowledgedCommands)
    lines["04 00 " + command] = {"04 00 01 00 00 " + command};
}

void ScriptedIpod::answer(const std::string& request, const IpodReplies& replies) {
  const std::lock_guard<std::mutex> lock(mutex);
  lines[request] = replies;
}

void ScriptedIpod::answerOnce(const std::string& request, const IpodReplies& replies) {
  const std::lock_guard<std::mutex> lock(mutex);
  singleLines[request].push_back(replies);
}

void ScriptedIpod::fallSilent() {
  const std::lock_guard<std::mutex> lock(mutex);
  singleLines.clear();
  lines = {{"", {}}};
}

void ScriptedIpod::hold(const std::string& request) {
  const std::lock_guard<std::mutex> lock(mutex);
  heldRequests.push_back(request);
}

void ScriptedIpod::release() {
  order([this] {
    heldRequests.clear();
    for (Bytes& frame : heldReplies)
      queue(Clock::now(), std::move(frame));
    heldReplies.clear();
  });
}

void ScriptedIpod::send(const std::string& payload) {
  const Bytes frame = frameOf(bytesOf(payload), kind);
  order([this, frame] { wire.send(frame); });
}

void ScriptedIpod::sendCorrupt(const std::string& payload) {
  Bytes frame = frameOf(bytesOf(payload), kind);
  frame.back() ^= 0x01;
  order([this, frame] { wire.send(frame); });
}

void ScriptedIpod::sendRaw(const std::string& bytes) {
  order([this, raw = bytesOf(bytes)] { wire.send(raw); });
}

void ScriptedIpod::hangUp() {
  order([this] {
    wire.hangUp();
    hungUp = true;
  });
}

// The library's frames are before the mark, so all of them have arrived when the mark has.
void ScriptedIpod::settle() {
  std::unique_lock<std::mutex> lock(mutex);
  if (hungUp) return;
  const unsigned mark = ++marksSent;
  const Bytes frame = frameOf(bytesOf(kMark), kind);
  const int nearEnd = ::open(wire.path().c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC);
  const bool written = ::write(nearEnd, frame.data(), frame.size()) == ssize_t(frame.size());
  ::close(nearEnd);
  if (!written || !carriedOut.wait_for(lock, host_test::kPatience,
                                       [&] { return hungUp || marksSeen >= mark; })) {
    throw std::runtime_error("the scripted iPod does not settle");
  }
}

// Returns when the task is done, so that what the test does next follows it.
void ScriptedIpod::order(const std::function<void()>& task) {
  std::unique_lock<std::mutex> lock(mutex);
  orders.push_back(task);
  const unsigned number = ++ordersGiven;
  const std::uint64_t once = 1;
  if (::write(wakeUp, &once, sizeof once) != sizeof once) throw std::runtime_error("no event");
  if (!carriedOut.wait_for(lock, host_test::kPatience, [&] { return ordersDone >= number; })) {
    throw std::runtime_error("the scripted iPod does not obey");
  }
}

void ScriptedIpod::run() {
  while (carryOutOrders()) {
    sendDueReplies();
    waitForWork();
    readRequests();
  }
}

bool ScriptedIpod::carryOutOrders() {
  const std::lock_guard<std::mutex> lock(mutex);
  std::uint64_t count = 0;
  while (::read(wakeUp, &count, sizeof count) > 0) {
  }
  while (!orders.empty()) {
    orders.front()();
    orders.pop_front();
    ++ordersDone;
  }
  carriedOut.notify_all();
  return !stopping;
}

// Sorted by the time when they are due, so that an iPod that is late sends them in the same order.
void ScriptedIpod::queue(Clock::time_point due, Bytes frame) {
  const auto place = std::upper_bound(
      pending.begin(), pending.end(), due,
      [](Clock::time_point time, const PendingReply& reply) { return time < reply.due; });
  pending.insert(place, {due, std::move(frame)});
}

void ScriptedIpod::sendDueReplies() {
  const auto now = Clock::now();
  while (!pending.empty() && pending.front().due <= now) {
    wire.send(pending.front().frame);
    pending.erase(pending.begin());
  }
}

// While nothing holds the device open, its end is always ready, so it is looked at from time to
// time.
void ScriptedIpod::waitForWork() {
  constexpr int kLookAgain = 1;
  std::array<pollfd, 2> watched = {{{wakeUp, POLLIN, 0}, {wire.descriptor(), POLLIN, 0}}};
  poll(watched.data(), watched.size(), millisecondsToNextReply());
  if ((watched[1].revents & (POLLHUP | POLLIN)) == POLLHUP) poll(watched.data(), 1, kLookAgain);
}

int ScriptedIpod::millisecondsToNextReply() {
  if (pending.empty()) return -1;
  const auto left =
      std::chrono::ceil<std::chrono::milliseconds>(pending.front().due - Clock::now());
  return static_cast<int>(std::max<std::chrono::milliseconds::rep>(left.count(), 0));
}

void ScriptedIpod::readRequests() {
  Bytes bytes(4096);
  const ssize_t count = ::read(wire.descriptor(), bytes.data(), bytes.size());
  if (count <= 0) return;
  bytes.resize(static_cast<std::size_t>(count));
  cutter.feed(bytes);
  while (const auto piece = cutter.next())
    take(*piece);
}

void ScriptedIpod::take(const FrameCutter::Piece& piece) {
  const std::string request = payloadText(piece.bytes);
  if (!piece.good) {
    log.add("not a frame: " + request);
    return;
  }
  if (request != kMark) {
    log.add(request);
    reply(request);
    return;
  }
  sendDueReplies();
  const std::lock_guard<std::mutex> lock(mutex);
  ++marksSeen;
  carriedOut.notify_all();
}

void ScriptedIpod::reply(const std::string& request) {
  const std::lock_guard<std::mutex> lock(mutex);
  const bool held = isHeld(request);
  const auto now = Clock::now();
  for (const IpodReply& next : repliesTo(request)) {
    Bytes frame = frameOf(bytesOf(next.payload), kind);
    if (held) {
      heldReplies.push_back(std::move(frame));
    } else {
      queue(now + next.delay, std::move(frame));
    }
  }
}

IpodReplies ScriptedIpod::repliesTo(const std::string& request) {
  const auto single = longestFit(singleLines, request);
  const auto line = longestFit(lines, request);
  const bool singleFits = single != singleLines.end() &&
                          (line == lines.end() || single->first.size() >= line->first.size());
  if (!singleFits) return line == lines.end() ? IpodReplies{kRefusal} : line->second;
  IpodReplies replies = std::move(single->second.front());
  single->second.pop_front();
  if (single->second.empty()) singleLines.erase(single);
  return replies;
}

bool ScriptedIpod::isHeld(const std::string& request) {
  return std::any_of(heldRequests.begin(), heldRequests.end(),
                     [&](const std::string& beginning) { return beginsWith(request, beginning); });
}
