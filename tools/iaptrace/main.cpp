// iaptrace: explains, replays and converts the traces of a host and an iPod.
#include <csignal>
#include <cstdio>
#include <iostream>

#include "iaptrace/check.h"
#include "iaptrace/command_line.h"
#include "iaptrace/decode.h"
#include "iaptrace/pcapng.h"
#include "iaptrace/personality.h"
#include "iaptrace/redact.h"
#include "iaptrace/replay.h"
#include "iaptrace/stats.h"
#include "trace/trace_parser.h"
#include "wire/printable.h"

namespace iaptrace {
namespace {

struct Subcommand {
  const char* name;
  const char* summary;
  int (*run)(const Arguments& arguments);
};

constexpr Subcommand kSubcommands[] = {
    {"decode", "One line a message: time, direction, command, fields", &runDecode},
    {"stats", "How often and how fast each command was answered; a timeline", &runStats},
    {"check", "What went wrong: the cause, the lines that show it, what to try", &runCheck},
    {"redact", "Replace names, titles and serial numbers", &runRedact},
    {"pcapng", "Convert to a capture file for Wireshark", &runPcapng},
    {"personality", "The model of the iPod, as a file for ipodsim", &runPersonality},
    {"replay", "Plays the iPod of a trace to a host, without the iPod", &runReplay},
};

constexpr char kFooter[] =
    "iaptrace SUBCOMMAND --help explains each of them.\n"
    "\n"
    "A trace is recorded with IPODCTL_TRACE=FILE, or with ipodsim --record FILE.\n"
    "\n"
    "Exit status: 0 done; 1 check: a fault or unknown, others: it could not be done;\n"
    "2 wrong usage, or a file that cannot be read.\n";

volatile std::sig_atomic_t isPipeClosed = 0;

/// After the reader has closed the pipe, as `| head` does, the rest of the output is dropped.
void dropOutputOfClosedPipes() {
  std::signal(SIGPIPE, [](int) { isPipeClosed = 1; });
}

int runSubcommand(const CLI::App& app) {
  for (const Subcommand& each : kSubcommands) {
    const CLI::App* chosen = app.get_subcommand(each.name);
    if (chosen->parsed()) return each.run(chosen->remaining());
  }
  throw UsageError("no subcommand is named. Try iaptrace --help.");
}

int run(const Arguments& arguments) {
  CLI::App app("Explains, replays and converts the traces of a host and an iPod.", "iaptrace");
  app.footer(kFooter);
  app.set_version_flag("--version", "iaptrace " IAPTRACE_VERSION, "Print the version and exit");
  for (const Subcommand& each : kSubcommands)
    app.add_subcommand(each.name, each.summary)->prefix_command()->set_help_flag();
  if (const auto status = parse(app, arguments)) return *status;
  return runSubcommand(app);
}

int complain(const std::string& what, int status) {
  std::cerr << "iaptrace: " << simulator::printable(what) << '\n';
  return status;
}

/// Returns the exit status; another one when the output could not be written.
int flushed(int status) {
  std::cout.flush();
  if (std::cout || isPipeClosed != 0) return status;
  return complain("the output cannot be written. Is the disk full?", kFailed);
}

int guarded(const Arguments& arguments) {
  try {
    return flushed(run(arguments));
  } catch (const UsageError& error) {
    return complain(error.what(), kWrongUsage);
  } catch (const trace::ParseError& error) {
    return complain(error.what(), kWrongUsage);
  } catch (const std::exception& error) {
    return complain(error.what(), kFailed);
  }
}

}  // namespace
}  // namespace iaptrace

int main(int argc, char** argv) {
  iaptrace::dropOutputOfClosedPipes();
  return iaptrace::guarded({argv + 1, argv + argc});
}
