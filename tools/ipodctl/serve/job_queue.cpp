#include "ipodctl/serve/job_queue.h"

#include <algorithm>
#include <utility>

namespace tool {
namespace {

/// A request of a client that has gone leaves the queue after this time.
constexpr std::chrono::milliseconds kLookForClient(100);
constexpr int kMostAttempts = 3;

const Refused kNoAnswerCame{Refusal::kNoAnswer, "no-answer",
                            "The iPod did not answer. Ask again in a second."};

}  // namespace

Refused JobQueue::noIpod(const std::string& message) {
  return {Refusal::kNoIpod, "no-ipod", message};
}

void JobQueue::carryOut(Job job) {
  auto entry = std::make_shared<Entry>();
  entry->job = std::move(job);
  std::unique_lock<std::mutex> lock(mutex);
  if (isOver) throw noIpod("The head unit ends. Start ipodctl serve again.");
  if (isRefusing && entry->job.needsIpod) throw noIpod(reason);
  waiting.push_front(entry);
  arrived.notify_all();
  while (entry->end == End::kNone) {
    if (ends.wait_for(lock, kLookForClient) != std::cv_status::timeout) continue;
    if (entry->isRunning || entry->end != End::kNone || entry->job.isWanted()) continue;
    waiting.remove(entry);
    throw NotWanted();
  }
  if (entry->end == End::kRefused) throw Refused(entry->refused);
  if (entry->end == End::kNotWanted) throw NotWanted();
}

void JobQueue::refuse(const std::string& message) {
  const std::lock_guard<std::mutex> lock(mutex);
  isRefusing = true;
  reason = message;
  refuseWaiting();
}

void JobQueue::refuseWaiting() {
  const Entries entries = waiting;
  for (const std::shared_ptr<Entry>& each : entries) {
    // The part that is being done uses what belongs to the caller.
    if (!each->isRunning && (isOver || each->job.needsIpod)) finish(each, noIpod(reason));
  }
}

void JobQueue::accept() {
  const std::lock_guard<std::mutex> lock(mutex);
  isRefusing = false;
}

void JobQueue::close() {
  {
    const std::lock_guard<std::mutex> lock(mutex);
    isOver = true;
    reason = "The head unit ends. Start ipodctl serve again.";
    refuseWaiting();
  }
  arrived.notify_all();
}

bool JobQueue::isClosed() const {
  const std::lock_guard<std::mutex> lock(mutex);
  return isOver;
}

/// Playback commands keep their order.
std::shared_ptr<JobQueue::Entry> JobQueue::first() const {
  const auto isUrgent = [](const std::shared_ptr<Entry>& each) {
    return each->job.urgency == Urgency::kPlayback;
  };
  const auto oldest = std::find_if(waiting.rbegin(), waiting.rend(), isUrgent);
  if (oldest != waiting.rend()) return *oldest;
  return waiting.empty() ? nullptr : waiting.front();
}

void JobQueue::finish(const std::shared_ptr<Entry>& entry, End end) {
  entry->end = end;
  waiting.remove(entry);
  ends.notify_all();
}

void JobQueue::finish(const std::shared_ptr<Entry>& entry, const Refused& why) {
  entry->refused = why;
  finish(entry, End::kRefused);
}

void JobQueue::workUntil(Clock::time_point limit) {
  std::shared_ptr<Entry> entry;
  {
    std::unique_lock<std::mutex> lock(mutex);
    arrived.wait_until(lock, limit, [this] { return isOver || !waiting.empty(); });
    entry = first();
    if (entry == nullptr || isOver) return;
    entry->isRunning = true;
  }
  doPartOf(entry);
}

void JobQueue::doPartOf(const std::shared_ptr<Entry>& entry) {
  try {
    if (!entry->job.isWanted()) throw NotWanted();
    if (entry->job.doPart()) {
      endPart(entry, [&] { finish(entry, End::kDone); });
    } else {
      endPart(entry, [] {});
    }
  } catch (const NotWanted&) {
    endPart(entry, [&] { finish(entry, End::kNotWanted); });
  } catch (const Refused& refused) {
    endPart(entry, [&] { finish(entry, refused); });
  } catch (const OddAnswer&) {
    const bool wasLast = ++entry->job.attempts == kMostAttempts;
    endPart(entry, [&] {
      if (wasLast) finish(entry, kNoAnswerCame);
    });
    throw;
  }
}

template <class Ending>
void JobQueue::endPart(const std::shared_ptr<Entry>& entry, Ending ending) {
  const std::lock_guard<std::mutex> lock(mutex);
  entry->isRunning = false;
  ending();
  if (isOver && entry->end == End::kNone) finish(entry, noIpod(reason));
}

void JobQueue::waitUntil(Clock::time_point limit) {
  std::unique_lock<std::mutex> lock(mutex);
  arrived.wait_until(lock, limit, [this] { return isOver || !waiting.empty(); });
}

}  // namespace tool
