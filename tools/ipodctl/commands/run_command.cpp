#include "ipodctl/commands/run_command.h"

#include <csignal>
#include <iostream>
#include <stdexcept>

#include "ipodctl/client/session_client.h"
#include "ipodctl/commands/fields.h"
#include "ipodctl/commands/format.h"
#include "ipodctl/commands/logo_command.h"
#include "ipodctl/device_map.h"
#include "wire/printable.h"

namespace tool {
namespace {

using nlohmann::json;

constexpr int kMostItems = 100;
constexpr char kWantsServe[] = "No ipodctl serve is running. Start it, then retry.";
constexpr char kStatusFormat[] = "{status}\t{position}\t{title} - {artist} ({album})";
constexpr char kStoppedFormat[] = "{status}\t{message}";
constexpr char kInfoFormat[] =
    "iPod         {name}\nserial       {serial}\nconnection   {message}\n"
    "sample rate  {sample_rate} Hz\nshuffle      {shuffle}\nrepeat       {repeat}\n"
    "logo         {logo}";
constexpr char kListFormat[] = "{index}\t{name}\t{opens}";

volatile std::sig_atomic_t isInterrupted = 0;

std::string documentText(const json& document) {
  return document.dump(-1, ' ', false, json::error_handler_t::replace);
}

void say(const CommandOptions& options, const std::string& sentence) {
  if (!options.json) std::cerr << "ipodctl: " << sentence << '\n';
}

/// One line for each change; a pipe that is closed ends the command.
bool printLine(const std::string& line) { return bool(std::cout << line << std::endl); }

std::string filled(const std::string& text, const json& state) {
  return Format(text, stateFields()).fill([&](const std::string& name) {
    return stateField(state, name);
  });
}

bool hasIpod(const json& state) {
  const std::string stage = stateField(state, "stage");
  return stage != "absent" && stage != "lost";
}

/// Without an iPod the state still has the track that played last.
std::string stateLine(const CommandOptions& options, const json& state) {
  if (!options.format.empty()) return filled(options.format, state);
  const std::string index = stateField(state, "index");
  const bool hasTrack = hasIpod(state) && !index.empty() && index != "-1";
  return filled(hasTrack ? kStatusFormat : kStoppedFormat, state);
}

std::optional<ServeAddress> addressOf(const CommandOptions& options) {
  if (options.url.empty()) return findServe();
  return serveAt(options.url, options.tokenFile);
}

/// Without a serve the command holds a connection, where `mayConnect` says so.
std::unique_ptr<PlayerClient> clientFor(const CommandOptions& options, bool mayConnect,
                                        const std::string& advice) {
  if (const std::optional<ServeAddress> address = addressOf(options)) {
    if (options.verbose)
      say(options, "asks ipodctl serve at " + simulator::printable(address->url));
    return makeServeClient(*address);
  }
  if (!mayConnect) throw CommandFailure{kNoServe, "no-serve", advice};
  say(options,
      "no ipodctl serve is running, so this command connects the iPod itself. That stops what\n"
      "plays, and an iPod stops playing when its accessory leaves.");
  if (!options.device.empty()) mapDevice("IPD1:", options.device);
  return makeSessionClient({options.log, options.verbose});
}

uint64_t generationOf(const json& state) {
  const auto found = state.find("generation");
  const bool isNumber = found != state.end() && found->is_number_unsigned();
  return isNumber ? found->get<uint64_t>() : 0;
}

/// Calls `work` with the current generation, once more when the iPod was connected again meanwhile.
template <class Work>
auto withGeneration(PlayerClient& client, Work work) {
  try {
    return work(generationOf(client.state()));
  } catch (const CommandFailure& failure) {
    if (failure.code != "stale-generation") throw;
  }
  return work(generationOf(client.state()));
}

void finish(const CommandOptions& options, json document, const char* through,
            const std::string& text) {
  if (options.json) {
    document["via"] = through;
    printLine(documentText(document));
  } else if (!text.empty()) {
    printLine(text);
  }
}

/// The session has ended before the output: until then standard output is the library's.
void showState(const CommandOptions& options) {
  auto client = clientFor(options, true, "");
  const json state = client->state();
  const char* const through = client->name();
  client.reset();
  const bool isInfo = options.command == "info" && options.format.empty();
  const std::string text = isInfo ? filled(kInfoFormat, state) : stateLine(options, state);
  finish(options, state, through, text);
  if (!hasIpod(state)) throw CommandFailure{kNoIpod, "", ""};
}

/// Joins the parts of a list that a request can have.
json listOf(const CommandOptions& options, PlayerClient& client, uint64_t generation) {
  const int most = options.all ? kMostItems : std::min(options.count, kMostItems);
  json document = client.list(options.path, generation, options.offset, most);
  const auto sizeOf = [](const json& part) { return part.value("items", json::array()).size(); };
  const size_t wanted = options.all ? SIZE_MAX : static_cast<size_t>(options.count);
  while (sizeOf(document) < wanted) {
    const size_t left = wanted - sizeOf(document);
    const int count = static_cast<int>(std::min<size_t>(left, kMostItems));
    const int offset = options.offset + static_cast<int>(sizeOf(document));
    if (offset >= document.value("count", 0)) break;
    const json part = client.list(options.path, generation, offset, count);
    if (sizeOf(part) == 0) break;
    for (const json& item : part["items"])
      document["items"].push_back(item);
  }
  return document;
}

std::string itemLines(const CommandOptions& options, const json& document) {
  const Format format(options.format.empty() ? kListFormat : options.format, itemFields());
  std::string lines;
  for (const json& item : document.value("items", json::array())) {
    const auto valueOf = [&](const std::string& name) {
      return itemField(item, options.path, name);
    };
    lines += (lines.empty() ? "" : "\n") + format.fill(valueOf);
  }
  return lines;
}

void showList(const CommandOptions& options) {
  auto client = clientFor(options, true, "");
  const json document = withGeneration(
      *client, [&](uint64_t generation) { return listOf(options, *client, generation); });
  const char* const through = client->name();
  client.reset();
  finish(options, document, through, itemLines(options, document));
}

void change(const CommandOptions& options, const std::string& path, const json& body) {
  const auto client = clientFor(options, false, kWantsServe);
  client->change(path, body);
  finish(options, {{"ok", true}}, client->name(), "");
}

/// Until Ctrl-C: an iPod stops playing when its accessory leaves.
void hold(const CommandOptions& options, PlayerClient& client) {
  say(options, "the iPod plays until Ctrl-C.");
  std::signal(SIGINT, [](int) { isInterrupted = 1; });
  std::signal(SIGTERM, [](int) { isInterrupted = 1; });
  client.watch([](const json&) { return isInterrupted == 0; });
}

json indexOf(const CommandOptions& options) {
  if (options.index.empty()) return 0;
  if (options.index == "all") return "all";
  return std::stoi(options.index);
}

void playList(const CommandOptions& options) {
  constexpr char kAdvice[] =
      "No ipodctl serve is running, and an iPod stops playing when its accessory leaves. Start "
      "ipodctl serve, or add --hold, which plays until Ctrl-C.";
  auto client = clientFor(options, options.hold, kAdvice);
  withGeneration(*client, [&](uint64_t generation) {
    client->change(
        "/v1/play",
        {{"generation", generation}, {"path", options.path}, {"index", indexOf(options)}});
    return true;
  });
  const std::string through = client->name();
  if (through == "session") hold(options, *client);
  client.reset();
  finish(options, {{"ok", true}}, through.c_str(), "");
}

void play(const CommandOptions& options) {
  if (!options.path.empty()) return playList(options);
  change(options, "/v1/command", {{"command", "play"}});
}

void pausePlayback(const CommandOptions& options) {
  change(options, "/v1/command", {{"command", "pause"}});
}

void next(const CommandOptions& options) {
  change(options, "/v1/command", {{"command", "next-track"}});
}

void previous(const CommandOptions& options) {
  change(options, "/v1/command", {{"command", "previous-track"}});
}

/// Without a mode the command prints the present one.
void setMode(const CommandOptions& options) {
  if (!options.mode.empty()) return change(options, "/v1/modes", {{options.command, options.mode}});
  auto client = clientFor(options, true, "");
  const json state = client->state();
  const char* const through = client->name();
  client.reset();
  const std::string mode = stateField(state, options.command);
  if (mode.empty()) throw CommandFailure{kNoIpod, "no-ipod", "No iPod is ready. Plug one in."};
  finish(options, {{options.command, mode}}, through, mode);
}

void watch(const CommandOptions& options) {
  const auto client = clientFor(options, false, kWantsServe);
  std::string before;
  int lines = 0;
  client->watch([&](const json& state) {
    const std::string line = options.json ? documentText(state) : stateLine(options, state);
    if (line == before) return true;
    before = line;
    return printLine(line) && (options.lines == 0 || ++lines < options.lines);
  });
}

void changeLogo(const CommandOptions& options) {
  if (!options.output.empty() || !options.preview.empty()) {
    finish(options, writeLogo(options), "file", "");
    return;
  }
  const json body = logoRequest(options);
  const auto client =
      clientFor(options, false, "No ipodctl serve is running. Start it, or add -o FILE.bmp.");
  say(options, "the iPod shows a logo only after a new connection, so playback stops.");
  client->change("/v1/logo", body);
  finish(options, {{"ok", true}}, client->name(), "");
}

struct CommandRow {
  const char* name;
  void (*run)(const CommandOptions&);
};

constexpr CommandRow kCommands[] = {
    {"status", showState},    {"info", showState}, {"ls", showList},    {"play", play},
    {"pause", pausePlayback}, {"next", next},      {"prev", previous},  {"shuffle", setMode},
    {"repeat", setMode},      {"watch", watch},    {"logo", changeLogo}};

/// A wrong format is found before the iPod is disturbed.
void requireFormat(const CommandOptions& options) {
  try {
    if (!options.format.empty()) {
      Format(options.format, options.command == "ls" ? itemFields() : stateFields());
    }
  } catch (const std::runtime_error& error) {
    throw CommandFailure{kBadUsage, "bad-usage", error.what()};
  }
}

void run(const CommandOptions& options) {
  requireFormat(options);
  for (const CommandRow& row : kCommands) {
    if (options.command == row.name) return row.run(options);
  }
  throw CommandFailure{kBadUsage, "bad-usage", "There is no such command; try ipodctl --help."};
}

}  // namespace

int printFailure(bool isJson, int exitStatus, const std::string& code, const std::string& message) {
  if (code.empty()) return exitStatus;  // the output says it
  if (isJson) {
    printLine(documentText({{"error", {{"code", code}, {"message", message}}}}));
  } else {
    std::cerr << "ipodctl: " << simulator::printable(message) << '\n';
  }
  return exitStatus;
}

int runCommand(const CommandOptions& options) {
  try {
    run(options);
    return kDone;
  } catch (const CommandFailure& failure) {
    return printFailure(options.json, failure.exitStatus, failure.code, failure.message);
  } catch (const std::exception& error) {
    return printFailure(options.json, kFailed, "failed", error.what());
  }
}

}  // namespace tool
