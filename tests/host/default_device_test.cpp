#include "coredll/default_device.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>

#include "coredll/open_failure.h"
#include "support/eventually.h"
#include "support/pty_pair.h"
#include "support/temporary_folder.h"

namespace default_device {
namespace {

namespace fs = std::filesystem;

constexpr uid_t kNobody = 65534;

class DefaultDevice : public testing::Test {
 protected:
  void linkTo(const fs::path& target) const {
    fs::remove(link);
    fs::create_symlink(target, link);
  }

  /// Returns why the link is not used.
  std::string refusal() const {
    try {
      return "used: " + coredll::defaultTerminal(link.string());
    } catch (const coredll::OpenFailure& failure) {
      EXPECT_EQ(failure.code, ERROR_FILE_NOT_FOUND);
      return failure.what();
    }
  }

  static std::string because(const std::string& why) {
    return "is not in IPODCTL_DEVICES, and " + why +
           "; start ipodsim, or set IPODCTL_DEVICES=IPD1:=PATH";
  }

  const simulator::TemporaryFolder folder;
  const fs::path link = folder / "ipod";
  const host_test::PtyPair wire;
};

TEST_F(DefaultDevice, IsThePseudoTerminalThatTheLinkLeadsTo) {
  linkTo(wire.path());
  EXPECT_EQ(coredll::defaultTerminal(link.string()), wire.path());
}

TEST_F(DefaultDevice, IsNotThereWithoutTheLink) {
  EXPECT_EQ(refusal(), because("there is no " + link.string()));
  linkTo(folder / "none");
  EXPECT_EQ(refusal(), because(link.string() + " leads to nothing"));
}

TEST_F(DefaultDevice, IsNotAnotherFile) {
  std::ofstream(link) << "x";
  EXPECT_EQ(refusal(), because(link.string() + " is not a link"));
  linkTo("/dev/null");
  EXPECT_EQ(refusal(), because(link.string() + " does not lead to a pseudo-terminal"));
  fs::create_symlink(wire.path(), folder / "second");
  linkTo(folder / "second");
  EXPECT_EQ(refusal(), because(link.string() + " does not lead to a pseudo-terminal"));
}

/// A shell can have the pseudo-terminal with this number now.
TEST_F(DefaultDevice, IsNotAPseudoTerminalThatIsYoungerThanTheLink) {
  linkTo(wire.path());
  const std::string stale = because(link.string() + " is left from an ipodsim that has ended");
  EXPECT_TRUE(session::eventually([&] {
    chmod(wire.path().c_str(), 0620);  // the clock of the files moves in steps
    return refusal() == stale;
  }));
}

/// Only the superuser can give a file to another user.
TEST_F(DefaultDevice, IsNotThatOfAnotherUser) {
  linkTo(wire.path());
  if (getuid() != 0) GTEST_SKIP() << "only the superuser can try this";
  ASSERT_EQ(lchown(link.c_str(), kNobody, kNobody), 0);
  EXPECT_EQ(refusal(), because(link.string() + " belongs to another user"));
  linkTo(wire.path());
  ASSERT_EQ(chown(wire.path().c_str(), kNobody, kNobody), 0);
  EXPECT_EQ(refusal(), because(wire.path() + " belongs to another user"));
}

}  // namespace
}  // namespace default_device
