#pragma once

#include <chrono>
#include <climits>
#include <functional>
#include <string>
#include <vector>

#include "support/output.h"

/// The library's 35 functions: for each one a call, and what holds whatever the iPod and other
/// threads do meanwhile, once there was a connection. The table is exports.inc.
namespace exports {

using Duration = std::chrono::nanoseconds;

/// What a call did.
struct Effect {
  int result = 0;                    ///< for a pointer 1, for null 0
  std::vector<std::string> written;  ///< Output::words of each output; a pointer's int is one
  bool isIntact = true;              ///< Output::isIntact of every output
  bool isFull = false;               ///< Output::isFull of the first output

  Effect() = default;
  explicit Effect(int itsResult) : result(itsResult) {}

  void add(const Output& output);
  bool wroteFirst() const { return written.front() != Output::kNothing; }
  /// The number in the first output, 0 if it is untouched.
  int number() const { return wroteFirst() ? std::stoi(written.front()) : 0; }
};

enum class Lock {
  kTaken,  ///< waits for the call of another thread that holds the library lock
  kNone,
  kNoneButAsks,  ///< asks the iPod without the lock, so that another request can delay it
};

/// For how many answers a call waits at most, each for a second. A command waits for its
/// acknowledgement, a question for its reply.
struct Waits {
  int questions = 0;
  int commands = 0;

  int inAll() const { return questions + commands; }
};

/// What a call writes, or returns if it writes nothing, with an iPod that has the built-in library.
struct Known {
  int lowest = INT_MIN;
  int highest = INT_MAX;
  const char* text = nullptr;
};

struct Export {
  const char* name;
  Lock lock;
  Waits waits;
  bool (*isLegal)(const Effect&);  ///< whether the header has such a result, for any iPod
  Known known;
  Effect (*make)(unsigned variety);  ///< calls it; the arguments vary
  /// Returns whether it got its answer; null if its effect does not show that.
  bool (*isAnswered)(const Effect&) = nullptr;

  bool asksNothing() const { return waits.inAll() == 0; }
};

/// Returns all functions in the order of their ordinals.
const std::vector<Export>& allExports();
const Export& exportCalled(const std::string& name);

/// Returns the waits of an IpodCommand. A step to another group asks for the names of all `tracks`.
Waits waitsOfCommand(int code, int tracks);

struct MadeCall {
  const Export* exported = nullptr;
  Effect effect;
  Duration took{0};

  /// Returns whether the effect is legal, and known of an iPod with the built-in library.
  bool isPromised() const;
  bool surelyMissedItsAnswer() const {
    return exported->isAnswered != nullptr && !exported->isAnswered(effect);
  }
};

/// Makes a call and measures its time with this clock.
MadeCall makeCall(const Export& exported, unsigned variety, const std::function<Duration()>& now);

/// "IpodGetTrackIndex returned 1, wrote 17, after 3 ms"
std::string describe(const MadeCall& made);

}  // namespace exports
