// Lists, counts, texts and states that no iPod should send.
#include <string>
#include <utility>
#include <vector>

#include "virtual/forged_sweep.h"

namespace virtual_session {
namespace {

using simulator::Lingo;
using virtual_platform::ComingFrame;

constexpr std::size_t kRecordIndexSize = 4;

std::vector<ComingFrame> repeated(const Bytes& frame, std::size_t times) {
  return atOnce(std::vector<Bytes>(times, frame));
}

Forgery records(const std::string& name, std::size_t times) {
  return {name, [times](const ForgedFrame& frame) { return repeated(frame.itself(), times); }};
}

Forgery number(const std::string& what, std::size_t offset, uint32_t value) {
  return replaced(what + "-" + std::to_string(value), [=](const ForgedFrame& frame) {
    return frame.withPart(offset, bigEndian(value));
  });
}

std::vector<Forgery> numbers(const std::string& what, std::size_t offset) {
  std::vector<Forgery> some;
  for (const uint32_t value : {0u, 1u, 2u, 35u, 36u, 0x7FFFFFFEu, 0x7FFFFFFFu, 0x80000000u,
                               0xFFFFFFDDu, 0xFFFFFFFEu, 0xFFFFFFFFu})
    some.push_back(number(what, offset, value));
  return some;
}

std::vector<Forgery> bytesAt(const std::string& what, std::size_t offset) {
  std::vector<Forgery> some;
  for (const uint8_t value : Bytes{0, 1, 2, 3, 4, 0x7F, 0x80, 0xFF}) {
    some.push_back(replaced(what + "-" + std::to_string(value), [=](const ForgedFrame& frame) {
      return frame.withPart(offset, {value});
    }));
  }
  return some;
}

void add(std::vector<Forgery>& to, const std::vector<Forgery>& more) {
  to.insert(to.end(), more.begin(), more.end());
}

/// The records that belong to two requests at once, or to none.
std::vector<Forgery> wrongRecords() {
  std::vector<Forgery> some{{"none", [](const ForgedFrame&) { return atOnce({}); }},
                            records("twice", 2),
                            records("9-times", 9),
                            records("100-times", 100)};
  for (const uint32_t other : {0u, 1u, 0xFFFFFFFFu}) {
    const auto reordered = [other](const ForgedFrame& frame) {
      return atOnce({frame.withPart(0, bigEndian(other)), frame.itself()});
    };
    some.push_back({"after-record-" + std::to_string(other), reordered});
  }
  add(some, numbers("record-index", 0));
  return some;
}

// Each kind of invalid UTF-8, before the end and at the end.
const std::vector<Bytes>& brokenTexts() {
  static const std::vector<Bytes> texts{
      {},                                          // not even the terminator
      {0x00},                                      // empty
      {'N'},                                       // without terminator
      {'N', 0x00, 'o', 0x00},                      // continues after it
      {0x80, 'a', 0x00},                           // a continuation alone
      {'a', 0xBF, 0xBF, 0xBF, 0x00},               //
      {0xC3, 0x00},                                // cut after the first byte
      {0xC3},                                      // and without terminator
      {'a', 0xE2, 0x82, 0x00},                     // cut after the second
      {0xF0, 0x9F, 0x8E, 0x00},                    // and the third
      {0xC3, 'a', 0x00},                           // cut by the next character
      {0xC0, 0x80, 0x00},                          // overlong
      {0xC1, 0xBF, 0x00},                          //
      {0xE0, 0x80, 0xAF, 0x00},                    //
      {0xF0, 0x80, 0x80, 0xAF, 0x00},              //
      {0xED, 0xA0, 0x80, 0x00},                    // a surrogate
      {0xED, 0xB0, 0x80, 0xED, 0xA0, 0x80, 0x00},  // two, the wrong way round
      {0xF0, 0x9F, 0x8E, 0xB5, 0x00},              // beyond 16 bits
      {0xF4, 0x90, 0x80, 0x80, 0x00},              // beyond 10FFFF
      {0xF8, 0x88, 0x80, 0x80, 0x80, 0x00},        // five bytes
      {0xFC, 0x84, 0x80, 0x80, 0x80, 0x80, 0x00},  // six bytes
      {0xFE, 0xFF, 0x00},                          // not UTF-8 at all
      {0xFF, 0xFF, 0xFF, 0xFF},                    //
      {0xE2, 0x82, 0xAC, 0x00}};                   // valid, but not Latin-1
  return texts;
}

/// Returns lingo, command and what precedes the text, with another text.
Bytes withText(const ForgedFrame& frame, std::size_t offset, const Bytes& text) {
  Bytes payload = frame.payload();
  payload.resize(frame.headerSize() + offset);
  payload.insert(payload.end(), text.begin(), text.end());
  return payload;
}

std::vector<Forgery> wrongTexts(std::size_t offset) {
  std::vector<Forgery> some;
  for (std::size_t which = 0; which < brokenTexts().size(); ++which) {
    some.push_back(
        replaced("text-" + std::to_string(which), [offset, which](const ForgedFrame& frame) {
          return frame.with(withText(frame, offset, brokenTexts()[which]));
        }));
  }
  for (const std::size_t length : {62u, 63u, 64u, 127u, 200u, 4096u}) {
    some.push_back(replaced("text-of-" + std::to_string(length), [=](const ForgedFrame& frame) {
      return frame.with(withText(frame, offset, Bytes(length, 'x')));
    }));
  }
  for (const uint8_t letter : Bytes{'x', 0xC3, 0x80}) {
    some.push_back(replaced(
        "accepted-text-of-4096-times-" + std::to_string(letter), [=](const ForgedFrame& frame) {
          return acceptedLongFrame(frame, withText(frame, offset, Bytes(4096, letter)));
        }));
  }
  return some;
}

std::vector<Forgery> wrongStates() {
  std::vector<Forgery> some = bytesAt("state", 8);
  add(some, numbers("length", 0));
  add(some, numbers("position", 4));
  return some;
}

std::vector<Forgery> wrongScreens() {
  std::vector<Forgery> some = bytesAt("pixels", 4);
  for (const uint32_t size : {0u, 0xFFFFu, 0xFFFF0000u, 0x00040004u})
    some.push_back(number("screen", 0, size));
  return some;
}

std::vector<Forgery> wrongContent(const ForgedFrame& frame) {
  if (frame.is(Lingo::kDigitalAudio, simulator::kTrackNewAudioAttributes))
    return numbers("rate", 0);
  if (frame.is(Lingo::kGeneral, simulator::kReturnIpodSerialNum)) return wrongTexts(0);
  if (frame.lingo() != static_cast<uint8_t>(Lingo::kExtendedInterface)) return {};
  switch (frame.command()) {
    case simulator::kReturnCategorizedDatabaseRecord: {
      std::vector<Forgery> some = wrongRecords();
      add(some, wrongTexts(kRecordIndexSize));
      return some;
    }
    case simulator::kReturnNumberCategorizedDbRecords:
      return numbers("count", 0);
    case simulator::kReturnCurrentPlayingTrackIndex:
      return numbers("track", 0);
    case simulator::kReturnPlayStatus:
      return wrongStates();
    case simulator::kReturnShuffle:
    case simulator::kReturnRepeat:
      return bytesAt("mode", 0);
    case simulator::kReturnColorDisplayImageLimits:
      return wrongScreens();
    case simulator::kReturnIndexedPlayingTrackInfo:
      return wrongTexts(1);
    case simulator::kExtendedReturnIpodName:
    case simulator::kReturnIndexedPlayingTrackTitle:
    case simulator::kReturnIndexedPlayingTrackArtistName:
    case simulator::kReturnIndexedPlayingTrackAlbumName:
      return wrongTexts(0);
    default:
      return {};
  }
}

/// Also for every later answer of its kind.
Forgery fromThereOn(const Forgery& forgery, const ForgedFrame& first) {
  const Lingo lingo = static_cast<Lingo>(first.lingo());
  const uint16_t command = first.command();
  return {forgery.name + "-from-there-on", forgery.forge,
          [forge = forgery.forge, lingo, command](const ForgedFrame& frame) {
            return frame.is(lingo, command) ? forge(frame) : atOnce({frame.itself()});
          }};
}

class ListingSweep : public ForgedSweep {};

INSTANTIATE_TEST_SUITE_P(All, ListingSweep, testing::ValuesIn(kScripts));

TEST_P(ListingSweep, SendsWhatNoIpodShould) {
  for (std::size_t at = 0; at < frames.size(); ++at) {
    const ForgedFrame frame(frames[at]);
    for (const Forgery& each : wrongContent(frame)) {
      forge(at, each);
      forge(at, fromThereOn(each, frame));
    }
  }
  expectStrikes(0.8);
}

}  // namespace
}  // namespace virtual_session
