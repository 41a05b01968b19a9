#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <optional>
#include <string>
#include <thread>

namespace tool {

class EventLog;

/// The stage of the connection to the iPod.
enum class Stage {
  kAbsent,      ///< there is none
  kConnecting,  ///< a connection is being made
  kSettling,    ///< it is made, and the iPod is left alone for a second
  kReady,
  kOdd,   ///< an answer is missing or odd, and the iPod is left alone for a second
  kLost,  ///< it has gone
};

struct Connection {
  Stage stage = Stage::kAbsent;
  std::string message;
  int attempt = 0;  ///< since the last connection
  std::optional<std::chrono::steady_clock::time_point> retryAt;
};

/// What plays. A value that is not known is absent.
struct Playback {
  std::optional<std::string> status;
  std::optional<int> index;
  std::optional<int> tracks;
  std::optional<std::string> title, artist, album, genre;
  std::optional<int> position;  ///< ms
  std::optional<std::string> originPath, originName;
};

struct Modes {
  std::optional<std::string> shuffle, repeat;
};

/// Everything that the head unit shows.
struct HeadUnitState {
  Connection connection;
  uint64_t generation = 0;
  std::optional<std::string> ipodName, ipodSerial;
  Playback playback;
  Modes modes;
  std::optional<int> sampleRate;
  std::optional<std::string> logoFile;
};

/// Holds the state. Its thread publishes it when it has changed, at most every 100 ms. All
/// functions may be called on any thread.
class StateBoard {
 public:
  explicit StateBoard(EventLog& log);
  ~StateBoard();
  StateBoard(const StateBoard&) = delete;
  StateBoard& operator=(const StateBoard&) = delete;

  HeadUnitState state() const;
  Stage stage() const;
  uint64_t generation() const;
  /// The state as a JSON document in one line.
  std::string json() const;

  void enter(Stage stage, std::string message);
  /// Says when the next attempt will be.
  void expectRetry(int attempt, std::chrono::steady_clock::time_point when);
  void beginGeneration();
  void setIpod(std::optional<std::string> name, std::optional<std::string> serial);
  void setPlayback(const Playback& playback);
  void setModes(const Modes& modes);
  void setSampleRate(int rate);
  void setLogo(std::optional<std::string> file);
  /// What the worker asks the iPod now; empty: nothing. It is published when it takes long.
  void setWaitingFor(const char* what);

 private:
  using Clock = std::chrono::steady_clock;

  template <class Change>
  void change(Change what);
  void publishChanges();
  bool waitsLong() const;
  std::string documentLocked() const;

  EventLog& events;
  mutable std::mutex mutex;
  std::condition_variable changed;
  HeadUnitState current;
  Clock::time_point stageSince = Clock::now();
  const char* waitingFor = "";
  Clock::time_point waitingSince = Clock::now();
  bool hasShownWait = false;
  bool isChanged = true;
  bool isEnding = false;
  std::thread publisher;
};

}  // namespace tool
