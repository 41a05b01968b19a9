#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>

#include "base/fifo.h"
#include "base/growable_array.h"
#include "lingo/digital_audio_message.h"
#include "lingo/extended_interface_message.h"
#include "lingo/general_message.h"
#include "lingo/received_message.h"
#include "lingo/simple_remote_message.h"
#include "support/memory_limit.h"
#include "support/message_bytes.h"
#include "support/row_name.h"

namespace ipodctl {
namespace {

/// A builder that carries data, so that it needs memory.
struct Building : NamedRow {
  std::function<std::unique_ptr<LingoMessage>()> create;
  std::function<bool(LingoMessage&)> build;
};

template <class Message>
Building building(const char* name, std::function<bool(Message&)> build) {
  return {name, [] { return std::make_unique<Message>(); },
          [build](LingoMessage& message) { return build(static_cast<Message&>(message)); }};
}

using General = GeneralMessage;
using Remote = SimpleRemoteMessage;
using Extended = ExtendedInterfaceMessage;
using Audio = DigitalAudioMessage;

const uint8_t kCodes[] = {0, 6, 7, 8};
const uint8_t kRow[] = {1, 2, 3, 4};

const Building kBuildings[] = {
    building<General>("Identify", [](auto& m) { return m.buildIdentify(kSimpleRemoteLingo); }),
    building<General>("RequestLingoProtocolVersion",
                      [](auto& m) { return m.buildRequestLingoProtocolVersion(4); }),
    building<General>("IdentifyDeviceLingoes",
                      [](auto& m) { return m.buildIdentifyDeviceLingoes(0x411); }),
    building<General>("RetAccessoryCapabilities",
                      [](auto& m) { return m.buildRetAccessoryCapabilities(); }),
    building<General>("RetAccessoryFirmwareVersion",
                      [](auto& m) { return m.buildRetAccessoryFirmwareVersion(1, 2, 3, 4); }),
    building<General>("RetAccessoryLingoVersion",
                      [](auto& m) { return m.buildRetAccessoryLingoVersion(4, 1, 7); }),
    building<Remote>("ContextButtonInByte0",
                     [](auto& m) { return m.buildContextButtonStatus(0, 1); }),
    building<Remote>("ContextButtonInByte3",
                     [](auto& m) { return m.buildContextButtonStatus(3, 1); }),
    building<Remote>("AudioButtons", [](auto& m) { return m.buildAudioButtonStatus(1); }),
    building<Extended>(
        "GetIndexedPlayingTrackInfo",
        [](auto& m) { return m.buildGetIndexedPlayingTrackInfo(TrackInfoType::kGenre, 1, 0); }),
    building<Extended>("SelectDbRecord",
                       [](auto& m) { return m.buildSelectDbRecord(Category::kArtists, 7); }),
    building<Extended>(
        "GetNumberCategorizedDbRecords",
        [](auto& m) { return m.buildGetNumberCategorizedDbRecords(Category::kArtists); }),
    building<Extended>("RetrieveCategorizedDatabaseRecords",
                       [](auto& m) {
                         return m.buildRetrieveCategorizedDatabaseRecords(Category::kArtists, 0, 9);
                       }),
    building<Extended>("GetIndexedPlayingTrackTitle",
                       [](auto& m) { return m.buildGetIndexedPlayingTrackTitle(1); }),
    building<Extended>("GetIndexedPlayingTrackArtistName",
                       [](auto& m) { return m.buildGetIndexedPlayingTrackArtistName(1); }),
    building<Extended>("GetIndexedPlayingTrackAlbumName",
                       [](auto& m) { return m.buildGetIndexedPlayingTrackAlbumName(1); }),
    building<Extended>("PlayCurrentSelection",
                       [](auto& m) { return m.buildPlayCurrentSelection(1); }),
    building<Extended>(
        "PlayControl",
        [](auto& m) { return m.buildPlayControl(PlayControlCode::kTogglePlayPause); }),
    building<Extended>("SetShuffle", [](auto& m) { return m.buildSetShuffle(PlayMode::kTracks); }),
    building<Extended>("SetRepeat", [](auto& m) { return m.buildSetRepeat(PlayMode::kTracks); }),
    building<Extended>("FirstPacketOfADisplayImage",
                       [](auto& m) {
                         return m.buildSetDisplayImage(PixelFormat::kRgb565LowByteFirst, 0, 1, 1, 4,
                                                       kRow);
                       }),
    building<Extended>("LaterPacketOfADisplayImage",
                       [](auto& m) {
                         return m.buildSetDisplayImage(PixelFormat::kRgb565LowByteFirst, 1, 1, 1, 4,
                                                       kRow);
                       }),
    building<Extended>("SetCurrentPlayingTrack",
                       [](auto& m) { return m.buildSetCurrentPlayingTrack(1); }),
    building<Extended>(
        "SelectSortDbRecord",
        [](auto& m) { return m.buildSelectSortDbRecord(Category::kAlbums, 1, SortOrder::kName); }),
    building<Audio>("AccAck", [](auto& m) { return m.buildAccAck(0, 4); }),
    building<Audio>("RetAccSampleRateCaps",
                    [](auto& m) { return m.buildRetAccSampleRateCaps(kCodes, 4); }),
};

class BuilderWithoutMemory : public testing::TestWithParam<Building> {};

TEST_P(BuilderWithoutMemory, Fails) {
  forEachFailure([](const FailurePoint& point) {
    const std::unique_ptr<LingoMessage> message = GetParam().create();
    const MemoryLimit memory(point);
    const bool built = GetParam().build(*message);
    const bool struck = memory.struck();
    EXPECT_EQ(memory.unchecked(), 0u);
    EXPECT_EQ(built, !struck);
    return struck;
  });
}

TEST_P(BuilderWithoutMemory, AsksForSome) {
  const std::unique_ptr<LingoMessage> message = GetParam().create();
  const MemoryLimit memory(kNoMemory);
  EXPECT_FALSE(GetParam().build(*message));
}

INSTANTIATE_TEST_SUITE_P(Commands, BuilderWithoutMemory, testing::ValuesIn(kBuildings),
                         rowName<Building>);

/// A reply with a text, whose decoder needs memory.
struct TextDecoding : NamedRow {
  std::unique_ptr<LingoMessage> (*create)();
  bool (*decode)(const LingoMessage&, uint32_t&, ByteString&);
};

template <class Message, uint16_t command>
std::unique_ptr<LingoMessage> received() {
  auto message = std::make_unique<Message>();
  receive(*message, command, {0x00, 0x00, 0x00, 0x07, 0x41, 0x42});
  return message;
}

template <class Message, bool (Message::*decode)(ByteString&) const>
bool decodeText(const LingoMessage& message, uint32_t&, ByteString& text) {
  return (static_cast<const Message&>(message).*decode)(text);
}

bool decodeTrackInfo(const LingoMessage& message, uint32_t& number, ByteString& text) {
  constexpr TrackInfoType kUntouched{0xA5};
  TrackInfoType infoType = kUntouched;
  const bool accepted =
      static_cast<const Extended&>(message).decodeReturnIndexedPlayingTrackInfo(infoType, text);
  if (infoType != kUntouched) number = static_cast<uint32_t>(infoType);
  return accepted;
}

bool decodeModelNum(const LingoMessage& message, uint32_t& number, ByteString& text) {
  return static_cast<const General&>(message).decodeReturnIpodModelNum(number, text);
}

bool decodeRecord(const LingoMessage& message, uint32_t& number, ByteString& text) {
  auto index = static_cast<RecordIndex>(number);
  const bool accepted =
      static_cast<const Extended&>(message).decodeReturnCategorizedDatabaseRecord(index, text);
  number = static_cast<uint32_t>(index);
  return accepted;
}

const TextDecoding kTextDecodings[] = {
    {"GeneralIpodName", received<General, 0x08>,
     decodeText<General, &General::decodeReturnIpodName>},
    {"SerialNum", received<General, 0x0C>,
     decodeText<General, &General::decodeReturnIpodSerialNum>},
    {"ModelNum", received<General, 0x0E>, decodeModelNum},
    {"IndexedPlayingTrackInfo", received<Extended, 0x000D>, decodeTrackInfo},
    {"IpodName", received<Extended, 0x0015>, decodeText<Extended, &Extended::decodeReturnIpodName>},
    {"CategorizedDatabaseRecord", received<Extended, 0x001B>, decodeRecord},
    {"TrackTitle", received<Extended, 0x0021>,
     decodeText<Extended, &Extended::decodeReturnIndexedPlayingTrackTitle>},
    {"ArtistName", received<Extended, 0x0023>,
     decodeText<Extended, &Extended::decodeReturnIndexedPlayingTrackArtistName>},
    {"AlbumName", received<Extended, 0x0025>,
     decodeText<Extended, &Extended::decodeReturnIndexedPlayingTrackAlbumName>},
};

class TextDecoderWithoutMemory : public testing::TestWithParam<TextDecoding> {};

TEST_P(TextDecoderWithoutMemory, FailsAndLeavesTheOutputs) {
  const std::unique_ptr<LingoMessage> message = GetParam().create();
  forEachFailure([&](const FailurePoint& point) {
    uint32_t number = 0xA5A5A5A5;
    ByteString text = byteString("before");
    const MemoryLimit memory(point);
    const bool accepted = GetParam().decode(*message, number, text);
    const bool struck = memory.struck();
    EXPECT_EQ(memory.unchecked(), 0u);
    EXPECT_EQ(accepted, !struck);
    if (struck) {
      EXPECT_EQ(number, 0xA5A5A5A5u);
      EXPECT_EQ(textOf(text), "before");
    }
    return struck;
  });
}

INSTANTIATE_TEST_SUITE_P(Commands, TextDecoderWithoutMemory, testing::ValuesIn(kTextDecodings),
                         rowName<TextDecoding>);

TEST(SetDataWithoutMemory, FailsAndLeavesTheData) {
  General message;
  ASSERT_TRUE(message.setData(kRow, 3));
  const MemoryLimit memory(kNoMemory);
  EXPECT_FALSE(message.setData(kRow, 4));
  EXPECT_EQ(dataOf(message), (Bytes{1, 2, 3}));
}

TEST(SetDataWithoutMemory, SucceedsInTheArrayThatItHas) {
  General message;
  ASSERT_TRUE(message.setData(kRow, 3));
  const MemoryLimit memory(kNoMemory);
  EXPECT_TRUE(message.setData(kRow + 2, 2));
  EXPECT_EQ(dataOf(message), (Bytes{3, 4}));
}

TEST(SetDataWithoutMemory, KnowsAnArrayByTheLastDataInIt) {
  const Bytes bytes = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9};
  General message;
  ASSERT_TRUE(message.setData(bytes.data(), 10));
  ASSERT_TRUE(message.setData(bytes.data(), 4));
  const MemoryLimit memory(kNoMemory);
  EXPECT_FALSE(message.setData(bytes.data(), 8));
  EXPECT_EQ(dataOf(message), (Bytes{0, 1, 2, 3}));
}

TEST(AppendDataWithoutMemory, FailsAndLeavesTheData) {
  General message;
  ASSERT_TRUE(message.setData(kRow, 3));
  const MemoryLimit memory(kNoMemory);
  EXPECT_FALSE(message.appendData(kRow, 1));
  EXPECT_EQ(dataOf(message), (Bytes{1, 2, 3}));
}

TEST(AppendDataWithoutMemory, FailsOnAnEmptyMessage) {
  General message;
  const MemoryLimit memory(kNoMemory);
  EXPECT_FALSE(message.appendData(kRow, 1));
  EXPECT_EQ(message.getDataLength(), 0);
  EXPECT_EQ(message.dataBytes(), nullptr);
}

TEST(EncodeWithoutMemory, NeedsNone) {
  Extended message;
  ASSERT_TRUE(message.buildSelectDbRecord(Category::kArtists, 7));
  uint8_t buffer[16];
  const MemoryLimit memory(kNoMemory);
  EXPECT_EQ(message.encode(buffer, 16), 10);
  EXPECT_EQ(memory.asked() + memory.unchecked(), 0u);
}

TEST(MakeReceivedMessageWithoutMemory, MakesNone) {
  for (const Bytes& payload : {Bytes{0x00, 0x02, 0x00, 0x13}, Bytes{0x02, 0x00, 0x08},
                               Bytes{0x04, 0x00, 0x15, 0x41}, Bytes{0x0A, 0x04, 0x01}}) {
    forEachFailure([&](const FailurePoint& point) {
      const MemoryLimit memory(point);
      const auto message =
          makeReceivedMessage(payload.data(), static_cast<uint16_t>(payload.size()));
      EXPECT_EQ(memory.unchecked(), 0u);
      EXPECT_GT(memory.asked(), 0u);
      EXPECT_EQ(message == nullptr, memory.struck());
      return memory.struck();
    });
  }
}

TEST(CopyMessageWithoutMemory, MakesNone) {
  Extended message;
  receive(message, 0x0015, {0x41, 0x42});
  forEachFailure([&](const FailurePoint& point) {
    const MemoryLimit memory(point);
    const auto copy = copyMessage(message);
    EXPECT_EQ(memory.unchecked(), 0u);
    EXPECT_GT(memory.asked(), 0u);
    EXPECT_EQ(copy == nullptr, memory.struck());
    return memory.struck();
  });
}

TEST(Utf8ToNarrowWithoutMemory, FailsAndLeavesTheOutput) {
  forEachFailure([](const FailurePoint& point) {
    ByteString narrow = byteString("before");
    const MemoryLimit memory(point);
    const bool converted = LingoMessage::utf8ToNarrow(utf8("text"), 4, narrow);
    const bool struck = memory.struck();
    EXPECT_EQ(converted, !struck);
    EXPECT_EQ(textOf(narrow), struck ? "before" : "text");
    return struck;
  });
}

TEST(Utf8ToWideWithoutMemory, Fails) {
  WideString wide;
  const MemoryLimit memory(kNoMemory);
  EXPECT_FALSE(LingoMessage::utf8ToWide(utf8("text"), wide));
  EXPECT_TRUE(wide.empty());
}

TEST(WideToNarrowWithoutMemory, FailsAndLeavesTheOutput) {
  WideString wide;
  ASSERT_TRUE(LingoMessage::utf8ToWide(utf8("text"), wide));
  ByteString narrow = byteString("before");
  const MemoryLimit memory(kNoMemory);
  EXPECT_FALSE(LingoMessage::wideToNarrow(wide, narrow));
  EXPECT_EQ(textOf(narrow), "before");
}

TEST(TextStringWithoutMemory, StaysAsItWas) {
  ByteString text = byteString("before");
  const MemoryLimit memory(kNoMemory);
  EXPECT_FALSE(text.assign(utf8("after"), 5));
  EXPECT_FALSE(text.resize(100));
  EXPECT_EQ(textOf(text), "before");
}

TEST(GrowableArrayWithoutMemory, StaysAsItWas) {
  GrowableArray<int> array;
  int next = 0;
  {
    const MemoryLimit memory({1, true});
    while (array.append(next))
      ++next;
    EXPECT_TRUE(memory.struck());
  }
  ASSERT_GT(next, 0);
  ASSERT_EQ(array.size(), static_cast<uint32_t>(next));
  for (int i = 0; i < next; ++i)
    EXPECT_EQ(array[static_cast<uint32_t>(i)], i);
  EXPECT_TRUE(array.append(next));
  EXPECT_EQ(array.size(), static_cast<uint32_t>(next) + 1);
}

TEST(FifoWithoutMemory, StaysAsItWas) {
  Fifo<int> fifo;
  int next = 0;
  {
    const MemoryLimit memory({1, true});
    while (fifo.append(next))
      ++next;
    EXPECT_TRUE(memory.struck());
  }
  ASSERT_GT(next, 0);
  ASSERT_EQ(fifo.size(), static_cast<uint32_t>(next));
  EXPECT_TRUE(fifo.append(next));
  for (int i = 0; i <= next; ++i)
    EXPECT_EQ(fifo.takeFirst(), i);
}

TEST(GrowableArrayWithoutMemory, ReleasesTheItemThatItCouldNotTake) {
  const auto item = std::make_shared<int>(7);
  GrowableArray<std::shared_ptr<int>> array;
  const MemoryLimit memory(kNoMemory);
  EXPECT_FALSE(array.append(item));
  EXPECT_EQ(item.use_count(), 1);
}

}  // namespace
}  // namespace ipodctl
