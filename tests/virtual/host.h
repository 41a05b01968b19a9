#pragma once

#include <functional>
#include <string>
#include <vector>

#include "support/exports.h"
#include "virtual/virtual_world.h"

namespace virtual_session {

using exports::Effect;
using exports::Number;
using exports::Output;
using exports::Text;
using virtual_platform::Time;

/// A call that a host made.
struct Call : Effect {
  std::string name;  ///< an export, with the code of IpodCommand: "IpodCommand(13)"
  int thread = 0;    ///< which of the host's
  Time start{0};
  Time took{0};
};

using Calls = std::vector<Call>;

/// "IpodGetTrackIndex 1 0", one for each call: its name, its result and what it wrote.
std::vector<std::string> resultsOf(const Calls& calls);

/// "IpodCommand"
std::string exportOf(const std::string& callName);

/// The size of each of the two buffers for an entry's name, in units.
constexpr int kNameChars = 4;

/// A thread of a host program. It records the effects of its calls.
class Host {
 public:
  explicit Host(const virtual_platform::VirtualWorld& itsWorld, int itsThread = 0)
      : world(itsWorld), thread(itsThread) {}

  const Calls& calls() const { return made; }

  void call(const std::string& name, const std::function<int()>& exported,
            const std::vector<const Output*>& outputs = {});

  void command(int code);
  void play(int track);
  void number(const char* name, int (*exported)(int*));
  /// Reads the position, which is recorded as "300 or more": it depends on the time that the
  /// answers took.
  void position(int atLeast);
  void open(int descend, int type, int tracksOfSelection = 0);
  void move(const char* name, const std::function<const int*()>& exported);
  /// Into two buffers of kNameChars units.
  void entryName(const char* name, int (*exported)(int, unsigned short*, unsigned short*, int));
  void deviceText(const char* name, int (*exported)(unsigned short*, int));
  void trackTexts();

 private:
  const virtual_platform::VirtualWorld& world;
  const int thread;
  Calls made;
};

}  // namespace virtual_session
