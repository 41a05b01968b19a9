#include <gtest/gtest.h>

#include <cstdio>
#include <initializer_list>
#include <string>

#include "controller/controller_test.h"
#include "controller/logo_file.h"
#include "support/console.h"

namespace ipodctl::logo_upload {
namespace {

constexpr const char* kIdentify = "55 0E 00 13 00 00 04 11 00 00 00 00 00 00 00 00";
constexpr const char* kLimitsRequest = "55 03 04 00 39";

const Bytes kIdentified = {0x00, 0x10, 0x0A, 0x01, 0x02};
const Bytes k320By240 = {0x04, 0x00, 0x3A, 0x01, 0x40, 0x00, 0xF0, 0x02};
const Bytes kAcknowledged = {0x04, 0x00, 0x01, 0x00, 0x00, 0x32};

const Calls kLimitsTransaction = {"flush", "send 55 03 04 00 39", "wait 0 ns 1 s"};

/// flush, open, start; flush, two pauses, flush, announcement, wait.
constexpr uint32_t kStepsBefore = 3 + 6;

std::string hexByte(uint32_t value) {
  char text[4];
  std::snprintf(text, sizeof(text), " %02X", value & 0xFF);
  return text;
}

std::string timesOf(uint32_t count, const std::string& text) {
  std::string all;
  for (uint32_t i = 0; i < count; ++i)
    all += text;
  return all;
}

Calls transactionOf(const std::string& body) { return {"flush", "send " + body, "wait 0 ns 1 s"}; }

/// A picture whose row r from the top has the screen pixels "r, 0" from 0 to 31 and "r - 32, 8"
/// from there on (little red at 8 steps).
Bytes stripes(uint32_t width, uint32_t height) {
  Bytes pixels;
  for (uint32_t y = 0; y < height; ++y) {
    const uint32_t fromTop = height - 1 - y;
    for (uint32_t x = 0; x < width; ++x)
      pixels = pixels + Bytes{static_cast<uint8_t>(fromTop % 32 * 8), 0,
                              static_cast<uint8_t>(fromTop / 32 * 8)};
  }
  return pixels;
}

/// The row of such a picture as it is sent.
std::string stripe(uint32_t width, uint32_t fromTop) {
  return timesOf(width, hexByte(fromTop % 32) + hexByte(fromTop / 32 * 8));
}

class LogoUpload : public ControllerTest {
 protected:
  void load(const Bytes& content) {
    const LogoFile file(content);
    ASSERT_TRUE(controller().LoadLogo(file.path()));
  }

  void loadSized(uint32_t width, uint32_t height) {
    load(bitmap(sized(width, height), stripes(width, height)));
  }

