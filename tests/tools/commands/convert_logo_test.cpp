#include "ipodctl/logo/convert_logo.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <stdexcept>
#include <string>

namespace {

using testing::HasSubstr;
using tool::convertLogo;

// 2x1: red, blue
constexpr char kRedAndBlue[] =
    "89504E470D0A1A0A0000000D49484452000000020000000108020000007B40E8DD0000000D4944415478DA63F8CF"
    "0004FF01070001FF3D7D8C490000000049454E44AE426082";
// 1x2 in grey: 40, C0
constexpr char kGrey[] =
    "89504E470D0A1A0A0000000D4948445200000001000000020800000000BCEAE9FB0000000C4944415478DA637060"
    "38000001840101348243FC0000000049454E44AE426082";
// 4x1 with a palette: 102030, 405060, 708090, A0B0C0
constexpr char kPalette[] =
    "89504E470D0A1A0A0000000D49484452000000040000000102030000008452E75E0000000C504C54451020304050"
    "60708090A0B0C076C1063E0000000A4944415478DA63900600001D001C237C8FAC0000000049454E44AE426082";
// 4x1: white with the opacity FF, 80 and 00, and 64320A
constexpr char kTransparent[] =
    "89504E470D0A1A0A0000000D4948445200000004000000010806000000F93C0FCD000000134944415478DA63F80F"
    "010D40CC9062C4F51F00775A0C1650323B530000000049454E44AE426082";
// 2x2, interlaced: 0A 14, 1E 28
constexpr char kInterlaced[] =
    "89504E470D0A1A0A0000000D494844520000000200000002080000000120DA626E0000000F4944415478DA63E062"
    "106190D3000000F70065262E0E420000000049454E44AE426082";
// 8x2 in four squares: 00 and 64 in turns, and one of FF
constexpr char kCheckers[] =
    "89504E470D0A1A0A0000000D494844520000000800000002080000000040FFC231000000164944415478DA636048"
    "6148F9FF1F4402E1FFFF290C0035D20655AC8691A40000000049454E44AE426082";
// 6x1: 00 00 30 30 60 90
constexpr char kThirds[] =
    "89504E470D0A1A0A0000000D4948445200000006000000010800000000D8A2802C0000000F4944415478DA636060"
    "30304898000002A70151591FE1630000000049454E44AE426082";
// 30000x30000
constexpr char kBomb[] =
    "89504E470D0A1A0A0000000D49484452000075300000753001000000004E5CC5170000000A4944415478DA636000"
    "0000020001E527DEFC0000000049454E44AE426082";
// 1x1: 0B1621
constexpr char kTiny[] =
    "89504E470D0A1A0A0000000D4948445200000001000000010802000000907753DE0000000C4944415478DA63E016"
    "530400007200430E34BA260000000049454E44AE426082";
// 10000x1, white
constexpr char kWide[] =
    "89504E470D0A1A0A0000000D494844520000271000000001010000000050A589A6000000134944415478DA63F83F"
    "0A46C1281805C3160000FBEEDD5B172C4AB40000000049454E44AE426082";

std::string fromHex(const std::string& hex) {
  std::string bytes;
  for (size_t i = 0; i + 1 < hex.size(); i += 2)
    bytes += static_cast<char>(std::strtoul(hex.substr(i, 2).c_str(), nullptr, 16));
  return bytes;
}

std::string toHex(const std::string& bytes) {
  std::string hex;
  for (const char byte : bytes) {
    hex += "0123456789ABCDEF"[static_cast<uint8_t>(byte) >> 4];
    hex += "0123456789ABCDEF"[byte & 15];
  }
  return hex;
}

// The pixels of the bitmap, blue first, the bottom row first.
std::string pixelsOf(const std::string& hexPng, unsigned width = 320, unsigned height = 240) {
  return toHex(convertLogo(fromHex(hexPng), width, height)).substr(108);
}

std::string failureOf(const std::string& png, unsigned width = 320, unsigned height = 240) {
  try {
    convertLogo(png, width, height);
  } catch (const std::runtime_error& error) {
    return error.what();
  }
  return "";
}

TEST(ConvertLogo, WritesAnUncompressedBitmapOf24Bits) {
  EXPECT_EQ(toHex(convertLogo(fromHex(kTiny), 320, 240)),
            "424D42000000000000003600000028000000"
            "0400000001000000010018000000000"
            "00C000000130B0000130B00000000000000000000"
            "00000021160B000000000000");
}

TEST(ConvertLogo, PadsTheWidthToAMultipleOfFour) {
  EXPECT_EQ(pixelsOf(kRedAndBlue),
            "000000"
            "0000FF"
            "FF0000"
            "000000");
}

TEST(ConvertLogo, WritesTheBottomRowFirst) {
  EXPECT_EQ(pixelsOf(kGrey),
            "000000"
            "C0C0C0"
            "000000"
            "000000"
            "000000"
            "404040"
            "000000"
            "000000");
}

TEST(ConvertLogo, ReadsAPalette) {
  EXPECT_EQ(pixelsOf(kPalette),
            "302010"
            "605040"
            "908070"
            "C0B0A0");
}

TEST(ConvertLogo, ShowsTransparentPartsOverBlack) {
  EXPECT_EQ(pixelsOf(kTransparent),
            "FFFFFF"
            "808080"
            "000000"
            "0A3264");
}

TEST(ConvertLogo, ReadsAnInterlacedPicture) {
  EXPECT_EQ(pixelsOf(kInterlaced),
            "000000"
            "1E1E1E"
            "282828"
            "000000"
            "000000"
            "0A0A0A"
            "141414"
            "000000");
}

TEST(ConvertLogo, MakesALargePictureSmallerByTheMeanOfTheArea) {
  EXPECT_EQ(pixelsOf(kCheckers, 4, 240),
            "323232"
            "323232"
            "FFFFFF"
            "323232");
}

TEST(ConvertLogo, CoversPartsOfPixels) {
  // Each pixel of the logo covers one and a half of the picture's.
  EXPECT_EQ(pixelsOf(kThirds, 4, 240),
            "000000"
            "202020"
            "404040"
            "808080");
}

TEST(ConvertLogo, KeepsTheShapeOfAPictureThatIsTooHigh) {
  EXPECT_EQ(pixelsOf(kGrey, 320, 1),
            "000000"
            "808080"
            "000000"
            "000000");
}

TEST(ConvertLogo, UsesOnlyAWidthThatIsAMultipleOfFour) {
  EXPECT_EQ(pixelsOf(kCheckers, 7, 240).size(), 24u);
}

TEST(ConvertLogo, KeepsOneRowOfAVeryWidePicture) {
  const std::string bitmap = convertLogo(fromHex(kWide), 320, 240);
  EXPECT_EQ(toHex(bitmap.substr(18, 8)), "4001000001000000");
  EXPECT_EQ(bitmap.substr(54), std::string(960, '\xFF'));
}

TEST(ConvertLogo, RefusesWhatIsNotAPng) {
  EXPECT_THAT(failureOf("BM and more"), HasSubstr("not a PNG"));
  EXPECT_THAT(failureOf(""), HasSubstr("not a PNG"));
}

TEST(ConvertLogo, RefusesAPngThatIsCutShortAnywhere) {
  const std::string png = fromHex(kTransparent);
  for (size_t size = 8; size < png.size() - 12; ++size)
    EXPECT_THAT(failureOf(png.substr(0, size)), HasSubstr("damaged")) << size;
}

TEST(ConvertLogo, RefusesAPictureThatUnpacksToTooMuchMemory) {
  EXPECT_THAT(failureOf(fromHex(kBomb)), HasSubstr("30000x30000"));
}

TEST(ConvertLogo, RefusesAScreenWithoutRoom) {
  EXPECT_THAT(failureOf(fromHex(kTiny), 0, 0), HasSubstr("shows no pictures"));
  EXPECT_THAT(failureOf(fromHex(kTiny), 3, 1), HasSubstr("shows no pictures"));
}

}  // namespace
