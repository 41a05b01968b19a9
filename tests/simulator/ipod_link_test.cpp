#include "link/ipod_link.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <fstream>

#include "link/pty_port.h"
#include "support/temporary_folder.h"

namespace simulator {
namespace {

namespace fs = std::filesystem;

using testing::HasSubstr;

/// The path of a terminal that does not exist.
const char* const kNoTerminal = "/dev/pts/99999999";

class IpodLinkTest : public testing::Test {
 protected:
  // Returns the message for a path that cannot be claimed.
  static std::string claimRefused(const fs::path& path) {
    IpodLink other(path);
    try {
      other.claim();
    } catch (const LinkError& refused) {
      return refused.what();
    }
    return "claimed";
  }
  // Returns the message for a link that cannot be made.
  std::string linkRefused() const {
    try {
      link.leadTo(port.place());
    } catch (const LinkError& refused) {
      return refused.what();
    }
    return "made";
  }
  std::string target() const { return fs::read_symlink(path).string(); }
  // Gives the link an old time, as if it had been made long ago.
  void makeOld() const {
    const timespec year2001[] = {{1000000000, 0}, {1000000000, 0}};
    ASSERT_EQ(utimensat(AT_FDCWD, path.c_str(), year2001, AT_SYMLINK_NOFOLLOW), 0);
  }

  TemporaryFolder folder;
  const fs::path path = folder / "ipod";
  IpodLink link{path};
  PtyPort port;
};

TEST_F(IpodLinkTest, LeadsToTheTerminalUntilItIsRemoved) {
  link.claim();
  link.leadTo(port.place());
  EXPECT_EQ(target(), port.place());
  link.removeFrom(port.place());
  EXPECT_FALSE(fs::is_symlink(path));
}

TEST_F(IpodLinkTest, DoesNothingWithoutAPath) {
  IpodLink none{fs::path()};
  IpodLink another{fs::path()};
  none.claim();
  another.claim();
  none.leadTo(port.place());
  none.removeFrom(port.place());
}

TEST_F(IpodLinkTest, ClaimRefusesAnotherOneAndNamesItsHolder) {
  link.claim();
  EXPECT_EQ(claimRefused(path),
            "the link " + path.string() + " is in use by another simulated iPod, process " +
                std::to_string(getpid()) + "; end that one, or use another link");
}

TEST_F(IpodLinkTest, ClaimDependsOnTheFolderAndNotOnTheSpellingOfItsPath) {
  link.claim();
  EXPECT_NE(claimRefused(folder / "." / "ipod"), "claimed");
  fs::create_directory_symlink(folder / ".", folder / "here");
  EXPECT_NE(claimRefused(folder / "here" / "ipod"), "claimed");
  fs::create_directory(folder / "there");
  EXPECT_EQ(claimRefused(folder / "there" / "ipod"), "claimed");
}

TEST_F(IpodLinkTest, ClaimDependsOnTheWholeLongName) {
  const std::string name(250, 'x');
  IpodLink longest(folder / (name + "1"));
  longest.claim();
  EXPECT_EQ(claimRefused(folder / (name + "2")), "claimed");
  EXPECT_NE(claimRefused(folder / (name + "1")), "claimed");
}

TEST_F(IpodLinkTest, ClaimEndsWithItsRelease) {
  link.claim();
  link.release();
  EXPECT_EQ(claimRefused(path), "claimed");
  link.claim();
  EXPECT_NE(claimRefused(path), "claimed");
}

TEST_F(IpodLinkTest, ClaimLeavesNoFile) {
  link.claim();
  EXPECT_TRUE(fs::is_empty(folder / "."));
}

TEST_F(IpodLinkTest, ManyCanBeRefused) {
  link.claim();
  for (int i = 0; i < 300; ++i)
    ASSERT_THAT(claimRefused(path), HasSubstr("process " + std::to_string(getpid()))) << i;
}

TEST_F(IpodLinkTest, FolderMustExist) {
  EXPECT_EQ(claimRefused(folder / "none" / "ipod"),
            "cannot make the link " + (folder / "none" / "ipod").string() +
                ": No such file or directory; make its folder, or use another link");
}

TEST_F(IpodLinkTest, LinkOfADeadIpodIsReplaced) {
  fs::create_symlink(kNoTerminal, path);
  EXPECT_EQ(linkRefused(), "made");
  EXPECT_EQ(target(), port.place());
}

TEST_F(IpodLinkTest, LinkOfADeadIpodIsReplacedWhoseTerminalNowBelongsToAnotherProcess) {
  const PtyPort other;
  fs::create_symlink(other.place(), path);
  makeOld();
  EXPECT_EQ(linkRefused(), "made");
  EXPECT_EQ(target(), port.place());
}

TEST_F(IpodLinkTest, LinkOfADeadIpodIsReplacedWhoseTerminalIsNowOurs) {
  fs::create_symlink(port.place(), path);
  EXPECT_EQ(linkRefused(), "made");
  EXPECT_EQ(target(), port.place());
}

TEST_F(IpodLinkTest, LinkToAnOlderTerminalIsKept) {
  const PtyPort other;
  fs::create_symlink(other.place(), path);
  EXPECT_EQ(linkRefused(), "cannot make the link " + path.string() + ": it is there and leads to " +
                               other.place() +
                               ", which another program serves; end that program, or use another "
                               "link");
  EXPECT_EQ(target(), other.place());
}

TEST_F(IpodLinkTest, LinkToAnythingElseIsKept) {
  fs::create_symlink("/nowhere", path);
  EXPECT_EQ(linkRefused(),
            "cannot make the link " + path.string() +
                ": it is there and leads to /nowhere; remove it, or use another link");
  EXPECT_EQ(target(), "/nowhere");
}

TEST_F(IpodLinkTest, FileOrFolderIsKept) {
  std::ofstream(path) << "precious";
  const std::string refused =
      "cannot make the link " + path.string() + ": there is a file of this name; use another link";
  EXPECT_EQ(linkRefused(), refused);
  EXPECT_TRUE(fs::is_regular_file(path));
  fs::remove(path);
  fs::create_directory(path);
  EXPECT_EQ(linkRefused(), refused);
  EXPECT_TRUE(fs::is_directory(path));
}

TEST_F(IpodLinkTest, OtherFilesOfTheFolderAreKept) {
  const fs::path beside = folder / "ipod.new";
  std::ofstream(beside) << "precious";
  fs::create_symlink(kNoTerminal, path);
  EXPECT_EQ(linkRefused(), "made");
  EXPECT_TRUE(fs::is_regular_file(beside));
}

TEST_F(IpodLinkTest, LinkThatNowLeadsElsewhereIsNotRemoved) {
  link.leadTo(port.place());
  fs::remove(path);
  fs::create_symlink("/nowhere", path);
  link.removeFrom(port.place());
  EXPECT_EQ(target(), "/nowhere");
}

}  // namespace
}  // namespace simulator
