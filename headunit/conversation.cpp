#include "conversation.h"

#include <iterator>

#include "ipodctl.h"
#include "pause.h"
#include "screen_text.h"

namespace {

constexpr int kPauseMilliseconds = 1000;

bool saysWhichTrackPlays() { return IpodGetTrackIndex(nullptr) == 1; }

bool saysItsShuffleMode() {
  int mode = 0;
  IpodGetShuffleMode(&mode);
  return mode != 0;
}

bool saysItsName() {
  TextBuffer name;
  IpodGetName(name.units(), TextBuffer::kSize);
  return !name.text().empty();
}

/// An iPod can always answer these. The answer to another question is not taken for theirs.
constexpr bool (*kControlQuestions[])() = {saysWhichTrackPlays, saysItsShuffleMode, saysItsName};

}  // namespace

void leaveIpodAlone() { waitMilliseconds(kPauseMilliseconds); }

void Conversation::begin() { lost = !answersAnything(); }

bool Conversation::ask(const Question& question) {
  if (lost) return false;
  if (question() && isInStep()) return true;
  lost = !isInStep() && !answersAnything();
  if (lost) return false;
  leaveIpodAlone();
  const bool isAnswered = question() && isInStep();
  if (!isAnswered) leaveIpodAlone();
  return isAnswered;
}

/// An answer that arrives late or twice is not the control question's, which fails then.
bool Conversation::isInStep() { return kControlQuestions[control](); }

/// Waits before each question, and asks more than one, because an iPod can leave a single one
/// unanswered.
bool Conversation::answersAnything() {
  for (control = 0; control < std::size(kControlQuestions); ++control) {
    leaveIpodAlone();
    if (isInStep()) return true;
  }
  control = 0;
  return false;
}
