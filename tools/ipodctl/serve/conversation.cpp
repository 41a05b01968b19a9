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
  if (taken >= requests * kNoAnswerAfter) throw OddAnswer();  // none of them was answered
  if (!isInStep()) throw OddAnswer();
  if (taken >= kNoAnswerAfter + (requests - 1) * latency) throw OddAnswer();
}

bool Conversation::isSilence(Clock::duration taken) { return taken >= kNoAnswerAfter; }

/// Another control question is asked each time, because an iPod may not answer a single one.
bool Conversation::isIpodThere(bool wasSilent, const std::function<void()>& onOdd) {
  int silences = wasSilent ? 1 : 0;
  int failures = 0;
  if (wasSilent) onOdd();
  for (int i = 0; i < kMostQuestions; ++i) {
    control = static_cast<size_t>(i) % std::size(kControls);
    const bool isAnswered = isInStep();
    if (!isAnswered && isSilence(latency)) {
      if (++silences == kSilencesOfLostIpod) return false;
      onOdd();
    } else if (!isAnswered && latency < kAtOnce) {
      if (++failures == kFailuresOfLostLink) return false;
      pause(kBetweenFailures);
    } else {
      onOdd();
      pause(kQuiet);
      if (isAnswered) return true;
    }
  }
  return false;
}

}  // namespace tool
