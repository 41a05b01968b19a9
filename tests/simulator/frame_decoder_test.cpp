#include "wire/frame_decoder.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "support/hex.h"

namespace simulator {
namespace {

using Payloads = std::vector<std::string>;

struct Row {
  const char* what;
  FrameKind kind;
  const char* bytes;
  Payloads payloads;
};

const FrameKind kUsb = FrameKind::kUsb;
const FrameKind kSerial = FrameKind::kSerial;

const Row kRows[] = {
    {"one usb frame", kUsb, "55 02 00 01 FD", {"00 01"}},
    {"one serial frame", kSerial, "FF 55 02 00 01 FD", {"00 01"}},
    {"data after the command", kUsb, "55 03 00 0F 04 EA", {"00 0F 04"}},
    {"two byte command", kUsb, "55 04 04 00 18 02 DE", {"04 00 18 02"}},
    {"two frames", kUsb, "55 02 00 01 FD 55 02 00 03 FB", {"00 01", "00 03"}},
    {"a sync byte on usb is noise", kUsb, "FF 55 02 00 01 FD", {"00 01"}},
    {"sync bytes alone", kSerial, "FF FF", {}},
    {"one sync byte too many", kSerial, "FF FF 55 02 00 01 FD", {"00 01"}},
    {"sync bytes before a frame", kSerial, "FF FF FF 55 02 00 01 FD", {"00 01"}},
    {"noise before a frame", kUsb, "00 13 A9 55 02 00 01 FD", {"00 01"}},
    {"noise between frames",
     kSerial,
     "FF 55 02 00 01 FD 77 55 FF 12 FF 55 02 00 03 FB",
     {"00 01", "00 03"}},
    {"a start byte without sync is noise on serial", kSerial, "55 02 00 01 FD", {}},
    {"a wrong checksum drops the frame", kUsb, "55 02 00 01 FC 55 02 00 03 FB", {"00 03"}},
    {"a start byte within a frame is data", kUsb, "55 03 00 55 55 53", {"00 55 55"}},
    {"long form", kUsb, "55 00 00 02 00 01 FD", {"00 01"}},
    {"long form on serial", kSerial, "FF 55 00 00 02 00 01 FD", {"00 01"}},
    {"long form sums its whole length field", kUsb, "55 00 00 02 00 01 FF", {}},
    {"long form, then short form",
     kUsb,
     "55 00 00 03 00 0F 04 EA 55 02 00 01 FD",
     {"00 0F 04", "00 01"}},
    {"a payload of one byte", kUsb, "55 01 07 F8", {"07"}},
    {"a long form of no length carries nothing",
     kUsb,
     "55 00 00 00 00 55 02 00 01 FD",
     {"", "00 01"}},
    {"an unfinished frame", kUsb, "55 02 00 01", {}},
};

class FrameDecoderRows : public testing::TestWithParam<Row> {
 protected:
  // Decodes the bytes in pieces of `piece` bytes after a first one of `first` bytes.
  Payloads fed(size_t first, size_t piece) {
    FrameDecoder decoder(GetParam().kind);
    const Bytes bytes = hex(GetParam().bytes);
    Payloads payloads;
    const auto collect = [&](ByteView payload) { payloads.push_back(toHex(payload)); };
    decoder.push(Time(0), ByteView(bytes).prefix(first), collect);
    for (ByteView rest = ByteView(bytes).from(first); !rest.empty(); rest = rest.from(piece)) {
      decoder.push(Time(0), rest.prefix(piece), collect);
    }
    return payloads;
  }
};

TEST_P(FrameDecoderRows, FedWhole) {
  EXPECT_EQ(fed(hex(GetParam().bytes).size(), 1), GetParam().payloads);
}

TEST_P(FrameDecoderRows, FedByteByByte) { EXPECT_EQ(fed(0, 1), GetParam().payloads); }

TEST_P(FrameDecoderRows, SplitAtEveryIndex) {
  const size_t size = hex(GetParam().bytes).size();
  for (size_t split = 1; split < size; ++split) {
    EXPECT_EQ(fed(split, size), GetParam().payloads) << "split at " << split;
  }
}

INSTANTIATE_TEST_SUITE_P(All, FrameDecoderRows, testing::ValuesIn(kRows),
                         [](const testing::TestParamInfo<Row>& row) {
                           std::string name = row.param.what;
                           for (char& letter : name) {
                             if (std::isalnum(static_cast<unsigned char>(letter)) == 0) {
                               letter = '_';
                             }
                           }
                           return name;
                         });

class FrameDecoderTest : public testing::Test {
 protected:
  void push(Time at, const std::string& bytes) {
    decoder.push(at, hex(bytes), [this](ByteView payload) { payloads.push_back(toHex(payload)); });
  }

