#include "ipodctl/mpris/mpris.h"

#include <sdbus-c++/sdbus-c++.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <deque>
#include <functional>
#include <iostream>
#include <map>
#include <mutex>
#include <thread>
#include <vector>

#include "ipodctl/mpris/mpris_state.h"
#include "ipodctl/serve/event_log.h"
#include "ipodctl/serve/head_unit.h"

namespace tool {
namespace {

using nlohmann::json;
using Metadata = std::map<std::string, sdbus::Variant>;

constexpr char kName[] = "org.mpris.MediaPlayer2.ipodctl";
constexpr char kPath[] = "/org/mpris/MediaPlayer2";
constexpr char kRoot[] = "org.mpris.MediaPlayer2";
constexpr char kPlayer[] = "org.mpris.MediaPlayer2.Player";
constexpr std::chrono::milliseconds kLookAgain(200);
constexpr std::chrono::seconds kMostForRequest(10);
/// Media keys that are held down must not fill the queue of a slow iPod.
constexpr size_t kMostWaiting = 8;

Metadata metadataOf(const MprisState& state) {
  Metadata metadata;
  if (!state.hasTrack) return metadata;
  const sdbus::ObjectPath track("/org/ipodctl/track/" + std::to_string(state.index));
  metadata["mpris:trackid"] = sdbus::Variant(track);
  metadata["xesam:title"] = sdbus::Variant(state.title);
  metadata["xesam:artist"] = sdbus::Variant(std::vector<std::string>{state.artist});
  metadata["xesam:album"] = sdbus::Variant(state.album);
  metadata["xesam:genre"] = sdbus::Variant(std::vector<std::string>{state.genre});
  return metadata;
}

std::string repeatOf(const std::string& loop) {
  if (loop == "Track") return "track";
  if (loop == "Playlist") return "all";
  if (loop == "None") return "off";
  throw sdbus::Error("org.freedesktop.DBus.Error.InvalidArgs",
                     "LoopStatus is None, Track or Playlist");
}

/// Carries the requests out, one after the other.
class Requests {
 public:
  Requests() : thread([this] { run(); }) {}
  ~Requests() {
    {
      const std::lock_guard<std::mutex> lock(mutex);
      isEnding = true;
    }
    changed.notify_all();
    thread.join();
  }
  Requests(const Requests&) = delete;
  Requests& operator=(const Requests&) = delete;

  void add(std::function<void(const Wanted&)> request) {
    {
      const std::lock_guard<std::mutex> lock(mutex);
      if (waiting.size() >= kMostWaiting) {
        throw sdbus::Error("org.freedesktop.DBus.Error.LimitsExceeded",
                           "the iPod is busy; try again in a moment");
      }
      waiting.push_back(std::move(request));
    }
    changed.notify_all();
  }

 private:
  void run() {
    std::unique_lock<std::mutex> lock(mutex);
    for (;;) {
      changed.wait(lock, [this] { return isEnding || !waiting.empty(); });
      if (isEnding) return;
      const auto request = std::move(waiting.front());
      waiting.pop_front();
      lock.unlock();
      const auto end = std::chrono::steady_clock::now() + kMostForRequest;
      request([this, end] { return !isEnding && std::chrono::steady_clock::now() < end; });
      lock.lock();
    }
  }

  std::mutex mutex;
  std::condition_variable changed;
  std::deque<std::function<void(const Wanted&)>> waiting;
  std::atomic<bool> isEnding{false};
  std::thread thread;
};

}  // namespace

/// The object on the bus.
class Mpris::Player {
 public:
  Player(HeadUnit& unit, EventLog& events)
      : headUnit(unit),
        reader(events.read({Topic::kState})),
        shown(mprisState(unit.state())),
        connection(sdbus::createSessionBusConnection(kName)),
        object(sdbus::createObject(*connection, kPath)) {
    describeRoot();
    describeMethods();
    describeProperties();
    describeModes();
    object->finishRegistration();
    connection->enterEventLoopAsync();
    follower = std::thread([this] { follow(); });
  }

  ~Player() {
    isEnding = true;
    follower.join();
    connection->leaveEventLoop();
  }

  Player(const Player&) = delete;
  Player& operator=(const Player&) = delete;

 private:
  MprisState state() const {
    const std::lock_guard<std::mutex> lock(mutex);
    return shown;
  }

  void send(const std::string& command) {
    requests.add([this, command](const Wanted& isWanted) { headUnit.command(command, isWanted); });
  }

  void setModes(const std::string& shuffle, const std::string& repeat) {
    requests.add([=](const Wanted& isWanted) { headUnit.setModes(shuffle, repeat, isWanted); });
  }

