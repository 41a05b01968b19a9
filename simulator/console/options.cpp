#include "console/options.h"

#include <CLI/CLI.hpp>
#include <charconv>
#include <cstdio>
#include <iostream>

#include "control/control_help.h"
#include "device/personality_file.h"
#include "device/personality_settings.h"
#include "faults/fault_text.h"
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

constexpr char kFaultUsage[] =
    "--fault KIND[=VALUE[/VALUE2]][@LINGO:COMMAND[#N]]\n"
    "\n"
    "LINGO and COMMAND are hexadecimal and name the request that is answered, or a\n"
    "message that the iPod sends on its own; * is any. #N is the N-th answer only,\n"
    "#N+ every one from the N-th on; without, it is every answer. Each record of a\n"
    "listing is a separate answer, except for the faults of a whole listing.\n"
    "\n"
    "--fault random=PERCENT[/KIND,KIND...]\n"
    "\n"
    "Any answer, by chance; the same answers for the same --seed and requests.\n"
    "\n"
    "Each fault that strikes is a line of output, which starts with the fault as it\n"
    "is written to strike the same answer again.\n"
    "\n";

/// The options as CLI11 stores them, before they are checked.
struct RawOptions {
  std::string preset = personalityNames().front();
  std::string name;
  std::string version;
  std::string limits;
  std::vector<std::string> settings;
  std::string listen;
  bool helpControl = false;
  bool helpFaults = false;
  bool helpPersonalities = false;
};

/// Parses two numbers with one letter between them, like 320x240 or 1.14.
bool parsePair(const std::string& text, char between, unsigned most, unsigned& first,
               unsigned& second) {
  char letter = 0;
  char behind = 0;
  const int found = std::sscanf(text.c_str(), "%5u%c%5u%c", &first, &letter, &second, &behind);
  return found == 3 && letter == between && first <= most && second <= most;
}

void setVersion(Personality& personality, const std::string& text) {
  unsigned major = 0;
  unsigned minor = 0;
  if (!parsePair(text, '.', 0xFF, major, minor)) {
    throw std::invalid_argument("--ext-version " + text + ": write it like 1.14");
  }
  personality.lingoes[0x04] = {static_cast<uint8_t>(major), static_cast<uint8_t>(minor)};
}

void setLimits(Personality& personality, const std::string& text) {
  unsigned width = 0;
  unsigned height = 0;
  if (!parsePair(text, 'x', 0xFFF, width, height)) {
    throw std::invalid_argument("--image-limits " + text + ": write them like 320x240");
  }
  personality.display.limits = {static_cast<uint16_t>(width), static_cast<uint16_t>(height)};
  personality.screenWidth = std::max(personality.screenWidth, personality.display.limits.width);
  personality.screenHeight = std::max(personality.screenHeight, personality.display.limits.height);
}

[[noreturn]] void refuseListen(const std::string& text) {
  throw std::invalid_argument("--listen " + text +
                              ": write a port like 5000, or an address and a port like "
                              "192.168.1.5:5000");
}

/// Returns the text without the brackets that an IPv6 address has.
std::string withoutBrackets(const std::string& text) {
  const bool has = text.size() > 2 && text.front() == '[' && text.back() == ']';
  return has ? text.substr(1, text.size() - 2) : text;
}

void setListen(Options& options, const std::string& text) {
  const size_t colon = text.rfind(':');
  const std::string port = colon == std::string::npos ? text : text.substr(colon + 1);
  const auto [end, error] =
      std::from_chars(port.data(), port.data() + port.size(), options.listenPort);
  if (error != std::errc() || end != port.data() + port.size()) refuseListen(text);
  options.listenAddress = "127.0.0.1";
  if (colon != std::string::npos) options.listenAddress = withoutBrackets(text.substr(0, colon));
  if (options.listenAddress.empty()) refuseListen(text);
}

