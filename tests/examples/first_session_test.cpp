#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <iterator>

#include "program.h"
#include "temporary_folder.h"

namespace {

using simulator::Program;

std::string contentOf(const char* path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

void putAtIpd1(const std::string& path) { setenv("IPODCTL_DEVICES", ("IPD1:=" + path).c_str(), 1); }

/// A late acknowledgement of the connection can make the first request fail, and the list be empty.
bool takesASession() {
  Program session(FIRST_SESSION_PROGRAM, {});
  const bool hasPlayed = session.readUntil("Aalto Varispeed plays");
  EXPECT_EQ(session.waitForEnd(), 0) << session.errors();
  return hasPlayed;
}

TEST(FirstPage, ShowsTheWholeFirstSession) {
  const std::string source = contentOf(FIRST_SESSION_SOURCE);
  ASSERT_THAT(source, testing::HasSubstr("IpodConnect"));
  EXPECT_THAT(contentOf(FIRST_PAGE), testing::HasSubstr("```c\n" + source + "```\n"));
}

TEST(FirstSession, PlaysTheFirstArtist) {
  const simulator::TemporaryFolder folder;
  const std::string link = (folder / "ipod").string();
  Program ipod(IPODSIM_PROGRAM, {"--link", link, "--trace"});
  ASSERT_EQ(ipod.readLine(), "iPod ready on " + link) << ipod.errors();
  putAtIpd1(link);

  EXPECT_TRUE(takesASession() || takesASession() || takesASession());
  EXPECT_TRUE(ipod.readUntil("PlayCurrentSelection"));
}

TEST(FirstSession, EndsWithOneWithoutAnIpod) {
  putAtIpd1("/there/is/none");
  Program session(FIRST_SESSION_PROGRAM, {});
  EXPECT_TRUE(session.readUntil("No iPod connected"));
  EXPECT_EQ(session.waitForEnd(), 1);
}

}  // namespace