  FrameDecoder decoder{FrameKind::kUsb};
  Payloads payloads;
};

TEST_F(FrameDecoderTest, AcceptsAGapOf25MsInsideAPacket) {
  push(milliseconds(0), "55 02 00");
  push(milliseconds(25), "01 FD");
  EXPECT_EQ(payloads, Payloads{"00 01"});
}

TEST_F(FrameDecoderTest, StartsAgainAfterALongerGapInsideAPacket) {
  push(milliseconds(0), "55 02 00");
  push(milliseconds(26), "55 02 00 03 FB");
  EXPECT_EQ(payloads, Payloads{"00 03"});
  EXPECT_EQ(decoder.counters().abandoned, 1u);
}

TEST_F(FrameDecoderTest, RestOfAnAbandonedPacketIsNoise) {
  push(milliseconds(0), "55 02 00");
  push(milliseconds(26), "01 FD");
  EXPECT_TRUE(payloads.empty());
  EXPECT_EQ(decoder.counters().skippedBytes, 2u);
}

TEST_F(FrameDecoderTest, GapIsMeasuredFromByteToByte) {
  push(milliseconds(0), "55");
  push(milliseconds(20), "02");
  push(milliseconds(40), "00");
  push(milliseconds(60), "01 FD");
  EXPECT_EQ(payloads, Payloads{"00 01"});
}

TEST_F(FrameDecoderTest, GapBetweenPacketsIsIgnored) {
  push(milliseconds(0), "55 02 00 01 FD");
  push(seconds(5), "55 02 00 01 FD");
  EXPECT_EQ(payloads.size(), 2u);
  EXPECT_EQ(decoder.counters().abandoned, 0u);
}

TEST_F(FrameDecoderTest, ReadsBothLengthBytesOfALongPacket) {
  std::string bytes = "55 00 01 02 00 20";
  for (int i = 0; i < 0x100; ++i)
    bytes += " 00";
  push(Time(0), bytes + " DD");
  ASSERT_EQ(payloads.size(), 1u);
  EXPECT_EQ(hex(payloads[0]).size(), 258u);
}

TEST_F(FrameDecoderTest, ResetDropsTheUnfinishedPacket) {
  push(Time(0), "55 02 00");
  decoder.reset();
  push(Time(0), "01 FD 55 02 00 03 FB");
  EXPECT_EQ(payloads, Payloads{"00 03"});
}

struct WasteRow {
  const char* what;
  FrameKind kind;
  std::vector<const char*> pieces;  ///< each at the same time
  Payloads reports;
};

const WasteRow kWasteRows[] = {
    {"nothing but frames",
     kUsb,
     {"55 02 00 01 FD", "55 02 00 03 FB"},
     {"packet 00 01", "packet 00 03"}},
    {"noise that arrives together", kUsb, {"13 A9 77"}, {"noise 13 A9 77"}},
    {"noise in pieces", kUsb, {"13 A9", "77"}, {"noise 13 A9", "noise 77"}},
    {"noise around a frame",
     kUsb,
     {"13 55 02 00 01 FD A9"},
     {"noise 13", "packet 00 01", "noise A9"}},
    {"a frame of two pieces", kUsb, {"13 55 02", "00 01 FD"}, {"noise 13", "packet 00 01"}},
    {"a wrong checksum", kUsb, {"55 02 00 01 FC"}, {"checksum 55 02 00 01 FC"}},
    {"a wrong checksum in pieces", kUsb, {"55", "02 00 01", "FC"}, {"checksum 55 02 00 01 FC"}},
    {"a wrong checksum of a long form",
     kUsb,
     {"55 00 00 02 00 01 FF"},
     {"checksum 55 00 00 02 00 01 FF"}},
    {"a wrong checksum between frames",
     kUsb,
     {"55 02 00 01 FD 55 02 00 01 FC 55 02 00 03 FB"},
     {"packet 00 01", "checksum 55 02 00 01 FC", "packet 00 03"}},
    {"a sync byte is part of a serial frame",
     kSerial,
     {"FF 55 02 00 01 FC"},
     {"checksum FF 55 02 00 01 FC"}},
    {"a sync byte before it", kSerial, {"FF", "55 02 00 01 FC"}, {"checksum FF 55 02 00 01 FC"}},
    {"sync bytes too many",
     kSerial,
     {"FF FF FF 55 02 00 01 FC"},
     {"noise FF FF", "checksum FF 55 02 00 01 FC"}},
    {"a sync byte without a start byte", kSerial, {"FF 12 55"}, {"noise FF 12 55"}},
    {"a sync byte alone", kSerial, {"12 FF"}, {"noise 12"}},
};

class FrameDecoderWaste : public testing::TestWithParam<WasteRow> {};

TEST_P(FrameDecoderWaste, IsReportedInTheOrderOfTheBytes) {
  constexpr const char* kNames[] = {"noise ", "checksum ", "unfinished "};
  FrameDecoder decoder(GetParam().kind);
  Payloads reports;
  decoder.setWasteHook([&](FrameDecoder::Waste waste, ByteView bytes) {
    reports.push_back(kNames[static_cast<int>(waste)] + toHex(bytes));
  });
  for (const char* piece : GetParam().pieces) {
    decoder.push(Time(0), hex(piece),
                 [&](ByteView payload) { reports.push_back("packet " + toHex(payload)); });
  }
  EXPECT_EQ(reports, GetParam().reports);
}

INSTANTIATE_TEST_SUITE_P(All, FrameDecoderWaste, testing::ValuesIn(kWasteRows),
                         [](const testing::TestParamInfo<WasteRow>& row) {
                           std::string name = row.param.what;
                           std::replace(name.begin(), name.end(), ' ', '_');
                           return name;
                         });

class UnfinishedPacket : public FrameDecoderTest {
 protected:
  UnfinishedPacket() {
    decoder.setWasteHook([this](FrameDecoder::Waste waste, ByteView bytes) {
      EXPECT_EQ(waste, FrameDecoder::Waste::kUnfinished);
      reports.push_back(toHex(bytes));
    });
  }

