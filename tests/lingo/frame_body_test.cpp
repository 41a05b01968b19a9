#include <gtest/gtest.h>

#include <memory>

#include "lingo/digital_audio_message.h"
#include "lingo/extended_interface_message.h"
#include "lingo/general_message.h"
#include "lingo/simple_remote_message.h"
#include "support/console.h"
#include "support/message_bytes.h"
#include "support/row_name.h"

namespace ipodctl {
namespace {

template <class Message>
std::unique_ptr<LingoMessage> make() {
  return std::make_unique<Message>();
}

struct Lingo : NamedRow {
  std::unique_ptr<LingoMessage> (*create)();
  uint8_t lingo;
  Bytes commandBytes;  ///< of command 0x1234 on the wire
};

class FrameBody : public testing::TestWithParam<Lingo> {
 protected:
  FrameBody() : message(GetParam().create()) { message->setCommand(0x1234); }

  uint32_t commandSize() const { return static_cast<uint32_t>(GetParam().commandBytes.size()); }
  uint32_t shortSize(uint32_t dataLength) const { return dataLength + 3 + commandSize(); }
  uint32_t longSize(uint32_t dataLength) const { return dataLength + 5 + commandSize(); }

  void setData(uint32_t length) {
    data = countingBytes(length);
    receive(*message, 0x1234, data);
  }

  Bytes lingoCommandAndData() const {
    return Bytes{GetParam().lingo} + GetParam().commandBytes + data;
  }

  std::unique_ptr<LingoMessage> message;
  Bytes data;
};

TEST_P(FrameBody, WithoutDataIsStartLengthLingoAndCommand) {
  const auto length = static_cast<uint8_t>(1 + commandSize());
  EXPECT_EQ(bodyOf(*message), (Bytes{0x55, length} + lingoCommandAndData()));
}

TEST_P(FrameBody, CountsLingoCommandAndDataInItsLength) {
  setData(5);
  const auto length = static_cast<uint8_t>(6 + commandSize());
  EXPECT_EQ(bodyOf(*message), (Bytes{0x55, length} + lingoCommandAndData()));
}

TEST_P(FrameBody, Of252DataBytesIsTheLongestShortForm) {
  setData(252);
  const auto length = static_cast<uint8_t>(commandSize() == 1 ? 0xFE : 0xFF);
  EXPECT_EQ(bodyOf(*message), (Bytes{0x55, length} + lingoCommandAndData()));
}

TEST_P(FrameBody, Of253DataBytesIsTheShortestLongForm) {
  setData(253);
  const Bytes length = commandSize() == 1 ? Bytes{0x00, 0x00, 0xFF} : Bytes{0x00, 0x01, 0x00};
  EXPECT_EQ(bodyOf(*message), (Bytes{0x55} + length + lingoCommandAndData()));
}

TEST_P(FrameBody, OfManyDataBytesHasBothLengthBytes) {
  setData(0x1234);
  const Bytes length = commandSize() == 1 ? Bytes{0x00, 0x12, 0x36} : Bytes{0x00, 0x12, 0x37};
  EXPECT_EQ(bodyOf(*message), (Bytes{0x55} + length + lingoCommandAndData()));
}

TEST_P(FrameBody, WithoutABufferReturnsTheSizeItNeeds) {
  EXPECT_EQ(message->encode(nullptr, 0), shortSize(0));
  setData(252);
  EXPECT_EQ(message->encode(nullptr, 0), shortSize(252));
  setData(253);
  EXPECT_EQ(message->encode(nullptr, 65535), longSize(253));
}

TEST_P(FrameBody, NeedsTheDataLengthAndFourBytesOfCapacity) {
  for (const uint32_t length : {0u, 1u, 252u, 253u, 1000u}) {
    SCOPED_TRACE(length);
    setData(length);
    Bytes buffer(length + 16, 0xEE);
    EXPECT_EQ(message->encode(buffer.data(), length + 3), 0);
    EXPECT_EQ(buffer, Bytes(length + 16, 0xEE));
  }
}

TEST_P(FrameBody, WritesWholeAlsoWhereTheCapacityCountsFourBytesOnly) {
  for (const uint32_t length : {0u, 252u}) {
    SCOPED_TRACE(length);
    setData(length);
    Bytes buffer(length + 16, 0xEE);
    EXPECT_EQ(message->encode(buffer.data(), length + 4), shortSize(length));
    EXPECT_EQ(buffer[shortSize(length)], 0xEE);
  }
  setData(253);
  Bytes buffer(253 + 16, 0xEE);
  EXPECT_EQ(message->encode(buffer.data(), 257), longSize(253));
  EXPECT_EQ(buffer[longSize(253)], 0xEE);
}

TEST_P(FrameBody, KeepsItsSizeTo16Bits) {
  const uint32_t dataLength = 65535 - 4;
  setData(dataLength);
  Bytes buffer(70000, 0xEE);
  const uint32_t size = longSize(dataLength);
  EXPECT_EQ(message->encode(buffer.data(), 65535), size - 65536);
  EXPECT_EQ(Bytes(buffer.begin(), buffer.begin() + size),
            (Bytes{0x55, 0x00, 0xFF, static_cast<uint8_t>(0xFC + commandSize())} +
             lingoCommandAndData()));
  EXPECT_EQ(buffer[size], 0xEE);
}

TEST_P(FrameBody, IsRefusedForMoreDataThanTheCapacityHolds) {
  setData(65532);
  Bytes buffer(70000, 0xEE);
  EXPECT_EQ(message->encode(buffer.data(), 65535), 0);
  EXPECT_EQ(buffer, Bytes(70000, 0xEE));
}

TEST_P(FrameBody, IsPrintedAfterAnArrowWhileTheDebugFlagIsSet) {
  setData(3);
  Bytes buffer(16);
  EXPECT_EQ(printedInDebug([&] { message->encode(buffer.data(), 16); }),
            "OUT-> Lingo=" + std::to_string(GetParam().lingo) + "\tCommand=0x1234 Data=0x3 0xa \n");
}

TEST_P(FrameBody, IsSilentWithoutTheDebugFlag) {
  setData(3);
  Bytes buffer(16);
  EXPECT_EQ(printedQuietly([&] { message->encode(buffer.data(), 16); }), "");
}

TEST_P(FrameBody, IsSilentWhenItWritesNothing) {
  setData(3);
  Bytes buffer(16);
  EXPECT_EQ(printedInDebug([&] {
              message->encode(nullptr, 0);
              message->encode(buffer.data(), 6);
            }),
            "");
}

const Lingo kLingoes[] = {
    {"General", make<GeneralMessage>, 0x00, {0x34}},
    {"SimpleRemote", make<SimpleRemoteMessage>, 0x02, {0x34}},
    {"ExtendedInterface", make<ExtendedInterfaceMessage>, 0x04, {0x12, 0x34}},
    {"DigitalAudio", make<DigitalAudioMessage>, 0x0A, {0x34}},
};

INSTANTIATE_TEST_SUITE_P(Lingoes, FrameBody, testing::ValuesIn(kLingoes), rowName<Lingo>);

}  // namespace
}  // namespace ipodctl
