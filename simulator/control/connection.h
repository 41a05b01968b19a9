#pragma once

#include <string>

#include "control/control_verbs.h"
#include "link/file_descriptor.h"

namespace simulator {

/// What a program on the control socket may do.
struct ControlLimits {
  size_t clients = 32;
  size_t lineBytes = 65536;
  /// A program that does not read its answer for this long is disconnected.
  Time patience = seconds(5);
};

/// One program that is connected. Nothing here blocks.
class Connection {
 public:
  Connection(FileDescriptor connected, ControlLimits limits)
      : client(std::move(connected)), limit(limits) {}

  /// Reads, answers and writes what is possible now. Returns false when the connection is over.
  bool serve(ControlVerbs& verbs, SteadyTime now);

  int descriptor() const { return client.get(); }
  /// Returns the events to poll for.
  short events() const;
  bool isWaiting() const { return wait.has_value(); }
  /// Returns when serve() has something to do even if nothing happens before.
  SteadyTime due() const { return nextDue; }

 private:
  enum class Step { kGoOn, kPause, kOver };

  Step step(ControlVerbs& verbs, SteadyTime now);
  Step finishWait(ControlVerbs& verbs, SteadyTime now);
  Step answerLine(ControlVerbs& verbs, size_t lineEnd);
  Step readMore();
  bool flush(SteadyTime now);
  bool hasHungUp() const;

  FileDescriptor client;
  const ControlLimits limit;
  std::string input;
  std::string output;
  bool isAtEnd = false;  ///< nothing more is read
  std::optional<PendingWait> wait;
  SteadyTime lastWritten{};  ///< or when the output was begun
  SteadyTime nextDue = SteadyTime::max();
};

}  // namespace simulator
