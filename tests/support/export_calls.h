#pragma once

#include <chrono>
#include <functional>
#include <string>
#include <vector>

/// A call of each export, and what it promises whatever the iPod and other threads do meanwhile.
/// For an iPod with the built-in library's name and the usual serial number, once there was a
/// connection.
namespace race {

using Duration = std::chrono::nanoseconds;

struct Outcome {
  int result = 0;   ///< of an export that returns a pointer: whether there is one
  int written = 0;  ///< the number that it wrote
  bool promised = true;
  bool answered = true;  ///< false: surely the iPod's answer was missed
};

struct ExportCall {
  const char* name;
  int waits;  ///< for how many answers it waits at most, each a second
  Outcome (*make)(unsigned variety);

  bool asksNothing() const { return waits == 0; }
};

/// One for each export. Arguments vary with `variety`.
const std::vector<ExportCall>& exportCalls();

struct MadeCall {
  const ExportCall* call = nullptr;
  Outcome outcome;
  Duration took{0};
};

/// Makes a call and takes its time with this clock.
MadeCall makeCall(const ExportCall& call, unsigned variety, const std::function<Duration()>& now);

/// "IpodGetTrackIndex returned 1, wrote 17, after 3 ms"
std::string describe(const MadeCall& made);

}  // namespace race
