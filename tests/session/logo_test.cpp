// The logo on its way from the bitmap file to the iPod's screen.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <ipodctl.h>

#include <optional>

#include "support/bitmap_file.h"
#include "support/session_ipod.h"

namespace session {
namespace {

using simulator::Lingo;
using simulator::Picture;
using simulator::SimulatedIpod;

class LogoSession : public testing::Test {
 protected:
  void TearDown() override { IpodDisconnect(); }

  static std::optional<Picture> shownBy(SessionIpod& ipod) {
    return ipod.look([](SimulatedIpod& device) { return device.display().shown(); });
  }
  static size_t imagePackets(SessionIpod& ipod) {
    return ipod.look([](SimulatedIpod& device) {
      return device.countReceived(Lingo::kExtendedInterface, simulator::kSetDisplayImage);
    });
  }
  /// Connects with this logo file, and expects a connection without a logo.
  static void expectNoLogoOf(const std::string& file) {
    SessionIpod ipod;
    ipod.folder.writeLogo(file);
    EXPECT_EQ(IpodConnect(), 1);
    EXPECT_EQ(imagePackets(ipod), 0u);
    IpodDisconnect();
  }
};

// The screen has 320 x 240 pixels, the logo 240 x 120: 60 white rows are above it.
TEST_F(LogoSession, ShowsTheBitmapPixelByPixelBelowWhiteRows) {
  SessionIpod ipod;
  ipod.folder.putLogo();
  const BitmapFile logo(contentOf(headUnitLogo()));
  ASSERT_EQ(logo.width(), 240);
  ASSERT_EQ(logo.height(), 120);
  ASSERT_EQ(IpodConnect(), 1);
  EXPECT_EQ(imagePackets(ipod), 180u);
  const std::optional<Picture> shown = shownBy(ipod);
  ASSERT_TRUE(shown);
  ASSERT_EQ(shown->width, 240);
  ASSERT_EQ(shown->height, 180);
  constexpr uint16_t kMargin = 60;
  EXPECT_EQ(differentPixels(logo, *shown, 0, kMargin), 0);
  for (uint16_t y = 0; y < kMargin; ++y) {
    for (uint16_t x = 0; x < shown->width; ++x)
      ASSERT_EQ(shown->at(x, y), (simulator::Colour{255, 255, 255})) << x << ' ' << y;
  }
}

TEST_F(LogoSession, IsShownAgainAtTheNextConnection) {
  SessionIpod ipod;
  ipod.folder.writeLogo(bitmapFile(4, 2, 24, std::string(24, '\x20')));
  ASSERT_EQ(IpodConnect(), 1);
  IpodDisconnect();
  ASSERT_TRUE(ipod.waitUntil([](const SimulatedIpod& device) { return !device.inExtendedMode(); }));
  ASSERT_EQ(IpodConnect(), 1);
  EXPECT_EQ(ipod.look([](SimulatedIpod& device) { return device.display().shownCount(); }), 2u);
}

TEST_F(LogoSession, IsNotSentToAScreenThatIsTooSmallGreyOrNone) {
  for (const char* model : {"nano", "mini", "touch"}) {
    SessionIpod ipod(simulator::personality(model));
    ipod.folder.putLogo();
    EXPECT_EQ(IpodConnect(), 1) << model;
    EXPECT_EQ(imagePackets(ipod), 0u) << model;
    IpodDisconnect();
  }
}

TEST_F(LogoSession, ConnectsWithoutALogoFile) {
  SessionIpod ipod;
  EXPECT_EQ(IpodConnect(), 1);
  EXPECT_EQ(imagePackets(ipod), 0u);
}

TEST_F(LogoSession, ConnectsWithABrokenLogoFile) {
  const std::string pixels(4 * 3 * 4, '\x55');
  const std::string whole = bitmapFile(4, 4, 24, pixels);
  expectNoLogoOf("");
  expectNoLogoOf("BM");
  expectNoLogoOf("no bitmap at all, but long enough for a header and a little more than that");
  expectNoLogoOf(whole.substr(0, 53));
  expectNoLogoOf(whole.substr(0, whole.size() - 1));
  expectNoLogoOf(bitmapFile(4, 4, 32, std::string(4 * 4 * 4, '\x55')));
  expectNoLogoOf(bitmapFile(4, 4, 8, pixels));
}

TEST_F(LogoSession, ConnectsWithALogoFileOfImpossibleSizes) {
  constexpr int32_t kSizes[] = {INT32_MIN, INT32_MIN + 1, -240, -1, 0, 0x10000, 0x7FFFFFFF};
  for (const int32_t size : kSizes) {
    expectNoLogoOf(bitmapFile(size, 4, 24, std::string(48, '\x55')));
    expectNoLogoOf(bitmapFile(4, size, 24, std::string(48, '\x55')));
    expectNoLogoOf(bitmapFile(size, size, 24, std::string(48, '\x55')));
  }
}

TEST_F(LogoSession, ConnectsWithALogoThatIsLargerThanTheScreen) {
  expectNoLogoOf(bitmapFile(324, 4, 24, std::string(324 * 4 * 3, '\x55')));
  expectNoLogoOf(bitmapFile(4, 241, 24, std::string(4 * 241 * 3, '\x55')));
}

}  // namespace
}  // namespace session
