#include "iaptrace/replay.h"

#include <sys/signalfd.h>

#include <csignal>
#include <iostream>

#include "iaptrace/command_line.h"
#include "iaptrace/replay_as_host.h"
#include "iaptrace/replay_cable.h"
#include "iaptrace/trace_source.h"
#include "trace/trace_parser.h"
#include "wire/printable.h"

namespace iaptrace {
namespace {

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
    "  iaptrace replay car.trace --as-host --link /tmp/ipod\n";

struct ReplayOptions {
  std::string file;
  std::string link = "/tmp/ipod";
  std::string device;
  std::string speed = "1";
  double patience = 10;
  bool isStrict = false;
  bool isHost = false;
};

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
  if (isUsable) return speed;
  throw UsageError(
      "--speed: write max, or a number from 0.01 to 1000. Try iaptrace replay --help.");
}

void describe(CLI::App& app, ReplayOptions& options) {
  constexpr double kLeastPatience = 0.1;
  constexpr double kMostPatience = 3600;
  app.footer(kReplayNotes);
  app.add_option("FILE", options.file, "The trace; - is standard input")->required();
  app.add_option("--device", options.device, "The device, when the trace has several")
      ->type_name("NAME");
  app.add_option("--link", options.link, "Where the host finds the iPod")
      ->capture_default_str()
      ->type_name("PATH");
  CLI::Option* strict =
      app.add_flag("--strict", options.isStrict, "The host must send the same bytes");
  app.add_option("--speed", options.speed, "Divides the pauses; max: none that nothing needs")
      ->capture_default_str()
      ->type_name("N|max");
  app.add_option("--patience", options.patience, "How long the other end may do nothing")
      ->capture_default_str()
      ->type_name("SECONDS")
      ->check(CLI::Range(kLeastPatience, kMostPatience));
  app.add_flag("--as-host", options.isHost,
               "Plays the host, to the iPod at the link or terminal device PATH")
      ->excludes(strict);
}

/// Returns a descriptor that receives the signals that end the program.
simulator::FileDescriptor catchEndingSignals() {
  sigset_t ending;
  sigemptyset(&ending);
  sigaddset(&ending, SIGINT);
  sigaddset(&ending, SIGTERM);
  sigprocmask(SIG_BLOCK, &ending, nullptr);
  return simulator::FileDescriptor(signalfd(-1, &ending, SFD_CLOEXEC));
}

simulator::Time secondsOf(double number) {
  return std::chrono::duration_cast<simulator::Time>(std::chrono::duration<double>(number));
}

void sayLine(const std::string& text) { std::cout << simulator::printable(text) << std::endl; }

int playIpod(const ReplayOptions& options, Plan plan) {
  const simulator::FileDescriptor signals = catchEndingSignals();
  ReplayedIpod::Settings settings;
  settings.accuracy = options.isStrict ? Accuracy::kStrict : Accuracy::kTolerant;
  settings.speed = speedOf(options.speed);
  settings.patience = secondsOf(options.patience);
  ReplayedIpod ipod(std::move(plan), settings);
  try {
    ReplayCable cable(ipod, options.link);
    sayLine("iPod ready on " + options.link);
    if (!cable.run(signals.get())) return kDone;
  } catch (const simulator::LinkError& error) {
    throw Failure(error.what() + std::string(". Try iaptrace replay --link PATH."));
  }
  sayLine(ipod.summary());
  if (ipod.state() == ReplayedIpod::State::kEnded) return kDone;
  throw Failure(ipod.failure());
}

int playHost(const ReplayOptions& options, Conversation conversation) {
  const simulator::FileDescriptor signals = catchEndingSignals();
  ReplayedHost::Settings settings;
  settings.speed = speedOf(options.speed);
  ReplayedHost host(std::move(conversation), settings);
  if (!replayAsHost(host, options.link, signals.get())) return kDone;
  const std::vector<std::string> differences = host.differences();
  for (const std::string& line : differences)
    sayLine(line);
  const auto counted = [](size_t count, const std::string& one) {
    return std::to_string(count) + " " + one + (count == 1 ? "" : "s");
  };
  sayLine(counted(host.sentCount(), "message") + " sent; " +
          (differences.empty() ? "the iPod answers as in the trace"
                               : counted(differences.size(), "difference")));
  return differences.empty() ? kDone : kFailed;
}

}  // namespace

int runReplay(const std::vector<std::string>& arguments) {
  CLI::App app(kReplayDescription, "iaptrace replay");
  ReplayOptions options;
  describe(app, options);
  if (const auto status = parse(app, arguments)) return *status;
  speedOf(options.speed);
  const trace::Trace records = trace::readTrace(options.file);
  const std::string device = deviceOf(records, options.device, options.file);
  if (device.empty()) throw UsageError(options.file + " has no device. There is nothing to play.");
  if (options.isHost) return playHost(options, conversationOf(records, device));
  return playIpod(options, planOf(records, device));
}

}  // namespace iaptrace
