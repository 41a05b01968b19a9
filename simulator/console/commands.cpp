#include "console/commands.h"

#include <cstdio>
#include <cstdlib>
#include <sstream>
#include <stdexcept>

#include "console/buttons.h"
#include "faults/fault_text.h"

namespace simulator {

namespace {

constexpr char kPlay[] = "play";
constexpr char kPause[] = "pause";
constexpr char kNext[] = "next";
constexpr char kPrevious[] = "previous";

constexpr unsigned long kMostRate = 192000;

struct Command {
  const char* name;
  const char* argument;
  const char* meaning;
  std::string (*run)(PtyIpod&, const std::string& argument);
};

std::string unplug(PtyIpod& pty, const std::string&) {
  pty.unplug();
  return "unplugged";
}

std::string plug(PtyIpod& pty, const std::string&) {
  try {
    pty.plug();
  } catch (const std::runtime_error& refused) {
    return refused.what();
  }
  return "plugged in on " + pty.slavePath();
}

template <const char* kButton>
std::string press(PtyIpod& pty, const std::string&) {
  pressButton(pty, kButton);
  return "";
}

std::string rate(PtyIpod& pty, const std::string& argument) {
  char* end = nullptr;
  const unsigned long hertz = std::strtoul(argument.c_str(), &end, 10);
  const bool isValid = !argument.empty() && *end == '\0' && hertz > 0 && hertz <= kMostRate;
  if (!isValid) return "write a rate in Hz, like: rate 48000";
  pty.act([&](SimulatedIpod& ipod, Time now) {
    ipod.announceSampleRate(now, static_cast<uint32_t>(hertz));
  });
  return "";
}

std::string fault(PtyIpod& pty, const std::string& argument) {
  try {
    pty.access([&](SimulatedIpod& ipod) { addFault(ipod.faults(), argument); });
  } catch (const std::invalid_argument& refused) {
    return refused.what();
  }
  return "";
}

std::string clear(PtyIpod& pty, const std::string&) {
  pty.access([](SimulatedIpod& ipod) { ipod.faults().clear(); });
  return "";
}

std::string describePlaying(const SimulatedIpod& ipod, Time now) {
  const std::optional<uint32_t> current = ipod.player().currentTrack();
  if (!current) return "stopped";
  const Track& track = ipod.library().tracks[*current];
  const auto position = std::chrono::duration_cast<seconds>(ipod.player().position(now));
  const auto second = static_cast<long>(position.count());
  char times[48];
  std::snprintf(times, sizeof times, "%ld:%02ld of %u:%02u", second / 60, second % 60,
                track.lengthMs / 60000, track.lengthMs / 1000 % 60);
  const bool isPaused = ipod.player().state() == PlayState::kPaused;
  return std::string(isPaused ? "paused: " : "plays: ") + track.title + " by " + track.artist +
         ", " + times;
}

std::string describeState(SimulatedIpod& ipod, Time now) {
  const SimulatedIpod::Counters& counters = ipod.counters();
  std::ostringstream text;
  text << (ipod.plugged() ? "plugged in" : "unplugged")
       << (ipod.inExtendedMode() ? ", in the extended mode\n" : "\n") << describePlaying(ipod, now)
       << "\n"
       << counters.messagesReceived << " messages received, " << counters.messagesSent << " sent, "
       << ipod.faults().injectedInAll() << " faults";
  return text.str();
}

std::string status(PtyIpod& pty, const std::string&) { return pty.act(describeState); }

std::string help(PtyIpod&, const std::string&);

constexpr Command kCommands[] = {
    {"unplug", "", "pull the cable", unplug},
    {"plug", "", "plug it in again", plug},
    {"play", "", "press play", press<kPlay>},
    {"pause", "", "press pause", press<kPause>},
    {"next", "", "skip to the next track", press<kNext>},
    {"previous", "", "skip back", press<kPrevious>},
    {"rate", "HZ", "announce this sample rate to the accessory", rate},
    {"fault", "KIND", "add a fault, as with --fault", fault},
    {"clear", "", "end all faults", clear},
    {"status", "", "what the iPod is doing", status},
    {"help", "", "this list", help},
    {"quit", "", "end, as does the end of input", nullptr},
};

std::string help(PtyIpod&, const std::string&) {
  constexpr int kColumn = 14;
  std::string text;
  for (const Command& command : kCommands) {
    const std::string usage = std::string(command.name) + " " + command.argument;
    char line[80];
    std::snprintf(line, sizeof line, "  %-*s%s", kColumn, usage.c_str(), command.meaning);
    text += (text.empty() ? "" : "\n") + std::string(line);
  }
  return text;
}

}  // namespace

CommandResult doCommand(PtyIpod& pty, const std::string& line) {
  std::istringstream words(line);
  std::string name;
  std::string argument;
  words >> name >> argument;
  if (name.empty()) return {};
  for (const Command& command : kCommands) {
    if (name != command.name) continue;
    if (command.run == nullptr) return {"", true};
    return {command.run(pty, argument), false};
  }
  return {"there is no command '" + name + "'; try help", false};
}

}  // namespace simulator
