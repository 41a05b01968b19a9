#include "plugged_ipod.h"

#include <algorithm>

namespace simulator {

namespace {

/// The time in which the accessory can still read what was sent before a fault pulled the cable.
constexpr Time kPullDelay = milliseconds(20);

constexpr int64_t kLongestWaitMs = 1000000;

}  // namespace

PluggedIpod::PluggedIpod(SimulatedIpod& device, const ListenPlace& place,
                         AccessoryPort::Notice notice)
    : ipod(device),
      notify(std::move(notice)),
      port(std::in_place, place, notify),
      name(port->place()) {
  ipod.plugIn(now(), FrameKind::kUsb);
}

void PluggedIpod::runUntil(HANDLE ending) {
  for (;;) {
    serve();
    // Without a cable the iPod lives on.
    HANDLE events[] = {ending, port ? port->event() : nullptr};
    const DWORD count = port ? 2 : 1;
    if (WaitForMultipleObjects(count, events, FALSE, waitLimitMs()) == WAIT_OBJECT_0) return;
    if (port) WSAResetEvent(port->event());
  }
}

void PluggedIpod::serve() {
  if (port) receive();
  if (port) noticeAccessory();
  send();
  if (port) pullWhenDue();
}

void PluggedIpod::receive() {
  if (isAccessoryThere && ipod.plugged()) ipod.receive(now(), port->read());
}

/// Call this after receive(), which reads the last bytes of an accessory that has left.
void PluggedIpod::noticeAccessory() {
  const AccessoryPort::Presence presence = port->presence();
  isAccessoryThere = presence.open;
  if (!presence.closed) return;
  ipod.hangUp(now());
  unwritten.clear();
}

void PluggedIpod::send() {
  flush();
  for (const Bytes& bytes : ipod.takeOutput(now())) {
    if (!port || !isAccessoryThere) continue;
    unwritten.insert(unwritten.end(), bytes.begin(), bytes.end());
    flush();
  }
}

void PluggedIpod::flush() {
  if (unwritten.empty() || !port || !isAccessoryThere) return;
  const size_t written = port->write(unwritten);
  unwritten.erase(unwritten.begin(), unwritten.begin() + static_cast<std::ptrdiff_t>(written));
}

void PluggedIpod::pullWhenDue() {
  if (ipod.plugged()) return;
  if (!pullAt) pullAt = now() + kPullDelay;
  if (*pullAt > now()) return;
  port.reset();
  isAccessoryThere = false;
  unwritten.clear();
  pullAt.reset();
  notify("a fault has pulled the cable; start ipodsim again to plug the iPod in");
}

DWORD PluggedIpod::waitLimitMs() const {
  std::optional<Time> next = ipod.nextWake();
  if (pullAt && (!next || *pullAt < *next)) next = pullAt;
  if (!next) return INFINITE;
  const Time left = std::max(*next - now(), Time(0));
  const int64_t ms = std::chrono::ceil<milliseconds>(left).count();
  return static_cast<DWORD>(std::min(ms, kLongestWaitMs));
}

}  // namespace simulator
