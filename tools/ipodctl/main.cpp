// The program ipodctl.
#include <CLI/CLI.hpp>
#include <csignal>
#include <exception>
#include <iostream>
#include <string_view>

#include "ipodctl/commands/run_command.h"
#include "ipodctl/doctor.h"
#include "ipodctl/serve/serve.h"

namespace {

constexpr char kDescription[] = "Works with an iPod through the library ipodctl.\n";

constexpr char kCommandNotes[] =
    "A running `ipodctl serve` carries the commands out. Without it status, info and ls connect\n"
    "the iPod themselves: that stops what plays, and an iPod stops playing when its accessory\n"
    "leaves. --json prints one JSON document, watch --json one in each line.\n"
    "\n"
    "Exit status: 0 done, 1 refused or failed, 2 wrong command line, 3 no iPod, 4 no serve where\n"
    "one is needed, 5 no answer from the iPod.\n";

constexpr char kStateFields[] =
    "Fields of --format: status title artist album genre index tracks position position_ms origin\n"
    "origin_name shuffle repeat sample_rate logo stage message name serial generation.\n\n";

constexpr char kListFields[] = "Fields of --format: index name opens path.\n\n";

constexpr char kDoctorDescription[] =
    "Connects an iPod, walks a short session, and says step by step what works, what\n"
    "fails and why. Connecting stops what the iPod plays.\n";

constexpr char kDoctorExamples[] =
    "Examples:\n"
    "  ipodctl doctor                                        the iPod of IPODCTL_DEVICES\n"
    "  ipodctl doctor --device /tmp/ipod                     a simulated iPod\n"
    "  ipodctl doctor --device serial:/dev/ttyUSB0@57600     a serial line\n"
    "  ipodctl doctor --device /dev/ttyUSB0 --probe          which frames and speed it needs\n"
    "\n"
    "Exit status: 0 when everything works, 1 when something fails, 2 for a wrong\n"
    "command line.\n";

void describeDoctor(CLI::App& app, tool::DoctorOptions& options) {
  app.footer(kDoctorExamples);
  app.add_option("--device", options.device, "Where IPD1: leads; default: as IPODCTL_DEVICES says")
      ->type_name("PATH|serial:PATH@BAUD|tcp:HOST:PORT");
  app.add_option("--trace", options.trace, "The file to record to; default: a new temporary file")
      ->type_name("FILE");
  app.add_flag("--probe", options.probe,
               "If the iPod does not answer, try other frames and speeds (at most 40 s)");
  app.add_flag("--yes", options.yes, "Do not ask before the connection");
}

/// The options that all commands have.
CLI::App& addCommand(CLI::App& app, tool::CommandOptions& options, const char* name,
                     const char* description) {
  CLI::App& command = *app.add_subcommand(name, description);
  command.footer(kCommandNotes);
  command.callback([&options, name] { options.command = name; });
  command.add_flag("--json", options.json, "Print one JSON document");
  command.add_option("--url", options.url, "The serve to ask; default: the one of this user")
      ->type_name("http://HOST:PORT");
  command.add_option("--token-file", options.tokenFile, "The file with the token of --url")
      ->type_name("FILE");
  command.add_flag("-v,--verbose", options.verbose, "Show the library's console lines");
  return command;
}

/// The options of a command that can connect the iPod itself.
void describeSession(CLI::App& command, tool::CommandOptions& options) {
  command.add_option("--device", options.device, "Where IPD1: leads, without serve")
      ->type_name("PATH|serial:PATH@BAUD|tcp:HOST:PORT");
  command.add_option("--log", options.log, "The file for the library's console lines")
      ->type_name("FILE");
}

void describeFormat(CLI::App& command, tool::CommandOptions& options, const char* fields) {
  command.add_option("--format", options.format, "Print this text, such as '{title} - {artist}'")
      ->type_name("TEXT");
  command.footer(std::string(fields) + kCommandNotes);
}

void describeState(CLI::App& app, tool::CommandOptions& options) {
  CLI::App& status = addCommand(app, options, "status", "Print what plays.");
  CLI::App& info = addCommand(app, options, "info", "Print the iPod's name, number and modes.");
  CLI::App& watch = addCommand(app, options, "watch", "Print a line for each change.");
  for (CLI::App* const command : {&status, &info, &watch})
    describeFormat(*command, options, kStateFields);
  describeSession(status, options);
  describeSession(info, options);
  watch.add_option("--lines", options.lines, "End after this many lines")
      ->check(CLI::Range(1, 1000000));
}

void describeList(CLI::App& app, tool::CommandOptions& options) {
  CLI::App& list = addCommand(app, options, "ls", "Print a list: index, name, what it opens.");
  list.add_option("path", options.path, "The list, such as artists/3/albums")->required();
  list.add_option("--offset", options.offset, "Begin at this item")->check(CLI::NonNegativeNumber);
  list.add_option("--count", options.count, "Print so many items; default: 20")
      ->check(CLI::Range(0, 1000000));
  list.add_flag("--all", options.all, "Print all items");
  describeFormat(list, options, kListFields);
  describeSession(list, options);
}

void describePlayback(CLI::App& app, tool::CommandOptions& options) {
  CLI::App& play = addCommand(app, options, "play", "Play on, or play a list from a track on.");
  play.add_option("path", options.path, "The list, such as albums/3/tracks");
  play.add_option("index", options.index, "The item, or \"all\"; default: 0")
      ->check(CLI::Range(0, 10000000) | CLI::IsMember({"all"}));
  play.add_flag("--hold", options.hold, "Without serve: connect, and play until Ctrl-C");
  describeSession(play, options);
  addCommand(app, options, "pause", "Pause what plays.");
  addCommand(app, options, "next", "Play the next track.");
  addCommand(app, options, "prev", "Play the track before, or this one from its start.");
}

void describeModes(CLI::App& app, tool::CommandOptions& options) {
  CLI::App& shuffle = addCommand(app, options, "shuffle", "Set or print the shuffle mode.");
  shuffle.add_option("mode", options.mode)->check(CLI::IsMember({"off", "tracks", "albums"}));
  CLI::App& repeat = addCommand(app, options, "repeat", "Set or print the repeat mode.");
  repeat.add_option("mode", options.mode)->check(CLI::IsMember({"off", "track", "all"}));
  describeSession(shuffle, options);
  describeSession(repeat, options);
}

void describeLogo(CLI::App& app, tool::CommandOptions& options) {
  CLI::App& logo = addCommand(app, options, "logo",
                              "Show a PNG as the head unit's logo. Playback stops, because the\n"
                              "iPod is connected again.");
  logo.add_option("picture", options.picture, "The PNG")->type_name("FILE.png");
  logo.add_option("-o,--output", options.output, "Only write the bitmap")->type_name("FILE.bmp");
  logo.add_option("--preview", options.preview, "Only write the model's screen")
      ->type_name("FILE.png");
  logo.add_option("--model", options.model,
                  "The model that shows it: an iPod does not show a larger\n"
                  "picture, and the library does not report its size to\n"
                  "programs; default: classic")
      ->type_name("MODEL");
  logo.add_flag("--remove", options.remove, "Show no logo any more");
}

void describeCommands(CLI::App& app, tool::CommandOptions& options) {
  describeState(app, options);
  describeList(app, options);
  describePlayback(app, options);
  describeModes(app, options);
  describeLogo(app, options);
  app.footer(kCommandNotes);
}

/// With --json a wrong command line is a document, too.
int refuseUsage(int argc, char** argv, const std::string& why) {
  for (int i = 1; i < argc; ++i) {
    if (std::string_view(argv[i]) != "--json") continue;
    return tool::printFailure(true, tool::kBadUsage, "bad-usage", why);
  }
  std::cerr << "ipodctl: " << why << "\nTry ipodctl --help.\n";
  return tool::kWrongUsage;
}

constexpr char kServeDescription[] =
    "Keeps an iPod connected, and shows it to a page in the browser and to other programs.\n"
    "It ends with Ctrl-C.\n";

constexpr char kServeExamples[] =
    "Examples:\n"
    "  ipodctl serve --open                                  the iPod of IPODCTL_DEVICES\n"
    "  ipodctl serve --device /tmp/ipod --control /tmp/ctl   a simulated iPod with its buttons\n"
    "  ipodctl serve --port 0 --quiet                        for scripts: any free port\n"
    "  ipodctl serve --listen 192.168.1.2 --token-file FILE  for other computers\n"
    "\n"
    "Exit status: 0 after Ctrl-C, 1 when it cannot listen or the library does not return, 2\n"
    "for a wrong command line.\n";

void describeServe(CLI::App& app, tool::ServeOptions& options) {
  app.footer(kServeExamples);
  app.add_option("--port", options.port, "The port; 0: any free one")
      ->type_name("NUMBER")
      ->check(CLI::Range(0, 65535))
      ->capture_default_str();
  app.add_option("--listen", options.address, "The address of this computer to listen on")
      ->type_name("ADDRESS")
      ->capture_default_str();
  app.add_option("--token-file", options.tokenFile,
                 "The token, of at least 32 characters; default: a new one")
      ->type_name("FILE");
  app.add_option("--control", options.control, "The socket of ipodsim --control")
      ->type_name("SOCKET");
  app.add_option("--device", options.device, "Where IPD1: leads; default: as IPODCTL_DEVICES says")
      ->type_name("PATH|serial:PATH@BAUD|tcp:HOST:PORT");
  app.add_option("--logo", options.logo, "A picture that the iPod shows")->type_name("FILE");
  app.add_option("--page", options.page, "Read the page from a folder, for its developers")
      ->type_name("FOLDER");
  app.add_flag("--open", options.opensBrowser, "Open the page in the browser");
  app.add_flag("--mpris", options.usesMpris, "Be a media player on the session bus");
  app.add_flag("--quiet", options.isQuiet, "Print only where it is ready, and failures");
}

int run(int argc, char** argv) {
  CLI::App app(kDescription, "ipodctl");
  app.set_version_flag("--version", "ipodctl " IPODCTL_VERSION, "Print the version and exit");
  app.require_subcommand(1);
  tool::DoctorOptions options;
  CLI::App& doctor = *app.add_subcommand("doctor", kDoctorDescription);
  describeDoctor(doctor, options);
  tool::CommandOptions commandOptions;
  describeCommands(app, commandOptions);
  tool::ServeOptions serving;
  auto* const serve = app.add_subcommand("serve", kServeDescription);
  describeServe(*serve, serving);
  try {
    app.parse(argc, argv);
  } catch (const CLI::CallForHelp&) {
    std::cout << app.help();
    return tool::kHealthy;
  } catch (const CLI::CallForVersion& version) {
    std::cout << version.what() << '\n';
    return tool::kHealthy;
  } catch (const CLI::ParseError& error) {
    return refuseUsage(argc, argv, error.what());
  }
  if (serve->parsed()) return tool::runServe(serving);
  return doctor.parsed() ? tool::runDoctor(options) : tool::runCommand(commandOptions);
}

}  // namespace

int main(int argc, char** argv) {
  std::signal(SIGPIPE, SIG_IGN);
  try {
    return run(argc, argv);
  } catch (const std::exception& error) {
    std::cerr << "ipodctl: " << error.what() << '\n';
    return tool::kFault;
  }
}
