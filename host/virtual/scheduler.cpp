#include "scheduler.h"

#include <algorithm>
#include <utility>

namespace virtual_platform {
namespace {

/// Calls take time, too: otherwise a loop of calls would never reach a deadline.
constexpr Time kCallTime = std::chrono::microseconds(1);
/// Only an endless loop makes so many calls while no thread waits.
constexpr unsigned kMostCalls = 300000;
/// The time that the library's threads have to end after the host's threads.
constexpr Time kLeavingTime = std::chrono::seconds(10);

}  // namespace

struct Scheduler::Thread {
  Thread(Owner threadOwner, unsigned number, std::function<void()> body,
         std::function<void()> whenKilled)
      : owner(threadOwner),
        name((owner == Owner::kHost ? "host " : "library ") + std::to_string(number)),
        fiber(std::move(body)),
        onKill(std::move(whenKilled)) {}

  const Owner owner;
  const std::string name;
  Fiber fiber;
  const std::function<void()> onKill;
  std::optional<Wait> wait;
  DWORD lastError = ERROR_SUCCESS;
  std::optional<unsigned> callsToHold;
  bool isHeld = false;
  bool isPreempted = false;
  bool ended = false;
};

Scheduler::Scheduler(std::uint64_t seed) : random(seed) {}

Scheduler::~Scheduler() = default;

void Scheduler::spawn(Owner owner, std::function<void()> body, std::function<void()> onKill) {
  reap();
  threads.push_back(std::make_unique<Thread>(
      owner, ++made[static_cast<int>(owner)],
      [this, body = std::move(body)] {
        body();
        end();
      },
      std::move(onKill)));
  ++running[static_cast<int>(owner)];
}

std::string Scheduler::run() {
  outside = std::make_unique<Fiber>();
  if (Thread* const first = next()) {
    current = first;
    outside->switchTo(first->fiber);
  }
  current = nullptr;
  return std::exchange(failure, {});
}

void Scheduler::pass() {
  clock += kCallTime;
  ++callsSinceJump;
  if (isDue(current->callsToHold)) current->isHeld = true;
  if (current->owner == Owner::kLibrary && isDue(callsToKill)) {
    leave();
    if (current->onKill) current->onKill();
  }
  yield();
}

/// Counts the calls down and returns true once, at 0.
bool Scheduler::isDue(std::optional<unsigned>& callsLeft) {
  if (!callsLeft || (*callsLeft)-- > 0) return false;
  callsLeft.reset();
  return true;
}

void Scheduler::killAfter(unsigned calls) { callsToKill = calls; }

void Scheduler::holdAfter(unsigned calls) { current->callsToHold = calls; }

bool Scheduler::resume() { return clear(&Thread::isHeld); }

bool Scheduler::clear(bool Thread::*flag) {
  bool isAnySet = false;
  for (const auto& thread : threads)
    isAnySet = std::exchange((*thread).*flag, false) || isAnySet;
  return isAnySet;
}

void Scheduler::yield() {
  if (isDue(switchesToPreemption[static_cast<int>(current->owner)])) current->isPreempted = true;
  switchFrom(*current);
}

void Scheduler::preemptAfter(Owner owner, unsigned switches) {
  switchesToPreemption[static_cast<int>(owner)] = switches;
}

bool Scheduler::await(Wait wait) {
  if (wait.isOver()) return true;
  if (wait.deadline && *wait.deadline <= clock) return false;
  Thread& self = *current;
  self.wait.emplace(std::move(wait));
  switchFrom(self);
  const bool isOver = self.wait->isOver();
  self.wait.reset();
  return isOver;
}

const std::string& Scheduler::threadName() const {
  static const std::string& outsideName = *new std::string("outside");
  return current ? current->name : outsideName;
}

DWORD& Scheduler::lastError() { return current->lastError; }

/// Ends the thread that calls it. This is the last step of the thread.
void Scheduler::end() {
  Thread& self = *current;
  leave();
  Thread* const following = next();
  current = following;
  self.fiber.leaveTo(following ? following->fiber : *outside);
}

void Scheduler::leave() {
  current->ended = true;
  --running[static_cast<int>(current->owner)];
  if (running[static_cast<int>(Owner::kHost)] == 0 && !hostsEnded) hostsEnded = clock;
}

void Scheduler::switchFrom(Thread& thread) {
  Thread* const following = next();
  if (following == &thread) return;
  current = following;
  thread.fiber.switchTo(following ? following->fiber : *outside);
}

/// Returns the thread that runs now; null when the run is over.
Scheduler::Thread* Scheduler::next() {
  while (mayGoOn()) {
    if (Thread* const picked = pickRunnable()) return picked;
    if (!clear(&Thread::isPreempted) && !jump() && !resume()) break;
  }
  if (running[0] + running[1] > 0) failure = complaint();
  return nullptr;
}

bool Scheduler::mayGoOn() {
  if (running[0] + running[1] == 0 || callsSinceJump > kMostCalls) return false;
  return !hostsEnded || clock <= *hostsEnded + kLeavingTime;
}

Scheduler::Thread* Scheduler::pickRunnable() {
  runnable.clear();
  for (const auto& thread : threads) {
    if (isRunnable(*thread)) runnable.push_back(thread.get());
  }
  if (runnable.empty()) return nullptr;
  return runnable.size() == 1 ? runnable.front() : runnable[draw() % runnable.size()];
}

bool Scheduler::isRunnable(const Thread& thread) const {
  if (thread.ended || thread.isHeld || thread.isPreempted) return false;
  const auto& wait = thread.wait;
  return !wait || wait->isOver() || (wait->deadline && *wait->deadline <= clock);
}

/// Moves the clock to the next time at which a thread may be able to run. Returns false when there
/// is none.
bool Scheduler::jump() {
  std::optional<Time> moment;
  for (const auto& thread : threads) {
    if (thread->ended || !thread->wait) continue;
    moment = earlier(moment, thread->wait->deadline);
    if (thread->wait->nextChange) moment = earlier(moment, thread->wait->nextChange());
  }
  if (moment) clock = std::max(*moment, clock + kCallTime);
  callsSinceJump = 0;
  return moment.has_value();
}

std::string Scheduler::complaint() const {
  std::string text =
      callsSinceJump > kMostCalls ? "calls without an end:" : "threads that do not end:";
  for (const auto& thread : threads) {
    if (thread->ended) continue;
    text += " " + thread->name + " " + (thread->wait ? "in " + thread->wait->what() : "runs") + ";";
  }
  return text;
}

void Scheduler::reap() {
  const auto isGone = [this](const auto& thread) {
    return thread->ended && thread.get() != current;
  };
  threads.erase(std::remove_if(threads.begin(), threads.end(), isGone), threads.end());
}

/// SplitMix64.
std::uint64_t Scheduler::draw() {
  std::uint64_t mixed = random += 0x9e3779b97f4a7c15u;
  mixed = (mixed ^ (mixed >> 30)) * 0xbf58476d1ce4e5b9u;
  mixed = (mixed ^ (mixed >> 27)) * 0x94d049bb133111ebu;
  return mixed ^ (mixed >> 31);
}

}  // namespace virtual_platform
