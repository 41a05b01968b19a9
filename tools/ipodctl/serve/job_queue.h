#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <list>
#include <memory>
#include <mutex>
#include <string>

#include "ipodctl/serve/refusal.h"

namespace tool {

/// Playback is first. Of lists and names the newest request is first: what the view shows now.
enum class Urgency { kNames, kPlayback };

/// A request that waits for the worker.
struct Job {
  /// Does a part of the work, with a few requests to the iPod. Returns true when all is done. It
  /// may be called again from the beginning after OddAnswer.
  std::function<bool()> doPart;
  std::function<bool()> isWanted;
  Urgency urgency = Urgency::kNames;
  bool needsIpod = true;  ///< it is refused when there is none
  int attempts = 0;       ///< that ended with an odd answer
};

/// The requests of all clients, in the order in which the worker is to carry them out. All
/// functions may be called on any thread.
class JobQueue {
 public:
  using Clock = std::chrono::steady_clock;

  /// Waits until the job is done, refused, or not wanted any more. Throws Refused or NotWanted.
  void carryOut(Job job);

  /// Refuses every job that needs an iPod, also later ones, until accept().
  void refuse(const std::string& message);
  void accept();
  /// Refuses every job from now on.
  void close();

  /// For the worker: waits for a job until `limit`, and does a part of it. OddAnswer goes to the
  /// caller, and the job waits for its next attempt.
  void workUntil(Clock::time_point limit);

  /// For the worker: waits until `limit`, or until a job arrives that needs no iPod.
  void waitUntil(Clock::time_point limit);

  bool isClosed() const;

 private:
  enum class End { kNone, kDone, kRefused, kNotWanted };

  struct Entry {
    Job job;
    End end = End::kNone;
    Refused refused{};
    bool isRunning = false;
  };
  using Entries = std::list<std::shared_ptr<Entry>>;

  std::shared_ptr<Entry> first() const;
  void finish(const std::shared_ptr<Entry>& entry, End end);
  void finish(const std::shared_ptr<Entry>& entry, const Refused& why);
  void refuseWaiting();
  void doPartOf(const std::shared_ptr<Entry>& entry);
  template <class Ending>
  void endPart(const std::shared_ptr<Entry>& entry, Ending ending);
  static Refused noIpod(const std::string& message);

  mutable std::mutex mutex;
  std::condition_variable arrived;  ///< there is a job, or the end
  std::condition_variable ends;     ///< a job is over
  Entries waiting;                  ///< the newest first
  bool isRefusing = true;
  bool isOver = false;
  std::string reason;
};

}  // namespace tool
