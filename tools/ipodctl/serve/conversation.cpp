#include "ipodctl/serve/conversation.h"

#include <ipodctl.h>

#include <iterator>

#include "ipodctl/serve/ipod_text.h"
#include "ipodctl/serve/refusal.h"

namespace tool {
namespace {

using std::chrono::milliseconds;

/// A request without an answer ends after a second.
constexpr milliseconds kNoAnswerAfter(950);
/// After a lost link a request fails without having been sent.
constexpr milliseconds kAtOnce(20);
constexpr milliseconds kBetweenFailures(80);
constexpr milliseconds kQuiet(1000);
constexpr int kFailuresOfLostLink = 3;
constexpr int kSilencesOfLostIpod = 2;
constexpr int kMostQuestions = 6;

bool saysWhichTrackPlays() { return IpodGetTrackIndex(nullptr) == 1; }

bool saysItsShuffleMode() {
  int mode = 0;
  IpodGetShuffleMode(&mode);
  return mode != 0;
}

bool saysItsName() {
  IpodText name;
  IpodGetName(name.buffer(), IpodText::kSize);
  return name.isWritten();
}

/// An iPod can always answer these questions. The answer to another question is not mistaken for
/// theirs.
constexpr bool (*kControls[])() = {saysWhichTrackPlays, saysItsShuffleMode, saysItsName};

}  // namespace

bool Conversation::ask(size_t question) {
  const Clock::time_point begin = Clock::now();
  const bool isAnswered = kControls[question]();
  latency = Clock::now() - begin;
  return isAnswered;
}

bool Conversation::isInStep() { return ask(control); }

void Conversation::check(Clock::time_point begin, int requests) {
  const Clock::duration taken = Clock::now() - begin;
  if (!isInStep()) throw OddAnswer();
  if (taken >= kNoAnswerAfter + (requests - 1) * latency) throw OddAnswer();
}

/// Another control question is asked each time, because an iPod may not answer a single one.
bool Conversation::isIpodThere(const std::function<void()>& onSilence) {
  int silences = 0;
  int failures = 0;
  for (int i = 0; i < kMostQuestions; ++i) {
    control = static_cast<size_t>(i) % std::size(kControls);
    if (isInStep()) {
      pause(kQuiet);
      return true;
    }
    if (latency >= kNoAnswerAfter) {
      if (++silences == kSilencesOfLostIpod) return false;
      onSilence();
    } else if (latency < kAtOnce) {
      if (++failures == kFailuresOfLostLink) return false;
      pause(kBetweenFailures);
    } else {
      pause(kQuiet);
    }
  }
  return false;
}

}  // namespace tool
