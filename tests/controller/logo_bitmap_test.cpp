#include "controller/logo_bitmap.h"

#include <dirent.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <initializer_list>
#include <memory>
#include <ostream>
#include <vector>

#include "controller/ipod_controller.h"
#include "controller/logo_file.h"
#include "controller/scripted_controller.h"
#include "support/row_name.h"

namespace ipodctl {
namespace {

constexpr uint32_t kHeaderBytes = 54;

Bytes rowOf(const LogoBitmap& logo, uint32_t fromTop) {
  const uint8_t* const row = logo.row(fromTop);
  return row == nullptr ? Bytes{} : Bytes(row, row + logo.rowBytes());
}

bool reads(const Bytes& content) {
  const LogoFile file(content);
  LogoBitmap logo;
  return logo.read(file.path());
}

uint32_t openFiles() {
  const std::unique_ptr<DIR, int (*)(DIR*)> folder(opendir("/proc/self/fd"), closedir);
  uint32_t count = 0;
  while (readdir(folder.get()) != nullptr)
    ++count;
  return count;
}

/// 4 x 2 pixels. The bottom row, which is first: blue, green, red, white; the top row: black, a
/// mixture, and the colours just below and at what the screen can show.
const Bytes kFourByTwo = {
    'B',  'M',                                       //
    0x4E, 0x00, 0x00, 0x00,                          // file size
    0x00, 0x00, 0x00, 0x00,                          // reserved
    0x36, 0x00, 0x00, 0x00,                          // data offset
    0x28, 0x00, 0x00, 0x00,                          // header size
    0x04, 0x00, 0x00, 0x00,                          // width
    0x02, 0x00, 0x00, 0x00,                          // height
    0x01, 0x00, 0x18, 0x00,                          // planes, bits per pixel
    0x00, 0x00, 0x00, 0x00, 0x18, 0x00, 0x00, 0x00,  // compression, image size
    0x13, 0x0B, 0x00, 0x00, 0x13, 0x0B, 0x00, 0x00,  // resolutions
    0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00,  // colours
    0xFF, 0x00, 0x00, 0x00, 0xFF, 0x00, 0x00, 0x00, 0xFF, 0xFF, 0xFF, 0xFF,
    0x00, 0x00, 0x00, 0x12, 0x34, 0x56, 0x07, 0x03, 0x07, 0x08, 0x04, 0x08};

TEST(LogoBitmap, BecomesRgb565WithTheLowByteFirst) {
  const LogoFile file(kFourByTwo);
  LogoBitmap logo;
  ASSERT_TRUE(logo.read(file.path()));
  EXPECT_EQ(logo.width(), 4u);
  EXPECT_EQ(logo.height(), 2u);
  EXPECT_EQ(logo.rowBytes(), 8u);
  EXPECT_EQ(rowOf(logo, 0), (Bytes{0x00, 0x00, 0xA2, 0x51, 0x00, 0x00, 0x21, 0x08}));
  EXPECT_EQ(rowOf(logo, 1), (Bytes{0x1F, 0x00, 0xE0, 0x07, 0x00, 0xF8, 0xFF, 0xFF}));
}

TEST(LogoBitmap, HasNoRowBelowItsLast) {
  const LogoFile file(kFourByTwo);
  LogoBitmap logo;
  ASSERT_TRUE(logo.read(file.path()));
  for (const uint32_t below : {2u, 3u, 0x7FFFFFFFu, 0x80000000u, 0xFFFFFFFFu})
    EXPECT_EQ(logo.row(below), nullptr);
}

TEST(LogoBitmap, HasNoPictureAtFirst) {
  const LogoBitmap logo;
  EXPECT_EQ(logo.width(), 0u);
  EXPECT_EQ(logo.height(), 0u);
  EXPECT_EQ(logo.row(0), nullptr);
}

TEST(LogoBitmap, OfAHighByteFirstFileIsTheSamePicture) {
  const Bytes content = {'M',  'B',                                       //
                         0x00, 0x00, 0x00, 0x42,                          // file size
                         0x00, 0x00, 0x00, 0x00,                          // reserved
                         0x00, 0x00, 0x00, 0x36,                          // data offset
                         0x00, 0x00, 0x00, 0x28,                          // header size
                         0x00, 0x00, 0x00, 0x04,                          // width
                         0x00, 0x00, 0x00, 0x01,                          // height
                         0x00, 0x01, 0x00, 0x18,                          // planes, bits per pixel
                         0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x0C,  // compression, image size
                         0x00, 0x00, 0x0B, 0x13, 0x00, 0x00, 0x0B, 0x13,  // resolutions
                         0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00,  // colours
                         0xFF, 0x00, 0x00, 0x00, 0xFF, 0x00, 0x00, 0x00, 0xFF, 0x12, 0x34, 0x56};
  const LogoFile file(content);
  LogoBitmap logo;
  ASSERT_TRUE(logo.read(file.path()));
  EXPECT_EQ(logo.width(), 4u);
  EXPECT_EQ(logo.height(), 1u);
  EXPECT_EQ(rowOf(logo, 0), (Bytes{0x1F, 0x00, 0xE0, 0x07, 0x00, 0xF8, 0xA2, 0x51}));
}

TEST(LogoBitmap, WithNumbersInTheWrongOrderForItsMarkerIsRefused) {
  Bytes lowFirst = kFourByTwo;
  std::swap(lowFirst[0], lowFirst[1]);
  EXPECT_FALSE(reads(lowFirst));
}

TEST(LogoBitmap, WithAnotherMarkerIsRefused) {
  for (const char* marker : {"BB", "MM", "BA", "CI", "bm", "mb", "\xFF\xD8"}) {
    SCOPED_TRACE(marker);
    Bytes content = kFourByTwo;
    content[0] = static_cast<uint8_t>(marker[0]);
    content[1] = static_cast<uint8_t>(marker[1]);
    EXPECT_FALSE(reads(content));
  }
}

/// Pixel (x, y from the bottom) has its place as its blue and red, so no two within a row or a
/// column are alike: the screen's pixel is y, x in their five bits.
Bytes placePixels(uint32_t width, uint32_t height) {
  Bytes pixels;
  for (uint32_t y = 0; y < height; ++y) {
    for (uint32_t x = 0; x < width; ++x)
      pixels = pixels + Bytes{static_cast<uint8_t>(y << 3), 0, static_cast<uint8_t>(x << 3)};
  }
  return pixels;
}

/// A width and the number of pixels that a row keeps of it.
struct WidthRow {
  uint32_t width;
  uint32_t kept;
};

void PrintTo(const WidthRow& row, std::ostream* stream) { *stream << row.width << " pixels"; }

class LogoWidth : public testing::TestWithParam<WidthRow> {};

TEST_P(LogoWidth, KeepsTheNextLowerMultipleOfFourAndOnePixelMore) {
  constexpr uint32_t kHeight = 3;
  const auto [width, kept] = GetParam();
  const LogoFile file(bitmap(sized(width, kHeight), placePixels(width, kHeight)));
  LogoBitmap logo;
  ASSERT_TRUE(logo.read(file.path()));
  EXPECT_EQ(logo.width(), width);
  EXPECT_EQ(logo.height(), kHeight);
  ASSERT_EQ(logo.rowBytes(), 2 * kept);
  for (uint32_t fromTop = 0; fromTop < kHeight; ++fromTop) {
    Bytes expected;
    for (uint32_t x = 0; x < kept; ++x)
      expected = expected +
                 Bytes{static_cast<uint8_t>(kHeight - 1 - fromTop), static_cast<uint8_t>(x << 3)};
    EXPECT_EQ(rowOf(logo, fromTop), expected);
  }
}

const WidthRow kWidths[] = {{1, 1},   {2, 1},   {3, 1},   {4, 4},   {5, 5},   {6, 5},
                            {7, 5},   {8, 8},   {9, 9},   {10, 9},  {11, 9},  {12, 12},
                            {13, 13}, {14, 13}, {15, 13}, {16, 16}, {30, 29}, {31, 29}};

INSTANTIATE_TEST_SUITE_P(Of, LogoWidth, testing::ValuesIn(kWidths));

TEST(LogoBitmap, RowsAreReadWithoutPadding) {
  Bytes content = bitmap(sized(3, 2), {0x08, 0, 0, 0x10, 0, 0, 0x18, 0, 0,  //
                                       0x20, 0, 0, 0x28, 0, 0, 0x30, 0, 0});
  const LogoFile file(content);
  LogoBitmap logo;
  ASSERT_TRUE(logo.read(file.path()));
  EXPECT_EQ(rowOf(logo, 1), (Bytes{0x01, 0x00}));
  EXPECT_EQ(rowOf(logo, 0), (Bytes{0x04, 0x00}));
}

/// Planes and bits per pixel count by their product.
struct DepthRow {
  uint16_t planes;
  uint16_t bitsPerPixel;
  bool accepted;
};

void PrintTo(const DepthRow& row, std::ostream* stream) {
  *stream << row.planes << " x " << row.bitsPerPixel;
}

class LogoDepth : public testing::TestWithParam<DepthRow> {};

TEST_P(LogoDepth, IsTwentyFourBitsInAll) {
  BitmapHeader header;
  header.planes = GetParam().planes;
  header.bitsPerPixel = GetParam().bitsPerPixel;
  EXPECT_EQ(reads(bitmap(header, Bytes(64))), GetParam().accepted);
}

const DepthRow kDepths[] = {{1, 24, true},
                            {2, 12, true},
                            {3, 8, true},
                            {4, 6, true},
                            {6, 4, true},
                            {8, 3, true},
                            {12, 2, true},
                            {24, 1, true},
                            {1, 32, false},
                            {1, 16, false},
                            {1, 8, false},
                            {1, 1, false},
                            {1, 23, false},
                            {1, 25, false},
                            {2, 24, false},
                            {0, 24, false},
                            {24, 0, false},
                            {0, 0, false},
                            // 65560: 24 in its low 16 bits.
                            {440, 149, false},
                            {149, 440, false},
                            {0xFFFF, 0xFFFF, false},
                            {0xFFFF, 24, false}};

INSTANTIATE_TEST_SUITE_P(Of, LogoDepth, testing::ValuesIn(kDepths));

TEST(LogoBitmap, DoesNotLookAtTheFieldsThatItDoesNotNeed) {
  BitmapHeader header;
  header.fileSize = 0;
  header.reserved1 = 0xFFFF;
  header.reserved2 = 0xFFFF;
  header.headerSize = 0;
  header.compression = 3;
  header.imageSize = 0xFFFFFFFF;
  header.horizontalResolution = 0xFFFFFFFF;
  header.verticalResolution = 0xFFFFFFFF;
  header.coloursUsed = 0xFFFFFFFF;
  header.importantColours = 0xFFFFFFFF;
  EXPECT_TRUE(reads(bitmap(header, Bytes(12))));
}

TEST(LogoBitmap, TakesItsPixelsFromTheDataOffset) {
  BitmapHeader header;
  header.dataOffset = 57;
  const LogoFile file(bitmap(header, {0xEE, 0xEE, 0xEE,  //
                                      0x08, 0, 0, 0x10, 0, 0, 0x18, 0, 0, 0x20, 0, 0, 0xEE}));
  LogoBitmap logo;
  ASSERT_TRUE(logo.read(file.path()));
  EXPECT_EQ(rowOf(logo, 0), (Bytes{0x01, 0x00, 0x02, 0x00, 0x03, 0x00, 0x04, 0x00}));
}

TEST(LogoBitmap, TakesADataOffsetInsideTheHeader) {
  BitmapHeader header = sized(1, 1);
  header.dataOffset = 0;
  // The marker and the first byte of the file size as a pixel: blue 42, green 4D, red 08.
  header.fileSize = 0x08;
  const LogoFile file(bitmap(header, {}));
  LogoBitmap logo;
  ASSERT_TRUE(logo.read(file.path()));
  EXPECT_EQ(rowOf(logo, 0), (Bytes{0x68, 0x0A}));
}

TEST(LogoBitmap, WithADataOffsetBeyondTheFileIsRefused) {
  for (const uint32_t offset : {55u, 66u, 67u, 100000u, 0x7FFFFFFFu, 0x80000000u, 0xFFFFFFFFu}) {
    SCOPED_TRACE(testing::Message() << "offset " << offset);
    BitmapHeader header;
    header.dataOffset = offset;
    EXPECT_FALSE(reads(bitmap(header, Bytes(12))));
  }
}

TEST(LogoBitmap, CutAnywhereIsRefused) {
  for (const bool highByteFirst : {false, true}) {
    BitmapHeader header;
    header.highByteFirst = highByteFirst;
    const Bytes whole = bitmap(header, Bytes(12));
    for (std::size_t size = 0; size < whole.size(); ++size) {
      SCOPED_TRACE(testing::Message() << size << " bytes");
      EXPECT_FALSE(reads(Bytes(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size))));
    }
    EXPECT_TRUE(reads(whole));
  }
}

TEST(LogoBitmap, CutInsideItsHeaderIsRefusedThoughThePixelsAreThere) {
  BitmapHeader header = sized(1, 1);
  header.dataOffset = 0;
  const Bytes whole = bitmap(header, {});
  for (std::size_t size = 0; size < kHeaderBytes; ++size) {
    SCOPED_TRACE(testing::Message() << size << " bytes");
    EXPECT_FALSE(reads(Bytes(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size))));
  }
  EXPECT_TRUE(reads(whole));
}

