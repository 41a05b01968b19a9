#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/wait.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <string>

#include "temporary_folder.h"

namespace simulator {
namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;

struct ScriptRun {
  int exitCode;
  std::string output;  ///< of stdout and stderr
};

std::string contentOf(const fs::path& file) {
  std::ifstream stream(file, std::ios::binary);
  return {std::istreambuf_iterator<char>(stream), {}};
}

ScriptRun runScript(const TemporaryFolder& folder, const std::string& arguments) {
  const fs::path output = folder.path() / "output";
  const std::string command = "cd '" + folder.path().string() + "' && '" TEST_MUSIC_SCRIPT "' " +
                              arguments + " >output 2>&1";
  const int status = std::system(command.c_str());
  return {WEXITSTATUS(status), contentOf(output)};
}

std::map<fs::path, std::string> filesOf(const fs::path& folder) {
  std::map<fs::path, std::string> files;
  for (const fs::directory_entry& entry : fs::recursive_directory_iterator(folder)) {
    if (entry.is_regular_file()) files[fs::relative(entry, folder)] = contentOf(entry);
  }
  return files;
}

TEST(MakeTestMusic, PrintsItsHelp) {
  const TemporaryFolder folder;
  const ScriptRun run = runScript(folder, "--help");
  EXPECT_EQ(run.exitCode, 0);
  EXPECT_THAT(run.output, HasSubstr("Usage: make-test-music DIR\n"));
}

TEST(MakeTestMusic, NeedsOneFolder) {
  const TemporaryFolder folder;
  for (const char* arguments : {"", "''", "one two", "--quick"}) {
    const ScriptRun run = runScript(folder, arguments);
    EXPECT_EQ(run.exitCode, 2) << arguments;
    EXPECT_THAT(run.output, HasSubstr("Usage: make-test-music DIR\n")) << arguments;
  }
}

TEST(MakeTestMusic, DoesNotChangeExistingFiles) {
  const TemporaryFolder folder;
  folder.write("full/mine.txt", "mine");
  const ScriptRun full = runScript(folder, "full");
  EXPECT_EQ(full.exitCode, 1);
  EXPECT_EQ(full.output, "make-test-music: full is not empty\n");
  EXPECT_EQ(filesOf(folder.path() / "full").size(), 1U);
  EXPECT_EQ(runScript(folder, "full/mine.txt").output,
            "make-test-music: full/mine.txt is not a folder\n");
}

TEST(MakeTestMusic, MakesTheSameFilesEveryTimeWithoutOutput) {
  const TemporaryFolder folder;
  const ScriptRun run = runScript(folder, "'new/my music'");
  EXPECT_EQ(run.exitCode, 0);
  EXPECT_EQ(run.output, "");
  const std::map<fs::path, std::string> made = filesOf(folder.path() / "new/my music");
  EXPECT_EQ(made.size(), 14U);
  EXPECT_TRUE(made == filesOf(TEST_MUSIC_FOLDER));
}

}  // namespace
}  // namespace simulator
