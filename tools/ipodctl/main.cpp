// The program ipodctl.
#include <CLI/CLI.hpp>
#include <csignal>
#include <exception>
#include <iostream>

#include "ipodctl/doctor.h"
#include "ipodctl/serve/serve.h"

namespace {

constexpr char kDescription[] = "Works with an iPod through the library ipodctl.\n";

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
  app.add_flag("--quiet", options.isQuiet, "Print only where it is ready, and failures");
}

int run(int argc, char** argv) {
  CLI::App app(kDescription, "ipodctl");
  app.set_version_flag("--version", "ipodctl " IPODCTL_VERSION, "Print the version and exit");
  app.require_subcommand(1);
  tool::DoctorOptions options;
  describeDoctor(*app.add_subcommand("doctor", kDoctorDescription), options);
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
    std::cerr << "ipodctl: " << error.what() << "\nTry ipodctl --help.\n";
    return tool::kWrongUsage;
  }
  return serve->parsed() ? tool::runServe(serving) : tool::runDoctor(options);
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