  Payloads reports;
};

TEST_F(UnfinishedPacket, IsReportedWhenItIsDropped) {
  push(milliseconds(0), "55 04 00");
  push(milliseconds(25), "01");
  EXPECT_EQ(reports, Payloads{});
  push(milliseconds(51), "55 02 00 03 FB");
  EXPECT_EQ(reports, Payloads{"55 04 00 01"});
  EXPECT_EQ(payloads, Payloads{"00 03"});
}

TEST_F(UnfinishedPacket, IsReportedWhenTheDecoderIsReset) {
  push(Time(0), "55 02 00");
  decoder.reset();
  EXPECT_EQ(reports, Payloads{"55 02 00"});
  decoder.reset();
  EXPECT_EQ(reports, Payloads{"55 02 00"});
  push(Time(0), "55 04");
  decoder.reset();
  EXPECT_EQ(reports, (Payloads{"55 02 00", "55 04"}));
  EXPECT_EQ(decoder.counters().abandoned, 0u);
}

TEST_F(FrameDecoderTest, CountsFramesAndWaste) {
  push(Time(0), "13 55 02 00 01 FD 55 02 00 01 FC 77");
  EXPECT_EQ(decoder.counters().packets, 1u);
  EXPECT_EQ(decoder.counters().badChecksums, 1u);
  EXPECT_EQ(decoder.counters().skippedBytes, 2u);
}

}  // namespace
}  // namespace simulator
