#include "control/control_verbs.h"

#include <algorithm>
#include <nlohmann/json.hpp>
#include <stdexcept>

#include "console/buttons.h"
#include "control/base64.h"
#include "control/control_help.h"
#include "control/mode_names.h"
#include "faults/fault_text.h"
#include "screen/png_file.h"

namespace simulator {

namespace {

using Json = nlohmann::ordered_json;

constexpr uint64_t kMostTracks = 1000000;
constexpr uint64_t kMostPositionMs = 0xFFFFFFFF;
constexpr uint64_t kUsualTimeoutMs = 5000;
constexpr uint64_t kMostTimeoutMs = 60000;
constexpr size_t kMostFaults = 1000;

/// An error that is the answer to the request.
class Refusal : public std::runtime_error {
 public:
  Refusal(const char* errorCode, const std::string& message)
      : std::runtime_error(message), code(errorCode) {}
  const char* const code;
};

std::string lineOf(const Json& answer) {
  return answer.dump(-1, ' ', false, Json::error_handler_t::replace);
}

std::string refusalLine(const char* code, const std::string& message) {
  return lineOf({{"ok", false}, {"error", {{"code", code}, {"message", message}}}});
}

Json okay() { return {{"ok", true}}; }

/// The keys and values of a request. A value of a wrong kind is refused.
class Values {
 public:
  explicit Values(const Json& request) : object(request) {}

  bool has(const char* key) const { return object.contains(key); }
  std::string text(const char* key) const { return at(key, "a text", isText).get<std::string>(); }
  bool flag(const char* key) const { return at(key, "true or false", isFlag).get<bool>(); }
  uint64_t number(const char* key, uint64_t most) const {
    const std::string range = "a whole number from 0 to " + std::to_string(most);
    const uint64_t value = at(key, range, isNumber).get<uint64_t>();
    if (value > most) refuse(key, range);
    return value;
  }

 private:
  static bool isText(const Json& value) { return value.is_string(); }
  static bool isFlag(const Json& value) { return value.is_boolean(); }
  static bool isNumber(const Json& value) { return value.is_number_unsigned(); }

  [[noreturn]] static void refuse(const char* key, const std::string& wanted) {
    throw Refusal("bad-value", "The value of " + std::string(key) + " must be " + wanted + ".");
  }
  const Json& at(const char* key, const std::string& wanted, bool (*fits)(const Json&)) const {
    if (!has(key)) {
      throw Refusal("missing-key",
                    "The key " + std::string(key) + " is missing; its value is " + wanted + ".");
    }
    if (!fits(object[key])) refuse(key, wanted);
    return object[key];
  }

