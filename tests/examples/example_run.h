#pragma once

#include <functional>
#include <string>
#include <vector>

#include "music/built_in_library.h"
#include "support/program_outcome.h"
#include "virtual/virtual_world.h"

/// Runs of the examples on the deterministic platform.
namespace example_test {

using program_run::Disturb;
using program_run::Outcome;
using virtual_platform::Time;

/// Called as the program's main function.
using Main = int (*)(int, char**);

/// What a person does while the program runs, on a separate thread.
using Handle = std::function<void(simulator::SimulatedIpod&, virtual_platform::VirtualIpod&)>;

struct ProgramRun {
  Main main = nullptr;
  std::vector<std::string> arguments;
  simulator::Personality model = simulator::personality("classic");
  Disturb disturb;
  std::uint64_t seed = 1;
  simulator::MusicLibrary library = simulator::builtInLibrary();
  Handle handle;
  bool hasIpod = true;
};

/// Runs a program. Its output is in `lines`, that of the library, too.
Outcome run(const ProgramRun& wanted);

/// Returns the longest time between two pauses of a tenth of a second in the last run: the main
/// thread of an example takes them, each with a frame of the screen.
Time longestFrame();

/// Returns the lines of the program, without those of the library.
std::vector<std::string> ownLines(const Outcome& outcome);

}  // namespace example_test

extern "C" {
int browse_tabs_main(int argc, char** argv);
int now_playing_main(int argc, char** argv);
int reconnect_main(int argc, char** argv);
int sample_rate_main(int argc, char** argv);
int show_logo_main(int argc, char** argv);
}
