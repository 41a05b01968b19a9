#include "ipodctl/serve/state_board.h"

#include <nlohmann/json.hpp>
#include <utility>

#include "ipodctl/serve/event_log.h"

namespace tool {
namespace {

using nlohmann::json;
using std::chrono::milliseconds;

constexpr milliseconds kBetweenEvents(100);
/// A wait that is longer is shown.
constexpr milliseconds kLongWait(500);
constexpr milliseconds kLookAgain(250);

constexpr const char* kStageNames[] = {"absent", "connecting", "settling", "ready", "odd", "lost"};

template <class Value>
json valueOf(const std::optional<Value>& value) {
  return value ? json(*value) : json(nullptr);
}

int64_t millisecondsOf(std::chrono::steady_clock::duration time) {
  return std::chrono::duration_cast<milliseconds>(time).count();
}

json documentOf(const Playback& playback) {
  json origin = nullptr;
  if (playback.originPath) {
    origin = {{"path", *playback.originPath}, {"name", valueOf(playback.originName)}};
  }
  return {{"status", valueOf(playback.status)},
          {"index", valueOf(playback.index)},
          {"tracks", valueOf(playback.tracks)},
          {"title", valueOf(playback.title)},
          {"artist", valueOf(playback.artist)},
          {"album", valueOf(playback.album)},
          {"genre", valueOf(playback.genre)},
          {"position_ms", valueOf(playback.position)},
          {"origin", origin}};
}

json documentOf(const Connection& connection, std::chrono::steady_clock::time_point now) {
  json retry = nullptr;
  if (connection.retryAt) {
    retry = std::max<int64_t>(0, millisecondsOf(*connection.retryAt - now));
  }
  return {{"stage", kStageNames[static_cast<int>(connection.stage)]},
          {"message", connection.message},
          {"attempt", connection.attempt},
          {"retry_in_ms", retry}};
}

}  // namespace

StateBoard::StateBoard(EventLog& log) : events(log), publisher([this] { publishChanges(); }) {}

StateBoard::~StateBoard() {
  {
    const std::lock_guard<std::mutex> lock(mutex);
    isEnding = true;
  }
  changed.notify_all();
  publisher.join();
}

template <class Change>
void StateBoard::change(Change what) {
  {
    const std::lock_guard<std::mutex> lock(mutex);
    what();
    isChanged = true;
  }
  changed.notify_all();
}

HeadUnitState StateBoard::state() const {
  const std::lock_guard<std::mutex> lock(mutex);
  return current;
}

Stage StateBoard::stage() const {
  const std::lock_guard<std::mutex> lock(mutex);
  return current.connection.stage;
}

uint64_t StateBoard::generation() const {
  const std::lock_guard<std::mutex> lock(mutex);
  return current.generation;
}

std::string StateBoard::json() const {
  const std::lock_guard<std::mutex> lock(mutex);
  return documentLocked();
}

void StateBoard::enter(Stage stage, std::string message) {
  change([&] {
    if (stage != current.connection.stage) stageSince = Clock::now();
    current.connection.stage = stage;
    current.connection.message = std::move(message);
    current.connection.retryAt.reset();
  });
}

void StateBoard::expectRetry(int attempt, Clock::time_point when) {
  change([&] {
    current.connection.attempt = attempt;
    current.connection.retryAt = when;
  });
}

void StateBoard::beginGeneration() {
  change([&] {
    ++current.generation;
    current.connection.attempt = 0;
    current.playback = {};
    current.modes = {};
    current.ipodName.reset();
    current.ipodSerial.reset();
  });
}

void StateBoard::setIpod(std::optional<std::string> name, std::optional<std::string> serial) {
  change([&] {
    current.ipodName = std::move(name);
    current.ipodSerial = std::move(serial);
  });
}

void StateBoard::setPlayback(const Playback& playback) {
  change([&] { current.playback = playback; });
}

void StateBoard::setModes(const Modes& modes) {
  change([&] { current.modes = modes; });
}

void StateBoard::setSampleRate(int rate) {
  change([&] { current.sampleRate = rate; });
}

void StateBoard::setLogo(std::optional<std::string> file) {
  change([&] { current.logoFile = std::move(file); });
}

void StateBoard::setWaitingFor(const char* what) {
  const std::lock_guard<std::mutex> lock(mutex);
  waitingFor = what;
  waitingSince = Clock::now();
  if (hasShownWait) isChanged = true;
}

/// A wait is not worth an event until it is long.
bool StateBoard::waitsLong() const {
  return *waitingFor != 0 && Clock::now() - waitingSince >= kLongWait;
}

void StateBoard::publishChanges() {
  std::unique_lock<std::mutex> lock(mutex);
  while (!isEnding) {
    if (!isChanged && !(waitsLong() && !hasShownWait)) {
      changed.wait_for(lock, kLookAgain);
      continue;
    }
    isChanged = false;
    hasShownWait = waitsLong();
    std::string document = documentLocked();
    lock.unlock();
    events.publish(Topic::kState, std::move(document));
    lock.lock();
    changed.wait_for(lock, kBetweenEvents, [this] { return isEnding; });
  }
}

std::string StateBoard::documentLocked() const {
  const Clock::time_point now = Clock::now();
  nlohmann::json connection = documentOf(current.connection, now);
  connection["since_ms"] = millisecondsOf(now - stageSince);
  connection["waiting_for"] = waitsLong() ? nlohmann::json(waitingFor) : nlohmann::json(nullptr);
  const nlohmann::json document = {
      {"version", 1},
      {"connection", connection},
      {"generation", current.generation},
      {"ipod", {{"name", valueOf(current.ipodName)}, {"serial", valueOf(current.ipodSerial)}}},
      {"playback", documentOf(current.playback)},
      {"modes",
       {{"shuffle", valueOf(current.modes.shuffle)}, {"repeat", valueOf(current.modes.repeat)}}},
      {"audio", {{"sample_rate", valueOf(current.sampleRate)}}},
      {"logo", {{"file", valueOf(current.logoFile)}}}};
  return document.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
}

}  // namespace tool