  const Json& object;
};

int64_t msOf(Time time) { return std::chrono::duration_cast<milliseconds>(time).count(); }

Json describeTrack(const Track& track) {
  return {{"title", track.title}, {"artist", track.artist},   {"album", track.album},
          {"genre", track.genre}, {"rate", track.sampleRate}, {"length_ms", track.lengthMs}};
}

void describePlaying(Json& answer, const SimulatedIpod& ipod, Time now) {
  const Player& player = ipod.player();
  const std::optional<uint32_t> track = player.currentTrack();
  answer["state"] = nameOf(player.state());
  answer["track"] = track ? describeTrack(ipod.library().tracks[*track]) : Json();
  answer["index"] = track ? Json(player.list().currentIndex()) : Json();
  answer["tracks"] = player.list().size();
  answer["position_ms"] = msOf(player.position(now));
  answer["shuffle"] = nameOf(player.shuffle());
  answer["repeat"] = nameOf(player.repeat());
}

Json describe(const SimulatedIpod& ipod, PtyIpod::Cable cable, const std::string& link) {
  Json answer = okay();
  answer["plugged"] = cable.isPlugged;
  answer["extended"] = ipod.inExtendedMode();
  answer["accessory"] = cable.hasAccessory;
  answer["personality"] = ipod.personality().preset;
  answer["name"] = ipod.name();
  answer["link"] = link;
  describePlaying(answer, ipod, cable.now);
  answer["faults"] = faultTexts(ipod.faults());
  answer["faults_struck"] = ipod.faults().injectedInAll();
  answer["messages"] = {{"received", ipod.counters().messagesReceived},
                        {"sent", ipod.counters().messagesSent}};
  answer["screen"] = {{"width", ipod.personality().screenWidth},
                      {"height", ipod.personality().screenHeight}};
  return answer;
}

/// Returns the screen as it is now.
LiveScreen::Shown shownNow(const PtyIpod& pty, LiveScreen& screen) {
  pty.inspect(
      [&](const SimulatedIpod& ipod, PtyIpod::Cable cable) { screen.look(ipod, cable.now); });
  return screen.shown();
}

Json statusOf(const PtyIpod& pty, LiveScreen& screen) {
  const std::string link = pty.slavePath();
  Json answer = pty.inspect([&](const SimulatedIpod& ipod, PtyIpod::Cable cable) {
    screen.look(ipod, cable.now);
    return describe(ipod, cable, link);
  });
  answer["screen"]["revision"] = screen.shown().revision;
  return answer;
}

[[noreturn]] void refusePlugged(const std::string& change) {
  throw Refusal("plugged",
                "The cable is plugged in. Send {\"do\":\"unplug\"} first, then " + change + ".");
}

PlayState stateOf(const std::string& name) {
  for (const PlayState state : {PlayState::kStopped, PlayState::kPlaying, PlayState::kPaused}) {
    if (name == nameOf(state)) return state;
  }
  throw Refusal("bad-value", "The value of state must be stopped, playing or paused.");
}

WaitConditions conditionsOf(const Values& values) {
  WaitConditions wanted;
  if (values.has("state")) wanted.state = stateOf(values.text("state"));
  if (values.has("extended")) wanted.extended = values.flag("extended");
  if (values.has("accessory")) wanted.accessory = values.flag("accessory");
  if (values.has("plugged")) wanted.plugged = values.flag("plugged");
  if (values.has("title")) wanted.title = values.text("title");
  if (values.has("position_ms")) {
    wanted.position = milliseconds(values.number("position_ms", kMostPositionMs));
  }
  if (values.has("screen_revision")) {
    wanted.screenRevision = values.number("screen_revision", UINT64_MAX);
  }
  return wanted;
}

Json describeLibrary(const Catalogue& catalogue) {
  const auto size = [&](Category category) { return catalogue.table(category).names.size(); };
  Json answer = okay();
  answer["name"] = catalogue.library().name;
  answer["tracks"] = catalogue.trackCount();
  answer["artists"] = size(Category::kArtist);
  answer["albums"] = size(Category::kAlbum);
  answer["genres"] = size(Category::kGenre);
  answer["playlists"] = catalogue.library().playlists.size();
  return answer;
}

Json helpAnswer() {
  Json answer = okay();
  for (const VerbHelp& verb : verbHelp()) {
    answer["verbs"].push_back(
        {{"verb", verb.name}, {"keys", verb.keys}, {"meaning", verb.meaning}});
  }
  return answer;
}

/// What the verbs use.
struct Request {
  const Values values;
  PtyIpod& pty;
  ReplaceableIpod& replaceable;
  LiveScreen& screen;
  std::optional<PendingWait>& wait;
};

struct Verb {
  const char* name;
  Json (*run)(const Request&);

  static Json status(const Request& request) { return statusOf(request.pty, request.screen); }

  static Json press(const Request& request) {
    const std::string button = request.values.text("button");
    if (!pressButton(request.pty, button)) {
      throw Refusal("unknown-button",
                    "There is no button " + button + "; the buttons are " + buttonNames() + ".");
    }
    return okay();
  }

  static Json seek(const Request& request) {
    const Time position = milliseconds(request.values.number("position_ms", kMostPositionMs));
    const bool isDone = request.pty.act([&](SimulatedIpod& ipod, Time now) {
      if (!ipod.player().currentTrack()) return false;
      ipod.moveTo(now, position);
      return true;
    });
    if (!isDone) {
      throw Refusal("nothing-plays",
                    "Nothing plays. Send {\"do\":\"press\",\"button\":\"play\"} first.");
    }
    return okay();
  }

  static Json unplug(const Request& request) {
    request.pty.unplug();
    return okay();
  }

  static void changeModel(const Request& request) {
    const std::string name = request.values.text("personality");
    std::optional<Personality> model;
    try {
      model = personality(name);
    } catch (const std::invalid_argument& refused) {
      throw Refusal("unknown-personality", refused.what());
    }
    if (!request.replaceable.changeModel(request.pty, *model)) refusePlugged("plug another model");
  }

  static Json plug(const Request& request) {
    if (request.values.has("personality")) changeModel(request);
    try {
      request.pty.plug();
    } catch (const std::runtime_error& refused) {
      throw Refusal("cannot-plug", refused.what());
    }
    Json answer = okay();
    answer["link"] = request.pty.slavePath();
    return answer;
  }

  /// Checks the fault before anything changes.
  static void checkFault(const std::string& text) {
    Random random(1);
    FaultPlan plan(random);
    try {
      addFault(plan, text);
    } catch (const std::invalid_argument& refused) {
      throw Refusal("bad-fault", refused.what() + std::string("; see ipodsim --help-faults"));
    }
  }

  static void add(SimulatedIpod& ipod, const std::string& text) {
    if (ipod.faults().added().size() >= kMostFaults) {
      throw Refusal("too-many-faults", "There are " + std::to_string(kMostFaults) +
                                           " faults. Send {\"do\":\"fault\",\"clear\":true} "
                                           "first.");
    }
    addFault(ipod.faults(), text);
  }

