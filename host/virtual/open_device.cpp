#include "open_device.h"

#include <algorithm>

#include "call.h"
#include "coredll/comm_timeouts.h"
#include "failures.h"
#include "virtual_world.h"

namespace virtual_platform {
namespace {

constexpr DWORD kUsualSpeed = 9600;
constexpr BYTE kUsualByteSize = 8;

DCB initialState() {
  DCB state = {};
  state.DCBlength = sizeof state;
  state.BaudRate = kUsualSpeed;
  state.fBinary = TRUE;
  state.fDtrControl = DTR_CONTROL_ENABLE;
  state.fRtsControl = RTS_CONTROL_ENABLE;
  state.ByteSize = kUsualByteSize;
  return state;
}

std::optional<Time> endOf(const coredll::TimeLimit& limit) {
  if (!limit) return std::nullopt;
  return now() + std::chrono::milliseconds(*limit);
}

/// Returns the beginning of what was moved, such as " 55 02 00 06 F8".
std::string shown(const BYTE* bytes, DWORD count) {
  constexpr DWORD kMostShown = 64;
  std::string words;
  for (DWORD i = 0; i < std::min(count, kMostShown); ++i)
    words += text(" %02X", bytes[i]);
  return count > kMostShown ? words + " ..." : words;
}

/// These find the failures once, because a look-up by name takes longer than the rest of a call.
Failures& failuresOfTransfers(bool areReads) {
  static Failures& reads = failuresOf("ReadFile");
  static Failures& writes = failuresOf("WriteFile");
  return areReads ? reads : writes;
}

Failures& failuresOfFlushes() {
  static Failures& flushes = failuresOf("FlushFileBuffers");
  return flushes;
}

constexpr coredll::TransferPlan kReadWhatComes{1, std::nullopt, std::nullopt};

}  // namespace

struct OpenDevice::Transfer {
  bool isRead;
  coredll::TransferPlan plan;
  DWORD count;
  BYTE* into;        // of a read
  const BYTE* from;  // of a write
};

OpenDevice::OpenDevice(VirtualDevice& opened, bool isPort)
    : NamedObject(isPort ? coredll::kSerialPortKind : coredll::kStreamDeviceKind, "device"),
      isSerialPort(isPort),
      state(initialState()),
      device(opened),
      worldId(VirtualWorld::current()->id()) {
  VirtualWorld::current()->setOpen(device, true);
  device.opened(now());
}

DWORD OpenDevice::read(BYTE* buffer, DWORD count, DWORD& moved) {
  const Transfer transfer{true, isSerialPort ? coredll::readPlan(timeouts, count) : kReadWhatComes,
                          count, buffer, nullptr};
  const DWORD error = run(transfer, moved);
  if (error != ERROR_SUCCESS) moved = 0;
  return error;
}

DWORD OpenDevice::write(const BYTE* bytes, DWORD count, DWORD& moved) {
  const coredll::TransferPlan whole{count, std::nullopt, std::nullopt};
  const Transfer transfer{false, isSerialPort ? coredll::writePlan(timeouts, count) : whole, count,
                          nullptr, bytes};
  return run(transfer, moved);
}

DWORD OpenDevice::flush() {
  beginCall();
  ++callsInside;
  if (isHere()) awaitWritten();
  --callsInside;
  DWORD error = ERROR_SUCCESS;
  if (isClosed || !isHere()) {
    error = ERROR_OPERATION_ABORTED;
  } else if (device.writeReadiness(now()) == Readiness::kFailed ||
             failuresOfFlushes().strikesNext()) {
    error = ERROR_GEN_FAILURE;
  }
  meet();
  note([&] { return text("FlushFileBuffers(%s): error %u", name().c_str(), error); });
  return error;
}

/// Waits until what was written has been sent, which is when more could be written.
void OpenDevice::awaitWritten() {
  meet();
  await([this] { return "FlushFileBuffers(" + name() + ")"; }, std::nullopt,
        [this] { return isClosed || device.writeReadiness(now()) != Readiness::kWaits; },
        [this] { return device.nextWake(); });
}

void OpenDevice::close() {
  NamedObject::close();
  await([this] { return "CloseHandle(" + name() + ")"; }, std::nullopt,
        [this] { return callsInside == 0; });
  if (!isHere()) return;
  device.closed(now());
  VirtualWorld::current()->setOpen(device, false);
}

DWORD OpenDevice::run(const Transfer& transfer, DWORD& moved) {
  meet();
  beginCall();
  ++callsInside;
  DWORD error = ERROR_OPERATION_ABORTED;
  if (isHere()) error = transfer.isRead ? transferAll(transfer, moved) : awaitTurn(transfer);
  if (!transfer.isRead && error == ERROR_SUCCESS) {
    isWriting = true;
    error = transferAll(transfer, moved);
    isWriting = false;
  }
  if (transfer.isRead && error == ERROR_GEN_FAILURE && moved > 0) error = ERROR_SUCCESS;
  --callsInside;
  note([&] {
    const BYTE* const bytes = transfer.isRead ? transfer.into : transfer.from;
    return text("%s: error %u, %u bytes", shownCall(transfer).c_str(), error, moved) +
           shown(bytes, moved);
  });
  return error;
}

std::string OpenDevice::shownCall(const Transfer& transfer) {
  const char* const function = transfer.isRead ? "ReadFile" : "WriteFile";
  return text("%s(%s, %u)", function, name().c_str(), transfer.count);
}

/// Moves what can be moved after the first `done` bytes.
DWORD OpenDevice::move(const Transfer& transfer, DWORD done) {
  const DWORD rest = transfer.count - done;
  const std::size_t moved = transfer.isRead ? device.read(now(), transfer.into + done, rest)
                                            : device.write(now(), transfer.from + done, rest);
  return static_cast<DWORD>(moved);
}

/// Waits until no other thread writes, so that writes do not mix.
DWORD OpenDevice::awaitTurn(const Transfer& transfer) {
  await([&] { return shownCall(transfer); }, std::nullopt,
        [this] { return isClosed || !isWriting; });
  return isClosed ? ERROR_OPERATION_ABORTED : ERROR_SUCCESS;
}

Readiness OpenDevice::readiness(const Transfer& transfer) {
  return transfer.isRead ? device.readReadiness(now()) : device.writeReadiness(now());
}

DWORD OpenDevice::transferAll(const Transfer& transfer, DWORD& moved) {
  const std::optional<Time> end = endOf(transfer.plan.total);
  std::optional<Time> deadline = end;
  if (failuresOfTransfers(transfer.isRead).strikesNext()) {
    return isClosed ? ERROR_OPERATION_ABORTED : ERROR_GEN_FAILURE;
  }
  const auto wake = [this] { return device.nextWake(); };
  for (bool isInTime = true; !isClosed;) {
    const Readiness found = readiness(transfer);
    if (found == Readiness::kFailed) return ERROR_GEN_FAILURE;
    if (found == Readiness::kEnded) {
      await([&] { return shownCall(transfer); }, now() + device.endOfFileTime(),
            [this] { return isClosed; });
      return isClosed ? ERROR_OPERATION_ABORTED : ERROR_SUCCESS;
    }
    if (found == Readiness::kReady) {
      moved += move(transfer, moved);
      deadline = earlier(end, endOf(transfer.plan.interval));
    }
    if (moved >= transfer.plan.enough || !isInTime) return ERROR_SUCCESS;
    isInTime = await([&] { return shownCall(transfer); }, deadline,
                     [&] { return isClosed || readiness(transfer) != Readiness::kWaits; }, wake);
  }
  return ERROR_OPERATION_ABORTED;
}

bool OpenDevice::isHere() const {
  const VirtualWorld* const world = VirtualWorld::current();
  return world != nullptr && world->id() == worldId;
}

}  // namespace virtual_platform
