#include "music/file_content.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

#include "temporary_folder.h"

namespace simulator {
namespace {

using namespace std::string_literals;

std::string errorOf(const std::filesystem::path& file, size_t limit) {
  try {
    readFileContent(file, limit);
  } catch (const std::runtime_error& error) {
    return error.what();
  }
  return "no error";
}

TEST(ReadFileContent, ReturnsEveryByteOfAFileLargerThanItsBlocks) {
  const TemporaryFolder folder;
  const std::string content = "first\0\r\n"s + std::string(200000, 'x') + "last";
  EXPECT_EQ(readFileContent(folder.write("file", content), 1000000), content);
  EXPECT_EQ(readFileContent(folder.write("empty", ""), 1000000), "");
}

TEST(ReadFileContent, AcceptsAFileOfExactlyTheLimitAndRefusesOneByteMore) {
  const TemporaryFolder folder;
  EXPECT_EQ(readFileContent(folder.write("four", "1234"), 4), "1234");
  EXPECT_EQ(errorOf(folder.write("five", "12345"), 4), "is larger than 4 bytes");
}

TEST(ReadFileContent, StopsAtTheLimitOfAnEndlessFile) {
  EXPECT_EQ(errorOf("/dev/zero", 1000000), "is larger than 1000000 bytes");
}

TEST(ReadFileContent, ReportsWhyAFileCannotBeRead) {
  const TemporaryFolder folder;
  EXPECT_EQ(errorOf(folder.path() / "none", 4), "No such file or directory");
  EXPECT_EQ(errorOf(folder.path(), 4), "is a folder");
}

}  // namespace
}  // namespace simulator
