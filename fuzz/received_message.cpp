// A payload from the iPod, through the factory and every decoder of its lingo.

#include <algorithm>
#include <initializer_list>
#include <memory>
#include <tuple>
#include <vector>

#include "base/debug_print.h"
#include "lingo/digital_audio_message.h"
#include "lingo/extended_interface_message.h"
#include "lingo/general_message.h"
#include "lingo/received_message.h"
#include "support/require.h"

using namespace ipodctl;

namespace {

using Extended = ExtendedInterfaceMessage;
using General = GeneralMessage;

constexpr uint32_t kUntouched = 0xA5A5A5A5;
constexpr uint8_t kUntouchedText[] = {'u', 'n', 't', 'o', 'u', 'c', 'h', 'e', 'd'};

template <class Value>
void spoil(Value& value) {
  value = static_cast<Value>(kUntouched);
}
void spoil(ByteString& text) {
  require(text.assign(kUntouchedText, sizeof(kUntouchedText)), "no memory");
}

template <class Value>
bool isUntouched(const Value& value) {
  return value == static_cast<Value>(kUntouched);
}
bool isUntouched(const ByteString& text) {
  return text.size() == sizeof(kUntouchedText) &&
         std::equal(kUntouchedText, kUntouchedText + text.size(), text.text());
}

/// Reads the text's terminator, so that AddressSanitizer sees a text without one.
void look(const ByteString& text) {
  require(text.text()[text.size()] == 0, "a text without its terminator");
}
template <class Value>
void look(const Value&) {}

/// Calls a decoder. Returns whether it decoded the message; if not, its outputs must be unchanged.
template <class Message, class... Outputs>
bool decode(const LingoMessage& message, bool (Message::*decoder)(Outputs&...) const) {
  std::tuple<Outputs...> outputs;
  std::apply([](auto&... each) { (spoil(each), ...); }, outputs);
  const auto& own = static_cast<const Message&>(message);
  const bool isDecoded =
      std::apply([&](auto&... each) { return (own.*decoder)(each...); }, outputs);
  std::apply([](const auto&... each) { (look(each), ...); }, outputs);
  const bool areUntouched =
      std::apply([](const auto&... each) { return (isUntouched(each) && ...); }, outputs);
  require(isDecoded || areUntouched, "a decoder that fails writes");
  return isDecoded;
}

/// Checks that at most one decoder accepts the message.
template <class Message, class... Decoders>
void decodeOnce(const LingoMessage& message, Decoders... decoders) {
  const int taken = (int{decode(message, decoders)} + ...);
  require(taken <= 1, "two decoders accept the same message");
}

void decodeQuestion(const LingoMessage& message) {
  AccessoryInfoQuestion question;
  const bool isDecoded = static_cast<const General&>(message).decodeGetAccessoryInfo(question);
  require(!isDecoded || question.type < 10, "a question of an unknown type");
}

/// A bool has no value that means untouched, so both values are tried.
void decodeMode(const LingoMessage& message) {
  for (const bool before : {false, true}) {
    bool extendedMode = before;
    const bool isDecoded =
        static_cast<const General&>(message).decodeReturnRemoteUiMode(extendedMode);
    require(isDecoded || extendedMode == before, "a decoder that fails writes");
  }
}

void decodeGeneral(const LingoMessage& message) {
  decodeOnce<General>(message, &General::decodeIpodAck, &General::decodeReturnIpodName,
                      &General::decodeReturnIpodSoftwareVersion,
                      &General::decodeReturnIpodSerialNum, &General::decodeReturnIpodModelNum,
                      &General::decodeReturnLingoProtocolVersion);
  decodeMode(message);
  decodeQuestion(message);
}

void decodeExtended(const LingoMessage& message) {
  decodeOnce<Extended>(
      message, &Extended::decodeIpodAck, &Extended::decodeReturnIndexedPlayingTrackInfo,
      &Extended::decodeReturnIpodName, &Extended::decodeReturnNumberCategorizedDbRecords,
      &Extended::decodeReturnCategorizedDatabaseRecord, &Extended::decodeReturnPlayStatus,
      &Extended::decodeReturnCurrentPlayingTrackIndex,
      &Extended::decodeReturnIndexedPlayingTrackTitle,
      &Extended::decodeReturnIndexedPlayingTrackArtistName,
      &Extended::decodeReturnIndexedPlayingTrackAlbumName, &Extended::decodeReturnShuffle,
      &Extended::decodeReturnRepeat, &Extended::decodeReturnMonoDisplayImageLimits,
      &Extended::decodeReturnColorDisplayImageLimits, &Extended::decodeReturnNumPlayingTracks);
}

void decodeAll(const LingoMessage& message) {
  switch (message.getLingo()) {
    case kGeneralLingo:
      return decodeGeneral(message);
    case kExtendedInterfaceLingo:
      return decodeExtended(message);
    case kDigitalAudioLingo:
      decode(message, &DigitalAudioMessage::decodeTrackNewAudioAttributes);
      return;
    default:
      return;
  }
}

/// Checks that the body of the encoded message is the payload, after the start byte and the length.
void encodeAgain(const LingoMessage& message, const std::vector<uint8_t>& payload) {
  const uint16_t size = message.encode(nullptr, 0);
  const std::unique_ptr<uint8_t[]> body(new uint8_t[size]);
  require(message.encode(body.get(), size) == size,
          "a body of another size than its message reported");
  const bool isLong = message.getDataLength() >= 0xFD;
  std::vector<uint8_t> expected{0x55};
  if (isLong) expected.insert(expected.end(), {0x00, static_cast<uint8_t>(payload.size() >> 8)});
  expected.push_back(static_cast<uint8_t>(payload.size()));
  expected.insert(expected.end(), payload.begin(), payload.end());
  require(std::equal(expected.begin(), expected.end(), body.get(), body.get() + size),
          "a body that is not the payload");
}

void tryMessage(const LingoMessage& message, const std::vector<uint8_t>& payload) {
  message.dump();
  decodeAll(message);
  encodeAgain(message, payload);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  debugFlag = 1;
  constexpr size_t kMostBytes = 65000;  // a body's size has 16 bits
  const std::vector<uint8_t> payload(data, data + std::min(size, kMostBytes));
  const std::unique_ptr<LingoMessage> message =
      makeReceivedMessage(payload.data(), static_cast<uint16_t>(payload.size()));
  if (!message) return 0;
  tryMessage(*message, payload);
  const std::unique_ptr<LingoMessage> copy = copyMessage(*message);
  require(copy != nullptr, "no copy");
  tryMessage(*copy, payload);
  return 0;
}