  /// With both keys the old faults are removed first.
  static Json fault(const Request& request) {
    const bool clears = request.values.has("clear") && request.values.flag("clear");
    const bool adds = !clears || request.values.has("fault");
    const std::string text = adds ? request.values.text("fault") : "";
    if (adds) checkFault(text);
    return request.pty.access([&](SimulatedIpod& ipod) {
      if (clears) ipod.faults().clear();
      if (adds) add(ipod, text);
      Json answer = okay();
      answer["faults"] = faultTexts(ipod.faults());
      return answer;
    });
  }

  static Json library(const Request& request) {
    if (request.values.has("tracks")) {
      const size_t tracks = request.values.number("tracks", kMostTracks);
      if (!request.replaceable.changeTracks(request.pty, tracks)) refusePlugged("change the music");
    }
    return describeLibrary(request.replaceable.ipod().catalogue());
  }

  static Json screen(const Request& request) {
    const LiveScreen::Shown shown = shownNow(request.pty, request.screen);
    Json answer = okay();
    answer["png"] = base64(encodePng(*shown.picture));
    answer["width"] = shown.picture->width;
    answer["height"] = shown.picture->height;
    answer["revision"] = shown.revision;
    return answer;
  }

  static Json waitUntil(const Request& request) {
    const Values& values = request.values;
    const uint64_t limit =
        values.has("timeout_ms") ? values.number("timeout_ms", kMostTimeoutMs) : kUsualTimeoutMs;
    request.wait =
        PendingWait{conditionsOf(values), std::chrono::steady_clock::now() + milliseconds(limit)};
    return {};
  }

  static Json help(const Request&) { return helpAnswer(); }
};

const Verb* findVerb(const std::string& name) {
  static constexpr Verb kVerbs[] = {
      {"status", Verb::status},   {"press", Verb::press},   {"seek", Verb::seek},
      {"unplug", Verb::unplug},   {"plug", Verb::plug},     {"fault", Verb::fault},
      {"library", Verb::library}, {"screen", Verb::screen}, {"wait-until", Verb::waitUntil},
      {"help", Verb::help},
  };
  const auto* const found = std::find_if(std::begin(kVerbs), std::end(kVerbs),
                                         [&](const Verb& verb) { return name == verb.name; });
  return found == std::end(kVerbs) ? nullptr : found;
}

Json parsed(const std::string& line) {
  Json request = Json::parse(line, nullptr, false);
  if (!request.is_object()) {
    throw Refusal("not-json", "Write one JSON object in each line, like {\"do\":\"status\"}.");
  }
  return request;
}

/// A key that a verb does not have is a mistake that would remain unseen.
void checkKeys(const Json& request, const std::string& verb) {
  for (const auto& [key, value] : request.items()) {
    if (key == "do" || verbHasKey(verb, key)) continue;
    throw Refusal("unknown-key",
                  "The verb " + verb + " has no key " + key + "; " + keysSentence(verb));
  }
}

}  // namespace

ControlAnswer ControlVerbs::run(const std::string& line) {
  const Json request = parsed(line);
  const Values values(request);
  const std::string name = values.text("do");
  const Verb* const verb = findVerb(name);
  if (verb == nullptr) {
    throw Refusal("unknown-verb",
                  "There is no verb " + name + "; the verbs are " + verbNames() + ".");
  }
  checkKeys(request, name);
  ControlAnswer answer;
  const Json result = verb->run({values, pty, replaceable, screen, answer.wait});
  if (!answer.wait) answer.line = lineOf(result);
  return answer;
}

ControlAnswer ControlVerbs::answer(const std::string& line) {
  try {
    return run(line);
  } catch (const Refusal& refused) {
    return {refusalLine(refused.code, refused.what()), std::nullopt};
  } catch (const std::exception& failed) {
    return {refusalLine("failed", failed.what()), std::nullopt};
  }
}

std::optional<std::string> ControlVerbs::answer(const PendingWait& wait, SteadyTime now,
                                                SteadyTime& again) {
  const WaitLook look = lookFor(wait.conditions, pty, screen);
  if (look.isTrue) return lineOf(statusOf(pty, screen));
  if (now >= wait.deadline) {
    return refusalLine("timeout",
                       "This did not happen in time. The verb status says what the iPod does.");
  }
  again = std::min(wait.deadline, now + look.again);
  return std::nullopt;
}

std::string ControlVerbs::refusalOfLongLine(size_t limit) {
  return refusalLine("line-too-long", "A line has at most " + std::to_string(limit) +
                                          " bytes. Connect again, and send shorter lines.");
}

std::string ControlVerbs::refusalOfClient(size_t limit) {
  return refusalLine("too-many-clients", "There are " + std::to_string(limit) +
                                             " connections already. Close one of them first.");
}

}  // namespace simulator