  template <class Value>
  void constant(const char* interface, const char* name, Value value) {
    object->registerProperty(name).onInterface(interface).withGetter([=]() { return value; });
  }  // NOLINT(clang-analyzer-cplusplus.NewDeleteLeaks): the property keeps its getter

  void describeRoot() {
    object->registerMethod("Raise").onInterface(kRoot).implementedAs([] {});
    object->registerMethod("Quit").onInterface(kRoot).implementedAs([] {});
    for (const char* const name : {"CanQuit", "CanRaise", "HasTrackList"})
      constant(kRoot, name, false);
    constant(kRoot, "Identity", std::string("iPod"));
    constant(kRoot, "SupportedUriSchemes", std::vector<std::string>{});
    constant(kRoot, "SupportedMimeTypes", std::vector<std::string>{});
  }

  void describeCommand(const char* name, const char* command) {
    object->registerMethod(name).onInterface(kPlayer).implementedAs([=] { send(command); });
  }

  void describeMethods() {
    describeCommand("PlayPause", "toggle");
    describeCommand("Play", "play");
    describeCommand("Pause", "pause");
    describeCommand("Stop", "stop");
    describeCommand("Next", "next-track");
    describeCommand("Previous", "previous-track");
    // Without CanSeek these do nothing.
    object->registerMethod("Seek").onInterface(kPlayer).implementedAs([](int64_t) {});
    object->registerMethod("SetPosition")
        .onInterface(kPlayer)
        .implementedAs([](const sdbus::ObjectPath&, int64_t) {});
    object->registerMethod("OpenUri").onInterface(kPlayer).implementedAs([](const std::string&) {});
    object->registerSignal("Seeked").onInterface(kPlayer).withParameters<int64_t>();
  }

  void describeProperties() {
    for (const char* const name :
         {"CanGoNext", "CanGoPrevious", "CanPlay", "CanPause", "CanControl"})
      constant(kPlayer, name, true);
    constant(kPlayer, "CanSeek", false);
    constant(kPlayer, "MinimumRate", 1.0);
    constant(kPlayer, "MaximumRate", 1.0);
    object->registerProperty("Rate")
        .onInterface(kPlayer)
        .withGetter([] { return 1.0; })
        .withSetter([](const double&) {});
    object->registerProperty("Volume")
        .onInterface(kPlayer)
        .withGetter([] { return 1.0; })
        .withSetter([](const double&) {});
    object->registerProperty("PlaybackStatus").onInterface(kPlayer).withGetter([this] {
      return state().status;
    });
    object->registerProperty("Metadata").onInterface(kPlayer).withGetter([this] {
      return metadataOf(state());
    });
    object->registerProperty("Position").onInterface(kPlayer).withGetter([this] {
      return state().position;
    });
  }

  void describeModes() {
    object->registerProperty("Shuffle")
        .onInterface(kPlayer)
        .withGetter([this] { return state().shuffle; })
        .withSetter([this](const bool& isOn) { setModes(isOn ? "tracks" : "off", ""); });
    object->registerProperty("LoopStatus")
        .onInterface(kPlayer)
        .withGetter([this] { return state().loop; })
        .withSetter([this](const std::string& loop) { setModes("", repeatOf(loop)); });
  }

  void follow() {
    while (!isEnding && !reader->isClosed()) {
      const std::optional<Event> event = reader->next(kLookAgain);
      if (event) show(mprisState(json::parse(event->data, nullptr, false)));
    }
  }

  /// Announces what has changed. A bus that has gone must not end the program.
  void show(const MprisState& now) {
    const MprisState before = state();
    {
      const std::lock_guard<std::mutex> lock(mutex);
      shown = now;
    }
    if (!now.differs(before)) return;
    std::vector<std::string> names = {"PlaybackStatus", "Shuffle", "LoopStatus"};
    if (now.hasOtherTrack(before)) names.emplace_back("Metadata");
    try {
      object->emitPropertiesChangedSignal(kPlayer, names);
    } catch (const sdbus::Error&) {
      // The properties can still be read if the bus is back.
    }
  }

  HeadUnit& headUnit;
  std::unique_ptr<EventLog::Reader> reader;
  mutable std::mutex mutex;
  MprisState shown;
  std::unique_ptr<sdbus::IConnection> connection;
  std::unique_ptr<sdbus::IObject> object;
  Requests requests;
  std::atomic<bool> isEnding{false};
  std::thread follower;
};

Mpris::Mpris(HeadUnit& headUnit, EventLog& events) {
  try {
    player = std::make_unique<Player>(headUnit, events);
  } catch (const sdbus::Error& error) {
    std::cerr << "ipodctl: no media player on the session bus (" << error.getMessage()
              << "); start serve in a desktop session, or under dbus-run-session\n";
  }
}

Mpris::~Mpris() = default;

}  // namespace tool
