#pragma once

#include <string>

#include "link/wire_observer.h"
#include "trace/trace_file_writer.h"

namespace simulator {

/// Records the wire to a file, from the accessory's point of view: it reads what the iPod sends.
class TraceRecorder final : public WireObserver {
 public:
  /// `device` is the name of the device in the trace, like "IPD1:". Throws trace::TraceFileError.
  TraceRecorder(const std::string& path, std::string deviceName,
                trace::TraceFileWriter::Complain complain);

  void onPlugged() override;
  void onPulled() override;
  void onOpened() override;
  void onClosed() override;
  void onReceived(ByteView bytes) override;
  void onSent(ByteView bytes) override;

 private:
  trace::TraceFileWriter::Step step() { return trace::TraceFileWriter::Step(writer); }

  const std::string device;
  trace::TraceFileWriter writer;
  bool isOpen = false;
};

}  // namespace simulator