TEST(LogoBitmap, OfAMissingFileIsRefused) {
  LogoBitmap logo;
  EXPECT_FALSE(logo.read("/nonexistent/logo_zel.bmp"));
  EXPECT_FALSE(logo.read(""));
  EXPECT_FALSE(logo.read("/"));
}

/// Sizes that no picture has, or whose products do not fit 32 bits; as signed numbers, some are
/// negative.
struct SizeRow {
  uint32_t width;
  uint32_t height;
};

void PrintTo(const SizeRow& row, std::ostream* stream) {
  *stream << std::hex << row.width << " x " << row.height;
}

class ImpossibleSize : public testing::TestWithParam<SizeRow> {};

TEST_P(ImpossibleSize, IsRefused) {
  for (const bool highByteFirst : {false, true}) {
    BitmapHeader header = sized(GetParam().width, GetParam().height);
    header.highByteFirst = highByteFirst;
    const LogoFile file(bitmap(header, Bytes(64)));
    LogoBitmap logo;
    EXPECT_FALSE(logo.read(file.path()));
    EXPECT_EQ(logo.row(0), nullptr);
  }
}

const SizeRow kImpossibleSizes[] = {
    {0, 1},
    {1, 0},
    {0, 0},
    {0, 0x7FFFFFFF},
    {0xFFFFFFFF, 1},
    {1, 0xFFFFFFFF},
    {0xFFFFFFFC, 0xFFFFFFFF},
    {0x80000000, 1},
    {4, 0x80000000},
    {0x80000000, 0x80000000},
    {0x7FFFFFFF, 1},
    {1, 0x7FFFFFFF},
    {0x7FFFFFFF, 0x7FFFFFFF},
    {0x10000, 0x10000},
    {0x8000, 0x8000},
    {0x4000, 0x4000},
    {0x40000000, 4},
    {0x55555556, 1},
    {1, 0x55555556},
    {0x2AAAAAAB, 2},
    {100, 100},
    // 26, 26 and 13 bytes in 64 bits: one side is negative, or both.
    {0x77A90C3E, 0xB68FA971},
    {0xB68FA971, 0x77A90C3E},
    {0xACE30E8D, 0xFCB65D2B}};

