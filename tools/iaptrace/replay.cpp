#include "iaptrace/replay.h"

#include <sys/signalfd.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <csignal>
#include <cstdio>
#include <iostream>
#include <stdexcept>

#include "iaptrace/replay_as_host.h"
#include "iaptrace/replay_cable.h"
#include "iaptrace/replayed_host.h"
#include "iaptrace/replayed_ipod.h"
#include "trace/trace_parser.h"

namespace iaptrace {
namespace {

enum ReplayStatus { kPlayed = 0, kNotPlayed = 1, kWrongUsage = 2 };

constexpr char kReplayDescription[] =
    "Plays the iPod of a trace to a host, without the iPod. The host opens the link\n"
    "like the device of an iPod, and makes the calls of the recorded session again.\n";

constexpr char kReplayNotes[] =
    "The recorded bytes are sent when the host has sent what the trace has before\n"
    "them. A message of the host needs the same lingo and command, not the same\n"
    "content. It can be missing, then its answers are left out; one that is repeated\n"
    "gets the same answers again; any other one gets no answer. With --strict the\n"
    "first difference ends the replay.\n"
    "\n"
    "Answers that were late in the trace stay late, whatever the speed. The cable is\n"
    "pulled where the trace has a failed read.\n"
    "\n"
    "Examples:\n"
    "  iaptrace replay car.trace --link ./ipod --speed max\n"
    "  iaptrace replay car.trace --as-host --link /tmp/ipod\n"
    "\n"
    "Exit status: 0 played to the end; 1 the host or the iPod differs, or does not go\n"
    "on; 2 wrong usage or an unreadable file.\n";

struct ReplayOptions {
  std::string file;
  std::string link = "/tmp/ipod";
  std::string device;  ///< of --as-host; empty: the link
  std::string of;      ///< the device in the trace; empty: the only one
  std::string speed = "1";
  double patience = 10;
  bool isStrict = false;
  bool isHost = false;
};

[[noreturn]] void refuseUsage(const std::string& why) {
  throw std::invalid_argument(why + "\nTry iaptrace replay --help.");
}

/// Returns the speed; 0 for "max".
double speedOf(const std::string& text) {
  constexpr double kSlowest = 0.01;
  constexpr double kFastest = 1000;
  if (text == "max") return 0;
  size_t end = 0;
  double speed = 0;
  try {
    speed = std::stod(text, &end);
  } catch (const std::exception&) {
    end = 0;
  }
  const bool isUsable = end > 0 && end == text.size() && speed >= kSlowest && speed <= kFastest;
  if (!isUsable) refuseUsage("--speed is max or a number from 0.01 to 1000");
  return speed;
}

void describeReplay(CLI::App& app, ReplayOptions& options) {
  constexpr double kMostPatience = 3600;
  app.add_option("FILE", options.file, "The trace; - is standard input")->required();
  CLI::Option* link = app.add_option("--link", options.link, "Where the host finds the iPod");
  link->capture_default_str()->type_name("PATH");
  app.add_flag("--strict", options.isStrict, "The host must send the same bytes");
  app.add_option("--speed", options.speed, "Divides the pauses; max: none that nothing needs")
      ->capture_default_str()
      ->type_name("N|max");
  app.add_option("--patience", options.patience, "How long the host may do nothing")
      ->capture_default_str()
      ->type_name("SECONDS")
      ->check(CLI::Range(0.1, kMostPatience));
  app.add_option("--of", options.of, "The device, if the trace has several")->type_name("NAME");
  CLI::Option* asHost =
      app.add_flag("--as-host", options.isHost, "Plays the host to an iPod at the link instead");
  app.add_option("--device", options.device, "The terminal device of that iPod")
      ->type_name("PATH")
      ->needs(asHost)
      ->excludes(link);
}

/// Returns false when only the help was wanted.
bool parseReplay(const std::vector<std::string>& arguments, ReplayOptions& options) {
  CLI::App app(kReplayDescription, "iaptrace replay");
  app.footer(kReplayNotes);
  describeReplay(app, options);
  try {
    app.parse(std::vector<std::string>(arguments.rbegin(), arguments.rend()));
  } catch (const CLI::CallForHelp&) {
    std::cout << app.help();
    return false;
  } catch (const CLI::ParseError& error) {
    refuseUsage(error.what());
  }
  return true;
}

std::string deviceOf(const trace::Trace& records, const std::string& wanted) {
  const std::vector<std::string> names = trace::devicesOf(records);
  if (names.empty()) refuseUsage("the trace has no device, so there is nothing to play");
  if (wanted.empty() && names.size() == 1) return names.front();
  if (std::find(names.begin(), names.end(), wanted) != names.end()) return wanted;
  std::string known;
  for (const std::string& name : names)
    known += " " + name;
  refuseUsage("write --of with one of the trace's devices:" + known);
}

/// Returns a descriptor that receives the signals that end the program.
simulator::FileDescriptor catchEndingSignals() {
  sigset_t ending;
  sigemptyset(&ending);
  sigaddset(&ending, SIGINT);
  sigaddset(&ending, SIGTERM);
  sigprocmask(SIG_BLOCK, &ending, nullptr);
  std::signal(SIGPIPE, SIG_IGN);
  return simulator::FileDescriptor(signalfd(-1, &ending, SFD_CLOEXEC));
}

simulator::Time secondsOf(double number) {
  return std::chrono::duration_cast<simulator::Time>(std::chrono::duration<double>(number));
}

void sayLine(const std::string& text) {
  std::printf("%s\n", text.c_str());
  std::fflush(stdout);
}

void complainLine(const std::string& text) { std::fprintf(stderr, "iaptrace: %s\n", text.c_str()); }

int playIpod(const ReplayOptions& options, Plan plan) {
  const simulator::FileDescriptor signals = catchEndingSignals();
  ReplayedIpod::Settings settings;
  settings.accuracy = options.isStrict ? Accuracy::kStrict : Accuracy::kTolerant;
  settings.speed = speedOf(options.speed);
  settings.patience = secondsOf(options.patience);
  ReplayedIpod ipod(std::move(plan), settings);
  ReplayCable cable(ipod, options.link);
  sayLine("iPod ready on " + options.link);
  if (!cable.run(signals.get())) return kPlayed;
  sayLine(ipod.summary());
  if (ipod.state() == ReplayedIpod::State::kEnded) return kPlayed;
  complainLine(ipod.failure());
  return kNotPlayed;
}

int playHost(const ReplayOptions& options, Conversation conversation) {
  const simulator::FileDescriptor signals = catchEndingSignals();
  ReplayedHost::Settings settings;
  settings.speed = speedOf(options.speed);
  ReplayedHost host(std::move(conversation), settings);
  const std::string& path = options.device.empty() ? options.link : options.device;
  if (!replayAsHost(host, path, signals.get())) return kPlayed;
  const std::vector<std::string> differences = host.differences();
  for (const std::string& line : differences)
    sayLine(line);
  sayLine(std::to_string(host.sentCount()) + " messages sent, " +
          std::to_string(differences.size()) + " answered in another way");
  return differences.empty() ? kPlayed : kNotPlayed;
}

int playTrace(const ReplayOptions& options) {
  const trace::Trace records = trace::readTrace(options.file);
  const std::string device = deviceOf(records, options.of);
  if (options.isHost) return playHost(options, conversationOf(records, device));
  return playIpod(options, planOf(records, device));
}

}  // namespace

int runReplay(const std::vector<std::string>& arguments) {
  try {
    ReplayOptions options;
    if (!parseReplay(arguments, options)) return kPlayed;
    speedOf(options.speed);
    return playTrace(options);
  } catch (const std::invalid_argument& error) {
    complainLine(error.what());
    return kWrongUsage;
  } catch (const trace::ParseError& error) {
    complainLine(error.what());
    return kWrongUsage;
  } catch (const simulator::LinkError& error) {
    complainLine(error.what() + std::string("\nTry iaptrace replay --link PATH."));
    return kNotPlayed;
  } catch (const std::exception& error) {
    complainLine(error.what());
    return kNotPlayed;
  }
}

}  // namespace iaptrace
