#include "device/identification.h"

#include <algorithm>

namespace simulator {

namespace {

constexpr uint8_t kCapabilities = static_cast<uint8_t>(AccessoryInfoType::kCapabilities);
constexpr uint8_t kLastInfoType = 10;
constexpr uint8_t kRemoteUiModeOn = 1;

/// Appends what a question contains in addition to its type.
void appendDetails(PayloadWriter& question, uint8_t type, const Personality& personality) {
  if (type == static_cast<uint8_t>(AccessoryInfoType::kMinimumFirmware)) {
    question.u32(personality.modelId);
    for (uint8_t part : personality.softwareVersion)
      question.u8(part);
  }
  if (type == static_cast<uint8_t>(AccessoryInfoType::kMinimumLingoVersion)) {
    question.u8(static_cast<uint8_t>(Lingo::kExtendedInterface));
  }
}

}  // namespace

void Identification::begin() {
  stop();
  askWhenDue(kCapabilities);
  if (!waitsForAnswers()) startAudio();
}

void Identification::stop() {
  state.timers.cancel(nextStep);
  asked.reset();
  wasRepeated = false;
  questions.clear();
  audio.stop();
}

void Identification::takeAccessoryInfo(PayloadReader& data) {
  const uint8_t type = data.u8();
  if (state.personality.acknowledgesAccessoryInfo) state.acknowledge(Status::kOk);
  if (asked != type) return;
  if (type == kCapabilities) planQuestions(data.u32());
  askNext();
}

bool Identification::waitsForAnswers() const {
  return state.personality.accessoryInfoDelay <= Time(0);
}

void Identification::askWhenDue(uint8_t type) {
  if (waitsForAnswers()) return ask(type);
  nextStep = state.timers.at(state.now + state.personality.accessoryInfoDelay,
                             [this, type] { ask(type); });
}

void Identification::ask(uint8_t type) {
  asked = type;
  PayloadWriter question;
  question.u8(type);
  appendDetails(question, type, state.personality);
  state.sendUnasked(Lingo::kGeneral, kGetAccessoryInfo, question.take());
  nextStep = state.timers.at(state.now + state.personality.accessoryInfoPatience,
                             [this] { patienceIsOver(); });
}

void Identification::askNext() {
  state.timers.cancel(nextStep);
  asked.reset();
  if (!questions.empty()) {
    const uint8_t type = questions.front();
    questions.pop_front();
    return askWhenDue(type);
  }
  if (waitsForAnswers()) startAudio();
}

/// Ends the wait for an answer. The first question is repeated once; a later one is not.
void Identification::patienceIsOver() {
  const bool mayRepeat =
      asked == kCapabilities && state.personality.repeatsAccessoryInfo && !wasRepeated;
  if (!mayRepeat) return askNext();
  wasRepeated = true;
  askWhenDue(kCapabilities);
}

void Identification::planQuestions(uint32_t capabilities) {
  for (uint8_t type = kCapabilities + 1; type <= kLastInfoType; ++type) {
    if ((capabilities >> type & 1) != 0) questions.push_back(type);
  }
  for (uint8_t type : state.personality.extraAccessoryInfo) {
    const bool isPlanned = std::find(questions.begin(), questions.end(), type) != questions.end();
    if (!isPlanned) questions.push_back(type);
  }
}

void Identification::startAudio() {
  constexpr uint32_t kAudioBit = 1u << static_cast<uint8_t>(Lingo::kDigitalAudio);
  if ((state.announcedLingoes & kAudioBit) == 0) return finish();
  audio.start([this] { finish(); });
}

void Identification::finish() {
  if (state.personality.identificationEnd != IdentificationEnd::kRemoteUiMode) return;
  state.setExtendedMode(true);
  state.sendUnasked(Lingo::kGeneral, kReturnRemoteUiMode, {kRemoteUiModeOn});
}

}  // namespace simulator
