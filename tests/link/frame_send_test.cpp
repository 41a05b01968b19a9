#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "lingo/digital_audio_message.h"
#include "lingo/extended_interface_message.h"
#include "lingo/general_message.h"
#include "link/link_kinds.h"
#include "support/console.h"
#include "support/row_name.h"
#include "support/scripted_platform.h"

namespace ipodctl {
namespace {

using testing::ElementsAre;

/// A transport of either kind with an open device.
class SendMessage : public ScriptedPlatformTest, public testing::WithParamInterface<LinkKind> {
 protected:
  SendMessage() {
    transport->open(kind().deviceName);
    platform.calls.clear();
  }

  const LinkKind& kind() const { return GetParam(); }

  /// Sends a message in one write and returns its bytes.
  Bytes sent(const LingoMessage& message) {
    platform.writes.clear();
    EXPECT_TRUE(transport->sendMessage(message));
    EXPECT_EQ(platform.writes.size(), 1u);
    return platform.writes.empty() ? Bytes{} : platform.writes.front();
  }

  /// Returns `frame` as it is on this kind of link.
  Bytes onWire(const Bytes& frame) const { return kind().sync + frame; }

  const std::unique_ptr<Transport> transport = kind().create();
};

template <class Message>
void setData(Message& message, uint16_t command, uint32_t length, uint8_t value) {
  receive(message, command, Bytes(length, value));
}

TEST_P(SendMessage, FramesACommandWithoutData) {
  GeneralMessage message;
  message.setCommand(0x01);
  EXPECT_EQ(sent(message), onWire({0x55, 0x02, 0x00, 0x01, 0xFD}));
}

TEST_P(SendMessage, FramesData) {
  DigitalAudioMessage message;
  ASSERT_TRUE(message.buildAccAck(0, 0x04));
  EXPECT_EQ(sent(message), onWire({0x55, 0x04, 0x0A, 0x00, 0x00, 0x04, 0xEE}));
}

TEST_P(SendMessage, FramesATwoByteCommand) {
  ExtendedInterfaceMessage message;
  ASSERT_TRUE(message.buildSelectDbRecord(Category::kArtists, 7));
  EXPECT_EQ(sent(message),
            onWire({0x55, 0x08, 0x04, 0x00, 0x17, 0x02, 0x00, 0x00, 0x00, 0x07, 0xD4}));
}

TEST_P(SendMessage, SendsTheChecksumZeroIfTheSumIsAMultipleOf256) {
  GeneralMessage message;
  receive(message, 0x00, {0xFD});
  EXPECT_EQ(sent(message), onWire({0x55, 0x03, 0x00, 0x00, 0xFD, 0x00}));
}

TEST_P(SendMessage, Sends252DataBytesInTheShortForm) {
  ExtendedInterfaceMessage message;
  setData(message, 0x0032, 252, 0x01);
  EXPECT_EQ(sent(message),
            onWire(Bytes{0x55, 0xFF, 0x04, 0x00, 0x32} + Bytes(252, 0x01) + Bytes{0xCF}));
}

TEST_P(SendMessage, Sends253DataBytesInTheLongForm) {
  ExtendedInterfaceMessage message;
  setData(message, 0x0032, 253, 0x01);
  EXPECT_EQ(sent(message), onWire(Bytes{0x55, 0x00, 0x01, 0x00, 0x04, 0x00, 0x32} +
                                  Bytes(253, 0x01) + Bytes{0xCC}));
}

TEST_P(SendMessage, SendsTheLargestFrameWhole) {
  GeneralMessage message;
  setData(message, 0x7F, 65529, 0x00);
  EXPECT_EQ(sent(message),
            onWire(Bytes{0x55, 0x00, 0xFF, 0xFB, 0x00, 0x7F} + Bytes(65529, 0x00) + Bytes{0x87}));
}

TEST_P(SendMessage, WritesNothingIfTheBodySizeIsZeroIn16Bits) {
  GeneralMessage message;
  setData(message, 0x7F, 65530, 0x00);
  EXPECT_EQ(sent(message), Bytes{});
}

TEST_P(SendMessage, WritesAsManyBytesAsTheLow16BitsOfALargerSize) {
  GeneralMessage message;
  setData(message, 0x7F, 65531, 0x00);
  EXPECT_EQ(sent(message), onWire({0x55, 0x00}));

  ExtendedInterfaceMessage wider;
  setData(wider, 0x0032, 65531, 0x00);
  EXPECT_EQ(sent(wider), onWire({0x55, 0x00, 0x00}));
}

TEST_P(SendMessage, WritesNothingIfTheDataExceedTheCapacity) {
  GeneralMessage message;
  setData(message, 0x7F, 65532, 0x00);
  EXPECT_EQ(sent(message), Bytes{});
  EXPECT_THAT(platform.callsOf("WriteFile"), ElementsAre("WriteFile(device 1, 0, null)"));

  EXPECT_TRUE(transport->close());
  EXPECT_TRUE(transport->sendMessage(message));
}

TEST_P(SendMessage, SendsTheSameMessageAgainUnchanged) {
  GeneralMessage message;
  message.setCommand(0x05);
  EXPECT_EQ(sent(message), onWire({0x55, 0x02, 0x00, 0x05, 0xF9}));
  EXPECT_EQ(sent(message), onWire({0x55, 0x02, 0x00, 0x05, 0xF9}));
}

TEST_P(SendMessage, FailsWhenNotAllBytesAreWritten) {
  GeneralMessage message;
  message.setCommand(0x05);
  platform.writeLimit = 4;
  EXPECT_FALSE(transport->sendMessage(message));
}

TEST_P(SendMessage, FailsWhenTheWriteFails) {
  GeneralMessage message;
  message.setCommand(0x05);
  platform.writesFail = true;
  EXPECT_FALSE(transport->sendMessage(message));
}

TEST_P(SendMessage, FailsOnAClosedDevice) {
  transport->close();
  GeneralMessage message;
  message.setCommand(0x05);
  EXPECT_FALSE(transport->sendMessage(message));
}

TEST_P(SendMessage, GivesUpAfterASenderThatDoesNotEnd) {
  GeneralMessage message;
  message.setCommand(0x05);
  platform.waitResults = {WAIT_TIMEOUT};
  EXPECT_FALSE(transport->sendMessage(message));
  EXPECT_THAT(platform.writes, testing::IsEmpty());
  EXPECT_TRUE(transport->sendMessage(message));
}

TEST_P(SendMessage, LogsTheMessageWhileTheDebugFlagIsSet) {
  ExtendedInterfaceMessage message;
  ASSERT_TRUE(message.buildPlayControl(PlayControlCode::kNextTrack));
  const std::string count = std::to_string(8 + kind().sync.size() - 1);
  EXPECT_EQ(printedInDebug([&] { transport->sendMessage(message); }),
            "OUT-> Lingo=4\tCommand=0x29 Data=0x3 \n"
            "\n======>Checksum = 0xcc\n" +
                std::string(kind().writingText) + "\nWRITE!!!\nbytes inviati " + count + " \n");
}

TEST_P(SendMessage, LogsNoChecksumOfABodyThatIsNotWritten) {
  GeneralMessage message;
  setData(message, 0x7F, 65532, 0x00);
  EXPECT_EQ(printedInDebug([&] { transport->sendMessage(message); }),
            std::string(kind().writingText) + "\nWRITE!!!\nbytes inviati 0 \n");
}

TEST_P(SendMessage, IsSilentWithoutTheDebugFlag) {
  GeneralMessage message;
  message.setCommand(0x05);
  EXPECT_EQ(printedQuietly([&] {
              transport->sendMessage(message);
              transport->sendSyncByte();
              transport->close();
              transport->sendMessage(message);
            }),
            "");
}

TEST_P(SendMessage, FlushesTheDeviceAfterTheWrite) {
  GeneralMessage message;
  message.setCommand(0x05);
  ASSERT_TRUE(transport->sendMessage(message));
  const std::vector<std::string> writes = platform.callsOf("WriteFile");
  ASSERT_EQ(writes.size(), 1u);
  EXPECT_THAT(platform.callsOf("FlushFileBuffers"), ElementsAre("FlushFileBuffers(device 1)"));
}

using SendSyncByte = SendMessage;

TEST_P(SendSyncByte, WritesASingleFF) {
  EXPECT_TRUE(transport->sendSyncByte());
  EXPECT_THAT(platform.writes, ElementsAre(Bytes{0xFF}));
}

TEST_P(SendSyncByte, FailsWhenTheWriteFails) {
  platform.writesFail = true;
  EXPECT_FALSE(transport->sendSyncByte());
}

TEST_P(SendSyncByte, FailsOnAClosedDevice) {
  transport->close();
  EXPECT_FALSE(transport->sendSyncByte());
}

using WriteData = SendMessage;

TEST_P(SendSyncByte, GivesUpAfterASenderThatDoesNotEnd) {
  platform.waitResults = {WAIT_TIMEOUT};
  EXPECT_FALSE(transport->sendSyncByte());
  EXPECT_THAT(platform.writes, testing::IsEmpty());
}

TEST_P(WriteData, WritesTheBytesUnchanged) {
  const uint8_t bytes[] = {0x00, 0xFF, 0x55};
  EXPECT_TRUE(transport->writeData(bytes, 3));
  EXPECT_THAT(platform.writes, ElementsAre(Bytes{0x00, 0xFF, 0x55}));
}

TEST_P(WriteData, FailsWhenNotAllBytesAreWritten) {
  const uint8_t bytes[] = {0x00, 0xFF, 0x55};
  platform.writeLimit = 2;
  EXPECT_FALSE(transport->writeData(bytes, 3));
}

TEST_P(WriteData, LogsTheKindOfLink) {
  const uint8_t bytes[] = {0x00};
  EXPECT_EQ(printedInDebug([&] { transport->writeData(bytes, 1); }),
            std::string(kind().writingText) + "\nWRITE!!!\nbytes inviati 1 \n");
}

TEST_P(WriteData, PassesANullHandleToTheSystemWhenClosed) {
  const uint8_t bytes[] = {0x00};
  transport->close();
  platform.calls.clear();
  EXPECT_EQ(printedInDebug([&] { EXPECT_FALSE(transport->writeData(bytes, 1)); }),
            std::string(kind().writingText) + "\nWRITE!!!\nbytes inviati 0 \n");
  EXPECT_THAT(platform.calls, ElementsAre("WriteFile(null, 1, null)", "FlushFileBuffers(null)"));
}

INSTANTIATE_TEST_SUITE_P(Kinds, SendMessage, testing::ValuesIn(kLinkKinds), rowName<LinkKind>);
INSTANTIATE_TEST_SUITE_P(Kinds, SendSyncByte, testing::ValuesIn(kLinkKinds), rowName<LinkKind>);
INSTANTIATE_TEST_SUITE_P(Kinds, WriteData, testing::ValuesIn(kLinkKinds), rowName<LinkKind>);

struct Sum : NamedRow {
  Bytes bytes;
  uint8_t checksum;
};

class Checksum : public ScriptedPlatformTest, public testing::WithParamInterface<Sum> {
 protected:
  const std::unique_ptr<Transport> transport = kUsbKind.create();
};

TEST_P(Checksum, MakesTheSumZero) {
  const Bytes& bytes = GetParam().bytes;
  const auto count = static_cast<int>(bytes.size());
  EXPECT_EQ(transport->computeChecksum(bytes.data(), count), GetParam().checksum);
  const Bytes checked = bytes + Bytes{GetParam().checksum};
  EXPECT_TRUE(transport->checkChecksum(checked.data(), count + 1));
}

TEST_P(Checksum, IsWrongWithAnyOtherByte) {
  const Bytes& bytes = GetParam().bytes;
  for (int difference = 1; difference < 256; ++difference) {
    const Bytes checked = bytes + Bytes{static_cast<uint8_t>(GetParam().checksum + difference)};
    EXPECT_FALSE(transport->checkChecksum(checked.data(), static_cast<int>(checked.size())));
  }
}

const Sum kSums[] = {
    {"OfNoBytesIsZero", {}, 0x00},
    {"OfZeroIsZero", {0x00}, 0x00},
    {"OfOneByte", {0x01}, 0xFF},
    {"OfTheHighestByte", {0xFF}, 0x01},
    {"OfAShortFrame", {0x02, 0x00, 0x01}, 0xFD},
    {"OfBytesThatSumTo256", {0x80, 0x7F, 0x01}, 0x00},
    {"OfBytesThatOverflow", {0xFF, 0xFF, 0xFF}, 0x03},
};

INSTANTIATE_TEST_SUITE_P(Sums, Checksum, testing::ValuesIn(kSums), rowName<Sum>);

using ChecksumOfNothing = Checksum;

TEST_P(ChecksumOfNothing, NeverPassesTheCheck) {
  const uint8_t zero = 0;
  EXPECT_FALSE(transport->checkChecksum(&zero, 0));
  EXPECT_FALSE(transport->checkChecksum(&zero, -1));
}

TEST_P(ChecksumOfNothing, IsZeroForANegativeCount) {
  EXPECT_EQ(transport->computeChecksum(GetParam().bytes.data(), -1), 0);
}

INSTANTIATE_TEST_SUITE_P(Sums, ChecksumOfNothing, testing::Values(kSums[4]), rowName<Sum>);

}  // namespace
}  // namespace ipodctl
