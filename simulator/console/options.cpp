#include "console/options.h"

#include <CLI/CLI.hpp>
#include <iostream>
#include <stdexcept>

#include "console/command_line.h"
#include "console/listen_place.h"
#include "console/model_options.h"
#include "control/control_help.h"
#include "link/terminal_port.h"

namespace simulator {

namespace {

constexpr size_t kMostTracks = 1000000;

constexpr char kDescription[] =
    "A simulated iPod at a pseudo-terminal. An accessory opens the link like the\n"
    "device or the serial line that a real iPod is plugged into, and speaks the iPod\n"
    "Accessory Protocol with it.\n";

constexpr char kExamples[] =
    "Examples:\n"
    "  ipodsim                                  an iPod with built-in music\n"
    "  ipodsim --music ~/Music --trace          your own music; shows every message\n"
    "  ipodsim --link ./ipod --screen ipod.png  writes what the screen shows\n"
    "  ipodsim --personality nano --serial      another model, on a serial line\n"
    "  ipodsim --fault lost@04:0018#2           the second answer to 18 is lost\n"
    "  ipodsim --fault random=1                 one answer in a hundred goes wrong\n"
    "  ipodsim --interactive                    unplug it, skip, ... by typing\n"
    "  ipodsim --control /tmp/ipod.control      the same for programs, over a socket\n"
    "  ipodsim --device /dev/ttyUSB0 --serial   for an accessory at a serial cable\n"
    "  ipodsim --listen 5000                    for IPD1:=tcp:127.0.0.1:5000\n"
    "  ipodsim --record ipod.trace              every byte in a file, for iaptrace\n"
    "\n"
    "Nothing protects a TCP port: whoever reaches it controls the simulated iPod.\n"
    "\n"
    "Ctrl-C ends it. Exit status: 0 when it was ended, 1 when it could not run, 2 for\n"
    "a wrong command line.\n";

/// The options as CLI11 stores them, before they are checked.
struct RawOptions {
  ModelOptions model;
  std::string listen;
  bool helpControl = false;
};

void setListen(Options& options, const std::string& text) {
  const ListenPlace place = parseListenPlace(text);
  options.listenAddress = place.address;
  options.listenPort = place.port;
}

void checkSpeed(unsigned baud) {
  if (isTerminalSpeed(baud)) return;
  throw std::invalid_argument("--baud " + std::to_string(baud) + ": choose one of " +
                              terminalSpeeds());
}

void describeLink(CLI::App& app, Options& options, RawOptions& raw) {
  CLI::Option* link = app.add_option("--link", options.link, "Where the accessory finds the iPod")
                          ->capture_default_str()
                          ->type_name("PATH");
  CLI::Option* device =
      app.add_option("--device", options.device, "Use a serial port instead of a pseudo-terminal")
          ->type_name("TTY")
          ->excludes(link);
  app.add_option("--baud", options.baud, "Its speed")
      ->capture_default_str()
      ->type_name("N")
      ->needs(device);
  app.add_option("--listen", raw.listen, "Use a TCP port, of 127.0.0.1 unless given")
      ->type_name("[ADDRESS:]PORT")
      ->excludes(link)
      ->excludes(device);
  app.add_flag("--serial", options.serial, "Serial frames instead of USB ones");
}

void describeMusic(CLI::App& app, Options& options) {
  CLI::Option* music = app.add_option("--music", options.music, "Play the audio files of a folder")
                           ->type_name("DIR");
  app.add_option("--library", options.library, "Play the music that a JSON file describes")
      ->type_name("FILE")
      ->excludes(music);
  app.add_option("--tracks", options.tracks, "Cut the music to N tracks, or copy it up to N")
      ->type_name("N")
      ->check(CLI::Range(size_t{0}, kMostTracks));
}

void describeOutput(CLI::App& app, Options& options, RawOptions& raw) {
  app.add_option("--screen", options.screen, "Write the screen there when it changes")
      ->type_name("FILE.png");
  app.add_option("--font", options.font, "The font of the screen's texts")->type_name("FILE");
  app.add_option("--record", options.record, "Write every byte to a trace file, for iaptrace")
      ->type_name("FILE");
  app.add_flag("--trace", options.trace, "Show every message, and bytes that form none");
  app.add_flag("--quiet", options.quiet, "Print only that the iPod is ready, and what fails");
  app.add_flag("--interactive", options.interactive, "Take commands on standard input; try help");
  app.add_option("--control", options.control, "Let programs control it; see --help-control")
      ->type_name("SOCKET");
  app.add_flag("--help-control", raw.helpControl, "What programs can say to it over the socket");
  raw.model.addHelpTo(app);
}

}  // namespace

std::optional<Options> parseOptions(int argc, const char* const* argv) {
  Options options;
  RawOptions raw;
  CLI::App app(kDescription, "ipodsim");
  app.footer(kExamples);
  app.set_version_flag("--version", "ipodsim " IPODSIM_VERSION, "Print the version and exit");
  describeLink(app, options, raw);
  describeMusic(app, options);
  raw.model.addTo(app);
  describeOutput(app, options, raw);
  if (!parseCommandLine(app, argc, argv)) return std::nullopt;
  std::cout << raw.model.help();
  if (raw.helpControl) std::cout << controlHelp();
  if (raw.helpControl || !raw.model.help().empty()) return std::nullopt;
  if (!raw.listen.empty()) setListen(options, raw.listen);
  checkSpeed(options.baud);
  options.personality = raw.model.makePersonality();
  raw.model.checkFaults();
  options.faults = raw.model.faults();
  options.seed = raw.model.seed();
  return options;
}

}  // namespace simulator
