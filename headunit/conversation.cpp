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

/// An iPod can always answer these questions. The answer to another question is not mistaken for
/// theirs.
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

/// Returns whether the control question gets its answer. It fails when the previous answer arrives
/// late or twice.
bool Conversation::isInStep() { return kControlQuestions[control](); }

/// Waits before each question, and asks more than one question, because an iPod may not answer a
/// single one.
bool Conversation::answersAnything() {
  for (control = 0; control < std::size(kControlQuestions); ++control) {
    leaveIpodAlone();
    if (isInStep()) return true;
  }
  control = 0;
  return false;
}
