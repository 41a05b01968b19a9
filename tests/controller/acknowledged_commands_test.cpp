#include <gtest/gtest.h>

#include <initializer_list>

#include "controller/controller_test.h"
#include "controller/operations.h"
#include "support/row_name.h"

namespace ipodctl {
namespace {

const Bytes kPlayStatusNotification = {0x04, 0x00, 0x27, 0x04, 0x00, 0x00, 0x10, 0x00};

class Acknowledged : public ControllerFixture<IpodController>,
                     public testing::WithParamInterface<AcknowledgedOperation> {
 protected:
  const AcknowledgedOperation& row() const { return GetParam(); }

  /// The row's acknowledgement with another status.
  Bytes withStatus(uint8_t status) const {
    Bytes acknowledgement = row().acknowledgement;
    acknowledgement[3] = status;
    return acknowledgement;
  }

  /// Calls the operation with an iPod that answers so, and checks how often it waited and how many
  /// messages it left.
  bool callWith(const Payloads& answer, uint32_t waits, uint32_t left) {
    callLog().clear();
    ipod().answer(row().request, answer);
    const bool result = row().call(controller());
    EXPECT_EQ(callLog(),
              (Calls{"flush", "send " + row().request}) + repeated(waits, {"wait 0 ns 1 s"}));
    EXPECT_EQ(ipod().queued(), left);
    EXPECT_EQ(liveMessages(), left);
    return result;
  }
};

TEST_P(Acknowledged, SucceedsWithStatusZero) {
  EXPECT_TRUE(callWith({row().acknowledgement}, 1, 0));
}

TEST_P(Acknowledged, TakesNoMessageAfterItsAcknowledgement) {
  EXPECT_TRUE(callWith({row().acknowledgement, kPlayStatusNotification}, 1, 1));
}

TEST_P(Acknowledged, FailsAfterASecondOfSilence) { EXPECT_FALSE(callWith({}, 1, 0)); }

TEST_P(Acknowledged, IsNotSatisfiedByAnAcknowledgementFromBefore) {
  ipod().arrive({row().acknowledgement});
  EXPECT_FALSE(callWith({}, 1, 0));
}

TEST_P(Acknowledged, WaitsOnAfterAFailingStatus) {
  for (const uint8_t status : Bytes{0x01, 0x02, 0x04, 0x06, 0x80, 0xFF}) {
    SCOPED_TRACE(testing::Message() << "status " << int{status});
    EXPECT_FALSE(callWith({withStatus(status)}, 2, 0));
    EXPECT_TRUE(callWith({withStatus(status), row().acknowledgement}, 2, 0));
  }
}

TEST_P(Acknowledged, WaitsOnAfterUnrelatedExtendedInterfaceMessages) {
  EXPECT_TRUE(callWith({kPlayStatusNotification,
                        {0x04, 0x00, 0x1D},
                        {0x04, 0x00, 0x02, 0x00},
                        row().acknowledgement},
                       4, 0));
}

TEST_P(Acknowledged, WaitsOnAfterAnotherCommandsAcknowledgement) {
  for (const Bytes& command : {Bytes{0x00, 0x16}, Bytes{0x00, 0x00}, Bytes{0xFF, 0xFF}}) {
    const Bytes other = Bytes{0x04, 0x00, 0x01, 0x00} + command;
    EXPECT_FALSE(callWith({other}, 2, 0));
    EXPECT_TRUE(callWith({other, row().acknowledgement}, 2, 0));
  }
}

TEST_P(Acknowledged, ComparesBothBytesOfTheAcknowledgedCommand) {
  Bytes other = row().acknowledgement;
  other[4] = 0x01;
  EXPECT_FALSE(callWith({other}, 2, 0));
}

TEST_P(Acknowledged, ComparesBothBytesOfTheAcknowledgementsOwnCommand) {
  Bytes other = row().acknowledgement;
  other[1] = 0x01;
  EXPECT_FALSE(callWith({other}, 2, 0));
}

TEST_P(Acknowledged, TakesAcknowledgementsOfThreeBytesOnly) {
  for (const uint32_t size : {3u, 4u, 5u, 7u, 9u, 200u}) {
    SCOPED_TRACE(testing::Message() << "payload of " << size << " bytes");
    Bytes other = row().acknowledgement;
    other.resize(size);
    EXPECT_FALSE(callWith({other}, 2, 0));
    EXPECT_TRUE(callWith({other, row().acknowledgement}, 2, 0));
  }
}

TEST_P(Acknowledged, FailsAtOnceWithAForeignLingo) {
  const Payloads foreign = {{0x00, 0x02, 0x00, 0x05},
                            {0x00, 0x01, 0x00, 0x00, row().acknowledgement[5]},
                            {0x02, 0x01, 0x00},
                            {0x0A, 0x02}};
  for (const Bytes& message : foreign) {
    SCOPED_TRACE(testing::Message() << "lingo " << int{message[0]});
    EXPECT_FALSE(callWith({message, row().acknowledgement}, 1, 1));
    EXPECT_FALSE(callWith({kPlayStatusNotification, message, row().acknowledgement}, 2, 1));
  }
}

TEST_P(Acknowledged, EndsWhenTheIpodsFloodEnds) {
  ipod().flood(3000, kPlayStatusNotification);
  EXPECT_FALSE(callWith({}, 3001, 0));
}

TEST_P(Acknowledged, DecidesWhateverTheLinkSaysOfTheRequest) {
  ipod().sends = false;
  EXPECT_TRUE(callWith({row().acknowledgement}, 1, 0));
}

TEST_P(Acknowledged, FailsWithoutALinkAndSendsNothing) {
  IpodController unlinked(kNoLink);
  EXPECT_FALSE(row().call(unlinked));
  EXPECT_EQ(callLog(), Calls{});
}

INSTANTIATE_TEST_SUITE_P(Operation, Acknowledged, testing::ValuesIn(acknowledgedOperations()),
                         rowName<AcknowledgedOperation>);

using Parameters = ControllerTest;

TEST_F(Parameters, AreSentWithAllTheirBytes) {
  controller().SelectDbRecord(Category{0xFF}, 0x89ABCDEF);
  controller().SelectSortDbRecord(Category{0xFE}, 0x89ABCDEF, SortOrder::kDefault);
  controller().PlayCurrentSelection(0xFFFFFFFF);
  controller().PlayControl(PlayControlCode{0xFF});
  controller().SetShuffle(PlayMode{0x80});
  controller().SetRepeat(PlayMode::kOff);
  controller().SetCurrentPlayingTrack(0x89ABCDEF);
  EXPECT_EQ(
      linesOf(callLog(), "send"),
      (Calls{"send 55 08 04 00 17 FF 89 AB CD EF", "send 55 09 04 00 38 FE 89 AB CD EF FF",
             "send 55 07 04 00 28 FF FF FF FF", "send 55 04 04 00 29 FF", "send 55 04 04 00 2E 80",
             "send 55 04 04 00 31 00", "send 55 07 04 00 37 89 AB CD EF"}));
}

using DisplayImage = ControllerTest;

constexpr uint8_t kPixels[] = {0x11, 0x22, 0x33, 0x44};

TEST_F(DisplayImage, Packet0DescribesThePicture) {
  ipod().answer("55 12 04 00 32 00 00 02 01 40 00 F0 00 00 00 04 11 22 33 44",
                {{0x04, 0x00, 0x01, 0x00, 0x00, 0x32}});
  EXPECT_TRUE(
      controller().SetDisplayImage(PixelFormat::kRgb565LowByteFirst, 0, 320, 240, 4, kPixels));
}

TEST_F(DisplayImage, LaterPacketsAreTheirIndexAndARow) {
  ipod().answer("55 09 04 00 32 01 02 11 22 33 44", {{0x04, 0x00, 0x01, 0x00, 0x00, 0x32}});
  EXPECT_TRUE(
      controller().SetDisplayImage(PixelFormat::kRgb565LowByteFirst, 0x0102, 320, 240, 4, kPixels));
}

TEST_F(DisplayImage, RowIsAsLongAsTheLow16BitsOfItsStrideSay) {
  controller().SetDisplayImage(PixelFormat::kRgb565HighByteFirst, 0, 1, 2, 0x00010003, kPixels);
  controller().SetDisplayImage(PixelFormat::kRgb565HighByteFirst, 1, 1, 2, 0x00010003, kPixels);
  EXPECT_EQ(linesOf(callLog(), "send"),
            (Calls{"send 55 11 04 00 32 00 00 03 00 01 00 02 00 01 00 03 11 22 33",
                   "send 55 08 04 00 32 00 01 11 22 33"}));
}

}  // namespace
}  // namespace ipodctl
