#include "link/trace_recorder.h"

#include <utility>

namespace simulator {

namespace {

/// What the accessory's read fails with on Windows CE when the cable is pulled: a device that does
/// not function.
constexpr uint32_t kGeneralFailure = 31;

}  // namespace

TraceRecorder::TraceRecorder(const std::string& path, std::string deviceName,
                             trace::TraceFileWriter::Complain complain)
    : device(std::move(deviceName)), writer(path, std::move(complain)) {}

void TraceRecorder::onPlugged() { step().comment(device.c_str(), "the iPod is plugged in"); }

void TraceRecorder::onPulled() {
  auto pulled = step();
  pulled.comment(device.c_str(), "the cable is pulled");
  if (isOpen) pulled.event(device.c_str(), trace::Event::kReadFailed, kGeneralFailure);
  isOpen = false;
}

void TraceRecorder::onOpened() {
  isOpen = true;
  step().event(device.c_str(), trace::Event::kOpened);
}

void TraceRecorder::onClosed() {
  isOpen = false;
  step().event(device.c_str(), trace::Event::kClosed);
}

void TraceRecorder::onReceived(ByteView bytes) {
  step().data(device.c_str(), trace::Direction::kWritten, bytes.begin(), bytes.size());
}

void TraceRecorder::onSent(ByteView bytes) {
  step().data(device.c_str(), trace::Direction::kRead, bytes.begin(), bytes.size());
}

}  // namespace simulator