  /// Connects to an iPod whose screen has these limits: what the accessory did after it was
  /// identified.
  Calls uploadTo(const Payloads& limits) {
    callLog().clear();
    ipod().answer(kIdentify, {kIdentified});
    ipod().answer(kLimitsRequest, limits);
    EXPECT_TRUE(controller().IdentifyIpod("IPD1:", true));
    EXPECT_EQ(liveMessages(), ipod().queued());
    return behindFirst(kStepsBefore, callLog());
  }
};

TEST_F(LogoUpload, SendsWhiteRowsAndThenThePictureFromTheTop) {
  loadSized(100, 50);
  ipod().flood(145, kAcknowledged);
  const std::string white = timesOf(200, " FF");
  Calls expected = kLimitsTransaction;
  expected = expected + transactionOf("55 D6 04 00 32 00 00 02 00 64 00 91 00 00 00 C8" + white);
  for (uint32_t i = 1; i < 95; ++i)
    expected = expected + transactionOf("55 CD 04 00 32 00" + hexByte(i) + white);
  for (uint32_t i = 95; i < 145; ++i)
    expected = expected + transactionOf("55 CD 04 00 32 00" + hexByte(i) + stripe(100, i - 95));
  EXPECT_EQ(uploadTo({k320By240}), expected);
  EXPECT_EQ(linesOf(callLog(), "send 55").size(), 1u + 1u + 145u);
}

TEST_F(LogoUpload, OfAPictureAsLargeAsTheScreenHasNoMargin) {
  loadSized(4, 2);
  ipod().flood(2, kAcknowledged);
  EXPECT_EQ(uploadTo({{0x04, 0x00, 0x3A, 0x00, 0x04, 0x00, 0x02, 0x02}}),
            kLimitsTransaction +
                transactionOf("55 16 04 00 32 00 00 02 00 04 00 02 00 00 00 08 00 00 00 00 00 00 "
                              "00 00") +
                transactionOf("55 0D 04 00 32 00 01 01 00 01 00 01 00 01 00"));
}

TEST_F(LogoUpload, HalvesAnOddFreeHeightDownwards) {
  loadSized(4, 2);
  ipod().flood(3, kAcknowledged);
  EXPECT_EQ(uploadTo({{0x04, 0x00, 0x3A, 0x00, 0x04, 0x00, 0x05, 0x02}}),
            kLimitsTransaction +
                transactionOf("55 16 04 00 32 00 00 02 00 04 00 03 00 00 00 08 FF FF FF FF FF FF "
                              "FF FF") +
                transactionOf("55 0D 04 00 32 00 01 00 00 00 00 00 00 00 00") +
                transactionOf("55 0D 04 00 32 00 02 01 00 01 00 01 00 01 00"));
}

TEST_F(LogoUpload, SendsRowsOfTheKeptPixelsWithTheWholeWidth) {
  loadSized(7, 1);
  ipod().flood(2, kAcknowledged);
  EXPECT_EQ(uploadTo({{0x04, 0x00, 0x3A, 0x00, 0x09, 0x00, 0x03, 0x02}}),
            kLimitsTransaction +
                transactionOf("55 18 04 00 32 00 00 02 00 07 00 02 00 00 00 0A FF FF FF FF FF FF "
                              "FF FF FF FF") +
                transactionOf("55 0F 04 00 32 00 01 00 00 00 00 00 00 00 00 00 00"));
}

TEST_F(LogoUpload, OfAWidePictureTakesTheLongForm) {
  loadSized(640, 1);
  ipod().flood(1, kAcknowledged);
  EXPECT_EQ(
      uploadTo({{0x04, 0x00, 0x3A, 0x02, 0x80, 0x00, 0x01, 0x02}}),
      kLimitsTransaction + transactionOf("55 00 05 0E 04 00 32 00 00 02 02 80 00 01 00 00 05 00" +
                                         timesOf(1280, " 00")));
}

TEST_F(LogoUpload, CountsPacketsInTwoBytes) {
  load(bitmap({}, Bytes(12)));
  ipod().flood(0x8000, kAcknowledged);
  const Calls steps = uploadTo({{0x04, 0x00, 0x3A, 0xFF, 0xFF, 0xFF, 0xFF, 0x02}});
  const Calls sent = linesOf(steps, "send");
  ASSERT_EQ(sent.size(), 1u + 0x8000u);
  EXPECT_EQ(sent[1],
            "send 55 16 04 00 32 00 00 02 00 04 80 00 00 00 00 08 FF FF FF FF FF FF FF FF");
  EXPECT_EQ(sent[0x101], "send 55 0D 04 00 32 01 00 FF FF FF FF FF FF FF FF");
  EXPECT_EQ(sent[0x8000], "send 55 0D 04 00 32 7F FF 00 00 00 00 00 00 00 00");
}

TEST_F(LogoUpload, UsesTheFirstOfSeveralFormats) {
  load(bitmap({}, Bytes(12)));
  ipod().flood(1, kAcknowledged);
  const Calls steps = uploadTo({{0x04, 0x00, 0x3A, 0x00, 0x04, 0x00, 0x01, 0x02,  //
                                 0x00, 0x01, 0x00, 0x01, 0x03}});
  EXPECT_EQ(linesOf(steps, "send").size(), 2u);
}

TEST_F(LogoUpload, DoesNotHappenOnAScreenThatDoesNotTakeThePicture) {
  loadSized(8, 4);
  const Bytes screens[] = {{0x04, 0x00, 0x3A, 0x00, 0x07, 0x00, 0x04, 0x02},  // too narrow
                           {0x04, 0x00, 0x3A, 0x00, 0x08, 0x00, 0x03, 0x02},  // too low
                           {0x04, 0x00, 0x3A, 0x00, 0x00, 0x00, 0x00, 0x02},  // none
                           {0x04, 0x00, 0x3A, 0x00, 0x08, 0x00, 0x04, 0x00},  // other formats
                           {0x04, 0x00, 0x3A, 0x00, 0x08, 0x00, 0x04, 0x01},
                           {0x04, 0x00, 0x3A, 0x00, 0x08, 0x00, 0x04, 0x03},
                           {0x04, 0x00, 0x3A, 0x00, 0x08, 0x00, 0x04, 0x82}};
  for (const Bytes& limits : screens)
    EXPECT_EQ(uploadTo({limits}), kLimitsTransaction);
}

TEST_F(LogoUpload, DoesNotHappenWhenTheLimitsDoNotCome) {
  loadSized(8, 4);
  const Payloads answers[] = {{},
                              {{0x00, 0x02, 0x00, 0x05}, k320By240},
                              {{0x04, 0x00, 0x01, 0x04, 0x00, 0x39}},
                              {{0x04, 0x00, 0x34, 0x01, 0x40, 0x00, 0xF0, 0x02}},
                              {{0x04, 0x00, 0x3A}},
                              {{0x04, 0x00, 0x3A, 0x01}},
                              {{0x04, 0x00, 0x3A, 0x01, 0x40, 0x00, 0xF0}}};
  for (const Payloads& limits : answers)
    EXPECT_EQ(uploadTo(limits), kLimitsTransaction);
}

TEST_F(LogoUpload, ComparesAllOfALargePicturesWidth) {
  load(bitmap(sized(0x10004, 1), Bytes(0x10004 * 3)));
  EXPECT_EQ(uploadTo({k320By240}), kLimitsTransaction);
}

TEST_F(LogoUpload, ComparesAllOfALargePicturesHeight) {
  load(bitmap(sized(1, 0x10001), Bytes(0x10001 * 3)));
  EXPECT_EQ(uploadTo({k320By240}), kLimitsTransaction);
}

TEST_F(LogoUpload, OfAVeryWidePictureSendsTheLow16BitsOfARowsLength) {
  load(bitmap(sized(32770, 1), Bytes(32770 * 3)));
  ipod().flood(1, kAcknowledged);
  // 32769 pixels are kept: 65538 bytes, of which 2 are sent.
  EXPECT_EQ(
      uploadTo({{0x04, 0x00, 0x3A, 0xFF, 0xFF, 0x00, 0x01, 0x02}}),
      kLimitsTransaction + transactionOf("55 10 04 00 32 00 00 02 80 02 00 01 00 01 00 02 00 00"));
}

constexpr const char* kPacket0 =
    "55 16 04 00 32 00 00 02 00 04 00 03 00 00 00 08 00 00 00 00 00 00 00 00";
constexpr const char* kPacket1 = "55 0D 04 00 32 00 01 01 00 01 00 01 00 01 00";
constexpr const char* kPacket2 = "55 0D 04 00 32 00 02 02 00 02 00 02 00 02 00";
const Bytes k4By3 = {0x04, 0x00, 0x3A, 0x00, 0x04, 0x00, 0x03, 0x02};

TEST_F(LogoUpload, GoesOnAfterALostAcknowledgement) {
  loadSized(4, 3);
  ipod().answer(kPacket0, {kAcknowledged});
  ipod().answer(kPacket2, {kAcknowledged});
  EXPECT_EQ(uploadTo({k4By3}), kLimitsTransaction + transactionOf(kPacket0) +
                                   transactionOf(kPacket1) + transactionOf(kPacket2));
}

TEST_F(LogoUpload, GoesOnAfterAFailedPacket) {
  loadSized(4, 3);
  ipod().answer(kPacket0, {{0x04, 0x00, 0x01, 0x04, 0x00, 0x32}});
  ipod().answer(kPacket1, {{0x00, 0x02, 0x00, 0x05}});
  ipod().answer(kPacket2, {kAcknowledged});
  const Calls secondWait = {"wait 0 ns 1 s"};
  EXPECT_EQ(uploadTo({k4By3}), kLimitsTransaction + transactionOf(kPacket0) + secondWait +
                                   transactionOf(kPacket1) + transactionOf(kPacket2));
}

TEST_F(LogoUpload, IsNotAskedForWithoutTheFlag) {
  loadSized(4, 3);
  ipod().answer(kIdentify, {kIdentified});
  EXPECT_TRUE(controller().IdentifyIpod("IPD1:", false));
  EXPECT_EQ(linesOf(callLog(), "send").size(), 1u);
}

TEST_F(LogoUpload, BeginsAfterTheSuccessOfTheIdentificationWasPrinted) {
  loadSized(4, 3);
  EXPECT_EQ(printedInDebug([&] { uploadTo({}); }),
            "OUT-> Lingo=0\tCommand=0x13 Data=0x0 0x0 \n"
            "indentifyIpod A = true \n"
            "indentifyIpod = 1 \n"
            "OUT-> Lingo=4\tCommand=0x39 \n");
}

TEST_F(LogoUpload, DoesNotUseUpTheLogo) {
  loadSized(4, 3);
  ipod().flood(6, kAcknowledged);
  const Calls first = uploadTo({k4By3});
  EXPECT_EQ(uploadTo({k4By3}), first);
}

}  // namespace
}  // namespace ipodctl::logo_upload