INSTANTIATE_TEST_SUITE_P(Of, ImpossibleSize, testing::ValuesIn(kImpossibleSizes));

TEST(LogoBitmap, MayBeWiderThanARowOnTheWire) {
  const LogoFile file(bitmap(sized(40000, 1), Bytes(40000 * 3, 0xFF)));
  LogoBitmap logo;
  ASSERT_TRUE(logo.read(file.path()));
  EXPECT_EQ(logo.rowBytes(), 80000u);
  EXPECT_EQ(rowOf(logo, 0), Bytes(80000, 0xFF));
}

TEST(LogoBitmap, HasNoPictureAfterAFileThatCannotBeRead) {
  const LogoFile file(bitmap({}, Bytes(4 * 1 * 3)));
  LogoBitmap logo;
  ASSERT_TRUE(logo.read(file.path()));
  ASSERT_NE(logo.row(0), nullptr);
  EXPECT_FALSE(logo.read("no such file"));
  EXPECT_EQ(logo.row(0), nullptr);
}

TEST(LogoBitmap, LeavesNoFileOpen) {
  const uint32_t before = openFiles();
  BitmapHeader deep;
  deep.bitsPerPixel = 32;
  reads(bitmap(deep, Bytes(64)));
  reads(bitmap({}, Bytes(11)));
  reads(bitmap(sized(0xFFFFFFFF, 1), Bytes(64)));
  reads({'B', 'M'});
  reads({'X', 'X'});
  reads({});
  EXPECT_TRUE(reads(kFourByTwo));
  EXPECT_EQ(openFiles(), before);
}

