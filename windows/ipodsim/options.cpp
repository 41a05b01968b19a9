#include "options.h"

#include <CLI/CLI.hpp>
#include <iostream>
#include <stdexcept>

#include "console/command_line.h"
#include "console/model_options.h"

namespace simulator {

namespace {

constexpr size_t kMostTracks = 1000000;

constexpr char kDescription[] =
    "A simulated iPod at a TCP port. A head unit whose IPODCTL_DEVICES leads to this\n"
    "port speaks the iPod Accessory Protocol with it.\n";

constexpr char kExamples[] =
    "Examples:\n"
    "  ipodsim                            an iPod for IPD1:=tcp:127.0.0.1:5000\n"
    "  ipodsim --listen 6000 --trace      at another port; shows every message\n"
    "  ipodsim --library music.json       the music that a file describes\n"
    "  ipodsim --personality nano         another model\n"
    "  ipodsim --fault lost@04:0018#2     the second answer to 18 is lost\n"
    "  ipodsim --fault random=1           one answer in a hundred goes wrong\n"
    "\n"
    "Nothing protects a TCP port: whoever reaches it controls the simulated iPod.\n"
    "\n"
    "Ctrl-C ends it. Exit status: 0 when it was ended, 1 when it could not run, 2 for\n"
    "a wrong command line.\n";

/// The options that ipodsim has only on Linux.
constexpr const char* kOnlyOnLinux[] = {"--link",        "--device",  "--baud",        "--serial",
                                        "--music",       "--screen",  "--font",        "--record",
                                        "--interactive", "--control", "--help-control"};

void refuseOptionsOfLinux(int argc, const char* const* argv) {
  for (int i = 1; i < argc; ++i) {
    const std::string argument = argv[i];
    const std::string name = argument.substr(0, argument.find('='));
    for (const char* const other : kOnlyOnLinux) {
      if (name != other) continue;
      throw std::invalid_argument(name +
                                  " is only in ipodsim for Linux; ipodsim --help shows what this "
                                  "program has");
    }
  }
}

}  // namespace

std::optional<Options> parseOptions(int argc, const char* const* argv) {
  refuseOptionsOfLinux(argc, argv);
  Options options;
  ModelOptions model;
  std::string listen = "127.0.0.1:5000";
  CLI::App app(kDescription, "ipodsim");
  app.footer(kExamples);
  app.set_version_flag("--version", "ipodsim " IPODSIM_VERSION, "Print the version and exit");
  app.add_option("--listen", listen, "The TCP port, of 127.0.0.1 unless given")
      ->capture_default_str()
      ->type_name("[ADDRESS:]PORT");
  app.add_option("--library", options.library, "Play the music that a JSON file describes")
      ->type_name("FILE");
  app.add_option("--tracks", options.tracks, "Cut the music to N tracks, or copy it up to N")
      ->type_name("N")
      ->check(CLI::Range(size_t{0}, kMostTracks));
  model.addTo(app);
  app.add_flag("--trace", options.trace, "Show every message, and bytes that form none");
  app.add_flag("--quiet", options.quiet, "Print only that the iPod is ready, and what fails");
  model.addHelpTo(app);
  if (!parseCommandLine(app, argc, argv)) return std::nullopt;
  std::cout << model.help();
  if (!model.help().empty()) return std::nullopt;
  options.place = parseListenPlace(listen);
  options.personality = model.makePersonality();
  model.checkFaults();
  options.faults = model.faults();
  options.seed = model.seed();
  return options;
}

}  // namespace simulator
