// Every frame from the iPod is withheld, late or replaced.
#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include "virtual/forged_sweep.h"

namespace virtual_session {
namespace {

using std::chrono::milliseconds;
using virtual_platform::ComingFrame;

constexpr double kMost = 0.9;

Forgery late(int wait) {
  return {std::to_string(wait) + "-ms-late", delayedBy(milliseconds(wait))};
}

std::vector<ComingFrame> nothing(const ForgedFrame&) { return {}; }

std::vector<Forgery> otherHeaders() {
  std::vector<Forgery> some;
  for (uint16_t command = 0; command <= simulator::kReturnColorDisplayImageLimits + 1; ++command) {
    some.push_back(
        replaced("command-" + std::to_string(command),
                 [command](const ForgedFrame& frame) { return frame.withCommand(command); }));
  }
  for (const uint8_t lingo : Bytes{0x00, 0x01, 0x02, 0x03, 0x04, 0x0A, 0x7F, 0xFF}) {
    some.push_back(replaced("lingo-" + std::to_string(lingo),
                            [lingo](const ForgedFrame& frame) { return frame.withLingo(lingo); }));
  }
  return some;
}

std::vector<Forgery> acknowledgements() {
  std::vector<Forgery> some;
  for (const uint8_t status : Bytes{1, 2, 3, 4, 5, 6, 7, 0xFF}) {
    some.push_back(
        replaced("refused-" + std::to_string(status), [status](const ForgedFrame& frame) {
          return frame.acknowledgement(status, frame.request());
        }));
  }
  for (const uint16_t distance : std::vector<uint16_t>{0x0000, 0x0001, 0x0100, 0xFFFF}) {
    some.push_back(
        replaced("acknowledged-" + std::to_string(distance), [distance](const ForgedFrame& frame) {
          return frame.acknowledgement(0, static_cast<uint16_t>(frame.request() + distance));
        }));
  }
  return some;
}

Bytes resized(const ForgedFrame& frame, std::size_t size) {
  Bytes payload = frame.payload();
  payload.resize(size, 'x');
  return payload;
}

std::vector<Forgery> otherLengths(std::size_t length) {
  std::vector<Forgery> some;
  for (std::size_t kept = 0; kept < length; ++kept) {
    some.push_back(replaced("cut-to-" + std::to_string(kept), [kept](const ForgedFrame& frame) {
      return frame.with(resized(frame, std::min(frame.payload().size(), kept)));
    }));
  }
  for (const std::size_t more : {1u, 2u, 4u, 100u, 300u, 70000u}) {
    some.push_back(replaced("longer-by-" + std::to_string(more), [more](const ForgedFrame& frame) {
      return frame.with(resized(frame, frame.payload().size() + more));
    }));
  }
  constexpr std::size_t kLong = 300;
  some.push_back(replaced("long-and-accepted", [](const ForgedFrame& frame) {
    return acceptedLongFrame(frame, resized(frame, kLong));
  }));
  return some;
}

std::vector<Forgery> fillings() {
  std::vector<Forgery> some;
  for (const uint8_t value : Bytes{0x00, 0x55, 0xFF}) {
    some.push_back(replaced("data-of-" + std::to_string(value), [value](const ForgedFrame& frame) {
      return frame.withData(Bytes(frame.payload().size() - frame.headerSize(), value));
    }));
    some.push_back(
        replaced("payload-of-" + std::to_string(value), [value](const ForgedFrame& frame) {
          return frame.with(Bytes(frame.payload().size(), value));
        }));
  }
  return some;
}

std::vector<Forgery> behindUnasked() {
  static const std::vector<std::pair<const char*, Bytes>> payloads{
      {"position", {0x04, 0x00, 0x27, 0x04, 0x00, 0x00, 0x03, 0xE8}},
      {"count", {0x04, 0x00, 0x19, 0x00, 0x00, 0x00, 0x05}},
      {"record", {0x04, 0x00, 0x1B, 0x00, 0x00, 0x00, 0x00, 'N', 'o', 0x00}},
      {"acknowledgement", {0x04, 0x00, 0x01, 0x00, 0x00, 0x16}},
      {"general-acknowledgement", {0x00, 0x02, 0x00, 0x05}},
      {"version", {0x00, 0x10, 0x0A, 0x01, 0x02}},
      {"accessory-question", {0x00, 0x27, 0x00}},
      {"sample-rate-question", {0x0A, 0x02}},
      {"sample-rate", {0x0A, 0x04, 0, 0, 0x7D, 0x00, 0, 0, 0, 0, 0, 0, 0, 0}},
      {"button", {0x02, 0x00, 0x01}},
      {"unknown-lingo", {0x0C, 0x00, 0x01}}};
  std::vector<Forgery> some;
  for (const auto& [name, unasked] : payloads) {
    some.push_back({std::string("after-a-") + name, [payload = unasked](const ForgedFrame& frame) {
                      return atOnce({frame.with(payload), frame.itself()});
                    }});
  }
  return some;
}

class AnswerSweep : public ForgedSweep {};

INSTANTIATE_TEST_SUITE_P(All, AnswerSweep, testing::ValuesIn(kScripts));

TEST_P(AnswerSweep, SilenceFromEveryAnswerOn) {
  forgeEach({{"silence", nothing, nothing}});
  expectStrikes(kMost);
}

TEST_P(AnswerSweep, JustBeforeAndAfterTheTimeOut) {
  forgeEach({late(999), late(1000), late(1001)});
  expectStrikes(kMost);
}

TEST_P(AnswerSweep, LateWhileTheNextRequestWaits) {
  forgeEach({{"late-on-a-slow-iPod", delayedBy(milliseconds(1100)), delayedBy(milliseconds(300))}});
  expectStrikes(kMost);
}

TEST_P(AnswerSweep, OfAnotherCommandOrLingo) {
  forgeEach(otherHeaders());
  expectStrikes(kMost);
}

TEST_P(AnswerSweep, AcknowledgementsInTheirPlace) {
  forgeEach(acknowledgements());
  expectStrikes(kMost);
}

TEST_P(AnswerSweep, OfEveryLength) {
  for (std::size_t number = 0; number < frames.size(); ++number) {
    for (const Forgery& each : otherLengths(ForgedFrame(frames[number]).payload().size()))
      forge(number, each);
  }
  expectStrikes(kMost);
}

TEST_P(AnswerSweep, FilledWithOneByte) {
  forgeEach(fillings());
  expectStrikes(kMost);
}

TEST_P(AnswerSweep, AfterUnsolicitedMessages) {
  forgeEach(behindUnasked());
  expectStrikes(kMost);
}

}  // namespace
}  // namespace virtual_session