class Logo : public testing::Test {
 protected:
  Scripted<IpodController> controller;
  const LogoFile good{kFourByTwo};
};

TEST_F(Logo, IsLoadedWithItsSizes) {
  EXPECT_TRUE(controller.LoadLogo(good.path()));
  ASSERT_NE(controller.logoImage(), nullptr);
  EXPECT_EQ(controller.logoImage()->width(), 4u);
  EXPECT_EQ(controller.logoImage()->height(), 2u);
}

TEST_F(Logo, IsReplacedByTheNextOne) {
  const LogoFile other(bitmap(sized(8, 1), Bytes(24)));
  ASSERT_TRUE(controller.LoadLogo(good.path()));
  EXPECT_TRUE(controller.LoadLogo(other.path()));
  ASSERT_NE(controller.logoImage(), nullptr);
  EXPECT_EQ(controller.logoImage()->width(), 8u);
}

TEST_F(Logo, IsGoneWhenTheNextOneCannotBeRead) {
  BitmapHeader deep;
  deep.bitsPerPixel = 32;
  const LogoFile refused(bitmap(deep, Bytes(64)));
  for (const char* name : {"/nonexistent/logo_zel.bmp", "", refused.path()}) {
    SCOPED_TRACE(name);
    ASSERT_TRUE(controller.LoadLogo(good.path()));
    EXPECT_FALSE(controller.LoadLogo(name));
    EXPECT_EQ(controller.logoImage(), nullptr);
  }
}

TEST_F(Logo, CanBeFreedAnyNumberOfTimes) {
  EXPECT_TRUE(controller.FreeLogo());
  ASSERT_TRUE(controller.LoadLogo(good.path()));
  EXPECT_TRUE(controller.FreeLogo());
  EXPECT_EQ(controller.logoImage(), nullptr);
  EXPECT_TRUE(controller.FreeLogo());
}

TEST_F(Logo, IsReadWithoutAWordToTheIpod) {
  callLog().clear();
  controller.LoadLogo(good.path());
  controller.FreeLogo();
  EXPECT_EQ(callLog(), Calls{});
}

}  // namespace
}  // namespace ipodctl
