#include "ipodctl/serve/routes.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <limits>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <string_view>

#include "ipodctl/serve/base64.h"
#include "ipodctl/serve/event_stream.h"
#include "ipodctl/serve/head_unit.h"
#include "ipodctl/serve/ipod_control.h"
#include "ipodctl/serve/static_files.h"

namespace tool {
namespace {

using nlohmann::json;

constexpr int kMostNames = 100;
constexpr int kUsualNames = 20;
constexpr int kMostDepth = 8;  ///< of an uploaded document

/// A request that cannot be understood. The message says what to send.
class BadRequest : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// Texts that are not UTF-8 do not end the program.
std::string textOf(const json& document) {
  return document.dump(-1, ' ', false, json::error_handler_t::replace);
}

Answer answerOf(const Outcome& outcome) {
  if (outcome.refusal) {
    return answerOf(Failure{static_cast<int>(*outcome.refusal), outcome.code, outcome.message});
  }
  Answer answer;
  answer.body = textOf(outcome.result.is_object() ? outcome.result : json{{"ok", true}});
  return answer;
}

Answer notFound() {
  return answerOf(Failure{404, "not-found", "docs/head-unit-api.md has the addresses."});
}

template <typename Number>
Number numberIn(const Request& request, const char* name, Number least, Number most) {
  const std::string& text = request.query.at(name);
  Number number = 0;
  const char* const end = text.data() + text.size();
  const auto result = std::from_chars(text.data(), end, number);
  if (result.ec != std::errc() || result.ptr != end || number < least || number > most) {
    throw BadRequest(std::string("Write ") + name + " as a number from " + std::to_string(least) +
                     " to " + std::to_string(most) + ".");
  }
  return number;
}

bool has(const Request& request, const char* name) { return request.query.count(name) > 0; }

ListRequest listRequest(const Request& request, const std::string& path, int usualCount) {
  if (!has(request, "generation")) throw BadRequest("Add ?generation= of /v1/state.");
  ListRequest wanted;
  wanted.path = path;
  wanted.generation = numberIn<uint64_t>(request, "generation", 0, UINT64_MAX);
  wanted.count = usualCount;
  if (has(request, "offset")) {
    wanted.offset = numberIn<int>(request, "offset", 0, std::numeric_limits<int>::max());
  }
  if (has(request, "count")) wanted.count = numberIn<int>(request, "count", 0, kMostNames);
  return wanted;
}

/// Returns the object of the body.
json bodyOf(const Request& request) {
  // A document that is nested deeply would need a deep stack.
  const auto isFlat = [](int depth, json::parse_event_t, const json&) {
    if (depth > kMostDepth) throw BadRequest("Send a document that is not nested.");
    return true;
  };
  json document = json::parse(request.body, isFlat, false);
  if (!document.is_object()) throw BadRequest("Send one JSON object.");
  return document;
}

std::string textIn(const json& document, const char* name) {
  const auto found = document.find(name);
  if (found == document.end() || !found->is_string()) {
    throw BadRequest(std::string("Send a text as ") + name + ".");
  }
  return found->get<std::string>();
}

std::string optionalText(const json& document, const char* name) {
  return document.contains(name) ? textIn(document, name) : "";
}

PlayRequest playRequest(const json& document) {
  PlayRequest wanted;
  wanted.path = textIn(document, "path");
  const auto generation = document.find("generation");
  if (generation == document.end() || !generation->is_number_unsigned()) {
    throw BadRequest("Send the generation of /v1/state as a number.");
  }
  wanted.generation = generation->get<uint64_t>();
  const auto index = document.find("index");
  const bool isAll = index != document.end() && *index == "all";
  const bool isNumber = index != document.end() && index->is_number_unsigned() &&
                        index->get<uint64_t>() <= std::numeric_limits<int>::max();
  if (!isAll && !isNumber) throw BadRequest("Send the index as a number, or \"all\".");
  wanted.index = isAll ? -1 : index->get<int>();
  return wanted;
}

Answer play(const RoutedParts& parts, const Request& request) {
  return answerOf(parts.headUnit.play(playRequest(bodyOf(request)), request.isWanted));
}

Answer command(const RoutedParts& parts, const Request& request) {
  constexpr std::array<std::string_view, 15> kCommands = {"toggle",
                                                          "stop",
                                                          "next-track",
                                                          "previous-track",
                                                          "fast-forward",
                                                          "rewind",
                                                          "end-seek",
                                                          "next",
                                                          "previous",
                                                          "play",
                                                          "pause",
                                                          "previous-group",
                                                          "next-group",
                                                          "previous-track-no-restart",
                                                          ""};
  const std::string name = textIn(bodyOf(request), "command");
  if (name.empty() || std::find(kCommands.begin(), kCommands.end(), name) == kCommands.end()) {
    throw BadRequest("Send a command of docs/head-unit-api.md, such as toggle or next-track.");
  }
  return answerOf(parts.headUnit.command(name, request.isWanted));
}

void requireOneOf(const std::string& value, const std::array<std::string_view, 3>& known,
                  const char* name) {
  if (value.empty() || std::find(known.begin(), known.end(), value) != known.end()) return;
  std::string all;
  for (const std::string_view one : known)
    all += (all.empty() ? "" : ", ") + std::string(one);
  throw BadRequest(std::string("Send as ") + name + " one of " + all + ".");
}

Answer setModes(const RoutedParts& parts, const Request& request) {
  const json document = bodyOf(request);
  const std::string shuffle = optionalText(document, "shuffle");
  const std::string repeat = optionalText(document, "repeat");
  requireOneOf(shuffle, {"off", "tracks", "albums"}, "shuffle");
  requireOneOf(repeat, {"off", "track", "all"}, "repeat");
  if (shuffle.empty() && repeat.empty()) throw BadRequest("Send shuffle, repeat or both.");
  return answerOf(parts.headUnit.setModes(shuffle, repeat, request.isWanted));
}

Answer setLogo(const RoutedParts& parts, const Request& request) {
  const json document = bodyOf(request);
  if (document.value("remove", json(false)) == json(true)) {
    return answerOf(parts.headUnit.setLogo("", request.isWanted));
  }
  const auto png = decodedBase64(textIn(document, "png"));
  if (!png) throw BadRequest("Send the PNG file in base64.");
  try {
    const std::string bitmap = parts.convertLogo(*png, optionalText(document, "model"));
    return answerOf(parts.headUnit.setLogo(bitmap, request.isWanted));
  } catch (const std::runtime_error& error) {
    throw BadRequest(error.what());
  }
}

Answer reconnect(const RoutedParts& parts, const Request& request) {
  bodyOf(request);
  return answerOf(parts.headUnit.reconnect(request.isWanted));
}

Answer explainTrace(const RoutedParts& parts, const Request& request) {
  const std::string trace = textIn(bodyOf(request), "trace");
  try {
    Answer answer;
    answer.body = parts.explain(trace);
    return answer;
  } catch (const std::runtime_error& error) {
    throw BadRequest(error.what());
  }
}

Answer passToIpod(const RoutedParts& parts, const Request& request) {
  bodyOf(request);
  return parts.ipod.pass(request.body, request.isWanted);
}

Answer showState(const RoutedParts& parts, const Request&) {
  Answer answer;
  answer.body = stateDocument(parts);
  return answer;
}

Answer openEvents(const RoutedParts& parts, const Request& request) {
  const auto topics = request.query.find("topics");
  const bool isGiven = topics != request.query.end();
  return parts.events.open(isGiven ? topics->second : "", request.isWanted);
}

Answer downloadTrace(const RoutedParts& parts, const Request&) {
  Answer answer;
  answer.type = "text/plain; charset=utf-8";
  answer.body = parts.trace();
  answer.headers = {{"Content-Disposition", "attachment; filename=\"ipod.trace\""}};
  return answer;
}

Answer showScreen(const RoutedParts& parts, const Request& request) {
  return parts.ipod.screen(request.isWanted);
}

struct Row {
  std::string_view method;
  std::string_view path;
  Answer (*answer)(const RoutedParts&, const Request&);
};

constexpr Row kRows[] = {
    {"GET", "/v1/state", showState},      {"GET", "/v1/events", openEvents},
    {"GET", "/v1/trace", downloadTrace},  {"GET", "/v1/ipod/screen.png", showScreen},
    {"POST", "/v1/play", play},           {"POST", "/v1/command", command},
    {"POST", "/v1/modes", setModes},      {"POST", "/v1/logo", setLogo},
    {"POST", "/v1/reconnect", reconnect}, {"POST", "/v1/trace", explainTrace},
    {"POST", "/v1/ipod", passToIpod},
};

/// Returns what follows the prefix; empty when the path has another one.
std::string restAfter(const std::string& path, std::string_view prefix) {
  return path.compare(0, prefix.size(), prefix) == 0 ? path.substr(prefix.size()) : "";
}

Answer showFile(const StaticFiles& files, const std::string& path) {
  const StaticFiles::File* const file = files.find(path);
  if (file == nullptr) return notFound();
  Answer answer;
  answer.type = file->type;
  answer.body = file->bytes;
  return answer;
}

Answer look(const RoutedParts& parts, const Request& request) {
  const std::string list = restAfter(request.path, "/v1/list/");
  if (!list.empty()) {
    const ListRequest wanted = listRequest(request, list, kUsualNames);
    return answerOf(parts.headUnit.list(wanted, request.isWanted));
  }
  const std::string tabs = restAfter(request.path, "/v1/tabs/");
  if (tabs.empty()) return showFile(parts.files, request.path);
  return answerOf(parts.headUnit.tabs(listRequest(request, tabs, 0), request.isWanted));
}

Answer routed(const RoutedParts& parts, const Request& request) {
  bool isKnown = false;
  for (const Row& row : kRows) {
    if (row.path != request.path) continue;
    if (row.method == request.method) return row.answer(parts, request);
    isKnown = true;
  }
  if (isKnown) return answerOf(Failure{405, "bad-method", "Use GET to look and POST to change."});
  return request.method == "GET" ? look(parts, request) : notFound();
}

}  // namespace

Answer answerOf(const Failure& failure) {
  Answer answer;
  answer.status = failure.status;
  answer.body = textOf({{"error", {{"code", failure.code}, {"message", failure.message}}}});
  return answer;
}

std::string stateDocument(const RoutedParts& parts) {
  json state = parts.headUnit.state();
  state["ipod_control"] = parts.ipod.isThere();
  return textOf(state);
}

void completeState(const RoutedParts& parts, std::string& document) {
  const bool isObject = document.size() > 2 && document.back() == '}';
  if (!isObject || document.find("\"ipod_control\":") != std::string::npos) return;
  document.pop_back();
  document += std::string(",\"ipod_control\":") + (parts.ipod.isThere() ? "true}" : "false}");
}

Answer route(const RoutedParts& parts, const Request& request) {
  try {
    return routed(parts, request);
  } catch (const BadRequest& error) {
    return answerOf(Failure{400, "bad-request", error.what()});
  }
}

}  // namespace tool
