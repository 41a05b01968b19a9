#include "device.h"

#include <poll.h>
#include <sys/eventfd.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <utility>

#include "recorder.h"
#include "terminal.h"

namespace coredll {
namespace {

/// The bytes that one system call moved: 0 when nothing can be moved now, no value when the other
/// side has closed.
using Moved = std::optional<DWORD>;

Moved readSome(const std::string& name, int wire, BYTE* buffer, DWORD count) {
  const ssize_t result = ::read(wire, buffer, count);
  if (result > 0) {
    const auto read = static_cast<DWORD>(result);
    if (mayRecord()) recordRead(name, buffer, read);
    return read;
  }
  const bool isRetryable = result < 0 && (errno == EAGAIN || errno == EINTR);
  return isRetryable ? Moved(0) : std::nullopt;
}

/// A socket whose other side has closed would also send a signal, which ends the program.
ssize_t writeNow(int wire, bool isSocket, const BYTE* bytes, DWORD count) {
  return isSocket ? ::send(wire, bytes, count, MSG_NOSIGNAL) : ::write(wire, bytes, count);
}

Moved writeSome(const std::string& name, int wire, bool isSocket, const BYTE* bytes, DWORD count) {
  const auto write = [&] { return writeNow(wire, isSocket, bytes, count); };
  const ssize_t result = mayRecord() ? recordWrite(name, bytes, write) : write();
  if (result >= 0) return static_cast<DWORD>(result);
  const bool isRetryable = errno == EAGAIN || errno == EINTR;
  return isRetryable ? Moved(0) : std::nullopt;
}

/// Returns `error`, and records it if the device has failed. A call that the program's own close
/// ends has not failed.
DWORD recorded(const std::string& name, DWORD error, trace::Event failure) {
  const bool isFailure = error != ERROR_SUCCESS && error != ERROR_OPERATION_ABORTED;
  if (isFailure && mayRecord()) recordEvent(name, failure, error);
  return error;
}

}  // namespace

Device::Device(ObjectKind ownKind, std::string openedName, WireDescriptor wireEnd,
               Descriptor wakeSignal)
    : KernelObject(ownKind),
      name(std::move(openedName)),
      wire(std::move(wireEnd.descriptor)),
      isSocket(wireEnd.isSocket),
      wakeEvent(std::move(wakeSignal)),
      hasQueue(!isSocket && hasOutputQueue(wire.get())) {}

DWORD Device::read(BYTE* buffer, DWORD count, DWORD& read) {
  return whileOpen([&](int end) {
    const auto readRest = [&] { return readSome(name, end, buffer + read, count - read); };
    const DWORD error = transfer(planRead(count), POLLIN, readRest, read);
    if (error == ERROR_GEN_FAILURE && read > 0) return ERROR_SUCCESS;
    if (error != ERROR_SUCCESS) read = 0;
    return recorded(name, error, trace::Event::kReadFailed);
  });
}

DWORD Device::write(const BYTE* bytes, DWORD count, DWORD& written) {
  return whileOpen([&](int end) {
    const std::lock_guard turn(writeTurn);
    const auto writeRest = [&] {
      return writeSome(name, end, isSocket, bytes + written, count - written);
    };
    const DWORD error = transfer(planWrite(count), POLLOUT, writeRest, written);
    return recorded(name, error, trace::Event::kWriteFailed);
  });
}

DWORD Device::flush() {
  return whileOpen([&](int) {
    if (hasQueue) return drain();
    return isGone ? ERROR_GEN_FAILURE : ERROR_SUCCESS;
  });
}

/// Waits until the queue is empty.
DWORD Device::drain() {
  // The kernel wakes no thread when the queue becomes empty.
  constexpr TimeLimit kLookAgain = 2;
  for (;;) {
    int queued = 0;
    if (ioctl(wire.get(), TIOCOUTQ, &queued) != 0) return ERROR_GEN_FAILURE;
    if (queued == 0) return ERROR_SUCCESS;
    const Readiness readiness = waitFor(0, deadlineIn(kLookAgain));
    if (readiness == Readiness::kClosed) return ERROR_OPERATION_ABORTED;
    if (readiness == Readiness::kGone) return ERROR_GEN_FAILURE;
  }
}

void Device::close() {
  if (mayRecord()) recordEvent(name, trace::Event::kClosed);
  callsInside += kClosing;
  eventfd_write(wakeEvent.get(), 1);
  for (LONG calls = 0; (calls = callsInside) != kClosing;)
    sleepWhile(callsInside, calls, std::nullopt);
  wire = Descriptor();
}

template <typename MoveSome>
DWORD Device::transfer(const TransferPlan& plan, short event, MoveSome moveSome, DWORD& moved) {
  const Deadline end = deadlineIn(plan.total);
  Deadline deadline = end;
  // Most reads are made before a byte has arrived, and most writes find room.
  const bool waitsFirst = event == POLLIN && plan.enough > 0;
  Readiness readiness = isClosing() ? Readiness::kClosed : Readiness::kReady;
  if (waitsFirst) readiness = waitFor(event, deadline);
  for (;;) {
    if (readiness == Readiness::kClosed) return ERROR_OPERATION_ABORTED;
    const Moved more = moveSome();
    if (!more || (*more == 0 && readiness == Readiness::kGone)) {
      isGone = true;
      return ERROR_GEN_FAILURE;
    }
    moved += *more;
    if (moved >= plan.enough || readiness == Readiness::kTimedOut) return ERROR_SUCCESS;
    if (*more > 0) deadline = earlier(end, deadlineIn(plan.interval));
    readiness = waitFor(event, deadline);
  }
}

Device::Readiness Device::waitFor(short events, const Deadline& deadline) const {
  pollfd watched[] = {{wire.get(), events, 0}, {wakeEvent.get(), POLLIN, 0}};
  poll(watched, std::size(watched), pollTimeout(deadline));
  if (watched[1].revents != 0) return Readiness::kClosed;
  if ((watched[0].revents & (POLLHUP | POLLERR | POLLNVAL)) != 0) return Readiness::kGone;
  if (watched[0].revents == 0 && isOver(deadline)) return Readiness::kTimedOut;
  return Readiness::kReady;
}

}  // namespace coredll
