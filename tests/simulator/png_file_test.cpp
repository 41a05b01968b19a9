#include "screen/png_file.h"

#include <gtest/gtest.h>
#include <png.h>

#include <cstring>
#include <fstream>
#include <iterator>

#include "control/base64.h"
#include "support/temporary_folder.h"

namespace simulator {
namespace {

namespace fs = std::filesystem;

const Picture kTwoPixels{2, 1, {{255, 0, 0}, {0, 128, 255}}};

Picture readPng(const fs::path& file) {
  png_image image;
  std::memset(&image, 0, sizeof image);
  image.version = PNG_IMAGE_VERSION;
  if (png_image_begin_read_from_file(&image, file.c_str()) == 0) return {};
  image.format = PNG_FORMAT_RGB;
  Picture picture{static_cast<uint16_t>(image.width), static_cast<uint16_t>(image.height), {}};
  picture.pixels.resize(image.width * image.height);
  png_image_finish_read(&image, nullptr, picture.pixels.data(), 0, nullptr);
  return picture;
}

class PngFileTest : public testing::Test {
 protected:
  TemporaryFolder folder;
  const fs::path file = folder / "screen.png";
};

TEST_F(PngFileTest, ContainsThePicture) {
  writePng(kTwoPixels, file);
  const Picture read = readPng(file);
  EXPECT_EQ(read.width, 2);
  EXPECT_EQ(read.height, 1);
  EXPECT_EQ(read.at(0, 0), (Colour{255, 0, 0}));
  EXPECT_EQ(read.at(1, 0), (Colour{0, 128, 255}));
}

TEST_F(PngFileTest, BytesAreThoseOfTheFile) {
  writePng(kTwoPixels, file);
  std::ifstream written(file, std::ios::binary);
  const Bytes bytes{std::istreambuf_iterator<char>(written), {}};
  EXPECT_EQ(encodePng(kTwoPixels), bytes);
}

TEST(Base64, HasThePaddingOfEachLength) {
  EXPECT_EQ(base64({}), "");
  EXPECT_EQ(base64(Bytes{0x4D}), "TQ==");
  EXPECT_EQ(base64(Bytes{0x4D, 0x61}), "TWE=");
  EXPECT_EQ(base64(Bytes{0x4D, 0x61, 0x6E}), "TWFu");
  EXPECT_EQ(base64(Bytes{0xFF, 0xEF, 0xBE, 0x00}), "/+++AA==");
}

TEST_F(PngFileTest, ReplacesAnOlderFileAndLeavesNoOther) {
  std::ofstream(file) << "old";
  writePng(kTwoPixels, file);
  EXPECT_EQ(readPng(file).width, 2);
  EXPECT_EQ(std::distance(fs::directory_iterator(file.parent_path()), fs::directory_iterator()), 1);
}

TEST_F(PngFileTest, NamesAFileThatCannotBeWritten) {
  const fs::path nowhere = folder / "none" / "screen.png";
  try {
    writePng(kTwoPixels, nowhere);
    FAIL() << "written";
  } catch (const std::runtime_error& error) {
    EXPECT_EQ(std::string(error.what()).rfind("cannot write " + nowhere.string() + ": ", 0), 0u);
  }
}

TEST_F(PngFileTest, DoesNotReplaceAFolder) {
  fs::create_directory(file);
  std::ofstream(file / "inside") << "x";
  EXPECT_THROW(writePng(kTwoPixels, file), std::runtime_error);
  EXPECT_TRUE(fs::is_directory(file));
}

}  // namespace
}  // namespace simulator
