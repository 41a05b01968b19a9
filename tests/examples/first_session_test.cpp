#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <iterator>
#include <optional>
#include <string>
#include <vector>

#include "support/program.h"
#include "support/temporary_folder.h"

namespace {

using simulator::Program;

std::string contentOf(const char* path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

void putAtIpd1(const std::string& path) { setenv("IPODCTL_DEVICES", ("IPD1:=" + path).c_str(), 1); }

TEST(FirstPage, ShowsTheWholeFirstSession) {
  const std::string source = contentOf(FIRST_SESSION_SOURCE);
  ASSERT_THAT(source, testing::HasSubstr("IpodConnect"));
  EXPECT_THAT(contentOf(FIRST_PAGE), testing::HasSubstr("```c\n" + source + "```\n"));
}

class FirstSession : public testing::Test {
 protected:
  void plugIn(std::vector<std::string> options) {
    const std::string link = (folder / "ipod").string();
    options.insert(options.end(), {"--trace", "--link", link});
    ipod.emplace(IPODSIM_PROGRAM, options);
    ASSERT_EQ(ipod->readLine(), "iPod ready on " + link) << ipod->errors();
    putAtIpd1(link);
  }

  // Expects the last line of the output and the exit status.
  void expectSession(const std::string& sentence, int status) {
    Program session(FIRST_SESSION_PROGRAM, {});
    EXPECT_TRUE(session.readUntil(sentence));
    EXPECT_EQ(session.waitForEnd(), status) << session.errors();
  }

  const simulator::TemporaryFolder folder;
  std::optional<Program> ipod;
};

TEST_F(FirstSession, PlaysTheFirstArtist) {
  plugIn({});
  expectSession("Aalto Varispeed plays", 0);
  EXPECT_TRUE(ipod->readUntil("PlayCurrentSelection"));
}

TEST_F(FirstSession, PlaysTheFirstArtistOfAnIpodThatAcknowledgesTheConnectionTwice) {
  plugIn({"--personality", "nano"});
  expectSession("Aalto Varispeed plays", 0);
}

TEST_F(FirstSession, AsksAgainWhenACountIsLost) {
  plugIn({"--fault", "lost@04:0018#1"});
  expectSession("Aalto Varispeed plays", 0);
}

TEST_F(FirstSession, PrintsThatTheIpodDoesNotAnswer) {
  plugIn({"--fault", "silence@04:001A"});
  expectSession("The iPod gives no usable answer. Plug it in again, then start again.", 1);
}

TEST_F(FirstSession, ReturnsOneWithoutAnIpod) {
  putAtIpd1("/there/is/none");
  expectSession("No iPod could be connected. Check the cable, then start again.", 1);
}

}  // namespace
