#include "link/pty_ipod.h"

#include "link/pty_port.h"

#include <poll.h>
#include <sys/eventfd.h>

#include <cerrno>
#include <system_error>

namespace simulator {

namespace {

/// The time in which the accessory can still read what was sent before a fault pulled the cable.
constexpr Time kPullDelay = milliseconds(20);

}  // namespace

PtyIpod::PtyIpod(SimulatedIpod& device, FrameKind frames, std::filesystem::path linkPath)
    : PtyIpod(
          device, frames, [] { return std::make_unique<PtyPort>(); }, std::move(linkPath)) {}

PtyIpod::PtyIpod(SimulatedIpod& device, FrameKind frames, PortMaker maker,
                 std::filesystem::path linkPath)
    : kind(frames),
      makePort(std::move(maker)),
      begin(std::chrono::steady_clock::now()),
      waker(eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC)),
      ipod(&device),
      link(std::move(linkPath)) {
  if (!waker) throw std::system_error(errno, std::generic_category(), "cannot make an event");
}

PtyIpod::~PtyIpod() { stop(); }

void PtyIpod::start() {
  const std::lock_guard<std::mutex> lock(mutex);
  if (isRunning) return;
  link.claim();
  try {
    openPort();
  } catch (...) {
    link.release();
    throw;
  }
  isRunning = true;
  isStopping = false;
  thread = std::thread([this] { run(); });
}

void PtyIpod::stop() {
  {
    const std::lock_guard<std::mutex> lock(mutex);
    isStopping = true;
    wake();
  }
  if (thread.joinable()) thread.join();
  const std::lock_guard<std::mutex> lock(mutex);
  ipod->unplug(now());
  closePort();
  link.release();
}

void PtyIpod::unplug() {
  std::unique_lock<std::mutex> lock(mutex);
  if (!port) return;
  ipod->unplug(now());
  pullAt = now();
  wake();
  changed.wait(lock, [this] { return !port || !isRunning; });
}

void PtyIpod::plug() {
  const std::lock_guard<std::mutex> lock(mutex);
  if (port || !isRunning) return;
  openPort();
  wake();
}

bool PtyIpod::replace(SimulatedIpod& other) {
  const std::lock_guard<std::mutex> lock(mutex);
  if (port) return false;
  ipod = &other;
  wake();
  return true;
}

void PtyIpod::setChangeHook(std::function<void()> hook) {
  const std::lock_guard<std::mutex> lock(mutex);
  onChange = std::move(hook);
}

std::string PtyIpod::slavePath() const {
  const std::lock_guard<std::mutex> lock(mutex);
  if (!link.path().empty()) return link.path().string();
  return port ? port->place() : "";
}

bool PtyIpod::waitUntil(const std::function<bool(const SimulatedIpod&)>& condition, Time limit) {
  std::unique_lock<std::mutex> lock(mutex);
  return changed.wait_for(lock, limit, [&] { return condition(*ipod); });
}

Time PtyIpod::now() const { return std::chrono::steady_clock::now() - begin; }

void PtyIpod::run() {
  std::unique_lock<std::mutex> lock(mutex);
  while (!isStopping) {
    serve();
    changed.notify_all();
    if (onChange) onChange();
    const int masterEvents = POLLIN | (unwritten.empty() ? 0 : POLLOUT);
    pollfd waits[] = {
        {waker.get(), POLLIN, 0},
        {port ? port->watch() : -1, POLLIN, 0},
        {port && isAccessoryThere ? port->descriptor() : -1, static_cast<short>(masterEvents), 0}};
    const int limit = waitLimitMs();
    lock.unlock();
    poll(waits, std::size(waits), limit);
    lock.lock();
    eventfd_t ignored;
    eventfd_read(waker.get(), &ignored);
  }
  isRunning = false;
  changed.notify_all();
}

void PtyIpod::serve() {
  if (port) noticeAccessory();
  if (port) receive();
  send();
  if (port) pullWhenDue();
}

void PtyIpod::noticeAccessory() {
  const Port::Presence presence = port->presence();
  isAccessoryThere = presence.open;
  if (presence.closed) changeAccessory();
  if (isAccessoryThere) observeOpen();
}

/// Ends with the accessory that closed the slave. What it wrote is still handled, and what it did
/// not read is dropped. What can be read after another accessory has opened the slave is taken for
/// that accessory's bytes.
void PtyIpod::changeAccessory() {
  const Bytes last = port->read();
  isAccessoryThere = port->presence().open;
  observeOpen();
  if (!isAccessoryThere) receive(last);
  observeClose();
  ipod->hangUp(now());
  unwritten.clear();
  port->dropUnread();
  if (!isAccessoryThere) return;
  observeOpen();
  receive(last);
}

void PtyIpod::observeOpen() {
  if (observer && !isOpenObserved) observer->onOpened();
  isOpenObserved = true;
}

void PtyIpod::observeClose() {
  if (observer && isOpenObserved) observer->onClosed();
  isOpenObserved = false;
}

void PtyIpod::receive() {
  if (isAccessoryThere && ipod->plugged()) receive(port->read());
}

void PtyIpod::receive(const Bytes& bytes) {
  if (observer && !bytes.empty()) observer->onReceived(bytes);
  ipod->receive(now(), bytes);
}

/// Writes as many bytes as the port accepts now, and returns their number.
size_t PtyIpod::write(ByteView bytes) {
  const size_t written = port->write(bytes);
  if (observer && written > 0) observer->onSent(bytes.prefix(written));
  return written;
}

/// Writes to the pseudo-terminal. Each write of the iPod is one write, unless the accessory reads
/// too slowly.
void PtyIpod::send() {
  flush();
  for (const Bytes& bytes : ipod->takeOutput(now())) {
    if (!port || !isAccessoryThere) continue;
    const size_t written = unwritten.empty() ? write(bytes) : 0;
    unwritten.insert(unwritten.end(), bytes.begin() + static_cast<std::ptrdiff_t>(written),
                     bytes.end());
  }
}

void PtyIpod::flush() {
  if (unwritten.empty() || !port || !isAccessoryThere) return;
  const size_t written = write(unwritten);
  unwritten.erase(unwritten.begin(), unwritten.begin() + static_cast<std::ptrdiff_t>(written));
}

void PtyIpod::pullWhenDue() {
  if (!ipod->plugged() && !pullAt) pullAt = now() + kPullDelay;
  if (pullAt && *pullAt <= now()) closePort();
}

int PtyIpod::waitLimitMs() const {
  std::optional<Time> next = ipod->nextWake();
  if (pullAt && (!next || *pullAt < *next)) next = pullAt;
  if (!next) return -1;
  const Time left = std::max(*next - now(), Time(0));
  const auto ms = std::chrono::ceil<milliseconds>(left).count();
  return static_cast<int>(std::min<int64_t>(ms, std::numeric_limits<int>::max()));
}

void PtyIpod::wake() { eventfd_write(waker.get(), 1); }

void PtyIpod::openPort() {
  port = makePort();
  isAccessoryThere = false;
  unwritten.clear();
  pullAt.reset();
  try {
    link.leadTo(port->place());
  } catch (...) {
    port.reset();
    throw;
  }
  if (observer) observer->onPlugged();
  ipod->plugIn(now(), kind);
}

void PtyIpod::closePort() {
  if (!port) return;
  link.removeFrom(port->place());
  port.reset();
  if (observer) observer->onPulled();
  isOpenObserved = false;
  isAccessoryThere = false;
  unwritten.clear();
  pullAt.reset();
}

}  // namespace simulator