void checkSpeed(unsigned baud) {
  if (isTerminalSpeed(baud)) return;
  throw std::invalid_argument("--baud " + std::to_string(baud) + ": choose one of " +
                              terminalSpeeds());
}

/// Adds to an error message which option explains more.
template <typename Work>
void withHint(const char* option, Work work) {
  try {
    work();
  } catch (const std::invalid_argument& refused) {
    throw std::invalid_argument(refused.what() + std::string("\nTry ipodsim ") + option + ".");
  }
}

Personality makePersonality(const RawOptions& raw) {
  const bool isFile = isPersonalityFile(raw.preset);
  Personality made = isFile ? readPersonality(raw.preset) : personality(raw.preset);
  if (!raw.name.empty()) made.name = raw.name;
  if (!raw.version.empty()) setVersion(made, raw.version);
  if (!raw.limits.empty()) setLimits(made, raw.limits);
  withHint("--help-personalities", [&] {
    for (const std::string& setting : raw.settings)
      applySetting(made, setting);
  });
  return made;
}

void checkFaults(const std::vector<std::string>& faults) {
  Random random(1);
  FaultPlan plan(random);
  withHint("--help-faults", [&] {
    for (const std::string& fault : faults)
      addFault(plan, fault);
  });
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

void describeModel(CLI::App& app, Options& options, RawOptions& raw) {
  app.add_option("--personality", raw.preset, "The model; see --help-personalities")
      ->capture_default_str()
      ->type_name("NAME|FILE.json");
  app.add_option("--set", raw.settings, "Change a switch of the model")->type_name("NAME=VALUE");
  app.add_option("--name", raw.name, "The iPod's name")->type_name("TEXT");
  app.add_option("--ext-version", raw.version, "Version of its Extended Interface")
      ->type_name("M.N");
  app.add_option("--image-limits", raw.limits, "The largest image that it shows")->type_name("WxH");
  app.add_option("--fault", options.faults, "Something that goes wrong; see --help-faults")
      ->type_name("KIND...");
  app.add_option("--seed", options.seed, "Seed of shuffling and of random faults")
      ->capture_default_str()
      ->type_name("N");
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
  app.add_flag("--help-faults", raw.helpFaults, "What can go wrong, and how to write it");
  app.add_flag("--help-personalities", raw.helpPersonalities, "The models and their switches");
}

std::string personalitiesHelp() {
  constexpr size_t kColumn = 12;
  std::string help = "--personality NAME\n\n";
  for (const std::string& name : personalityNames()) {
    help += "  " + name + std::string(kColumn - name.size(), ' ') + personalityMeaning(name) + "\n";
  }
  return help + "\n" + personalityFileHelp() + "\n--set NAME=VALUE\n\n" + settingsHelp();
}

/// Parses the command line. Returns false when it asked only for a help text.
bool parse(CLI::App& app, int argc, const char* const* argv) {
  try {
    app.parse(argc, argv);
  } catch (const CLI::CallForHelp&) {
    std::cout << app.help();
    return false;
  } catch (const CLI::CallForVersion& version) {
    std::cout << version.what() << '\n';
    return false;
  } catch (const CLI::ParseError& error) {
    throw std::invalid_argument(std::string(error.what()) + "\nTry ipodsim --help.");
  }
  return true;
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
  describeModel(app, options, raw);
  describeOutput(app, options, raw);
  if (!parse(app, argc, argv)) return std::nullopt;
  if (raw.helpFaults) std::cout << kFaultUsage << faultHelp();
  if (raw.helpPersonalities) std::cout << personalitiesHelp();
  if (raw.helpControl) std::cout << controlHelp();
  if (raw.helpFaults || raw.helpPersonalities || raw.helpControl) return std::nullopt;
  if (!raw.listen.empty()) setListen(options, raw.listen);
  checkSpeed(options.baud);
  options.personality = makePersonality(raw);
  checkFaults(options.faults);
  return options;
}

}  // namespace simulator
