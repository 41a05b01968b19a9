#include "link/replaceable_ipod.h"

#include <gtest/gtest.h>

#include "faults/fault_text.h"
#include "support/small_library.h"

namespace simulator {
namespace {

class ReplaceableIpodTest : public testing::Test {
 protected:
  ReplaceableIpod bay{personality("classic"), smallLibrary(), std::nullopt, 1};
  PtyIpod pty{bay.ipod(), FrameKind::kUsb};
};

TEST_F(ReplaceableIpodTest, RefusesWhileTheCableIsPluggedIn) {
  pty.start();
  const SimulatedIpod* const before = &bay.ipod();
  EXPECT_FALSE(bay.changeModel(pty, personality("nano")));
  EXPECT_FALSE(bay.changeTracks(pty, 2));
  EXPECT_EQ(&bay.ipod(), before);
  EXPECT_EQ(bay.ipod().catalogue().trackCount(), 7u);
}

TEST_F(ReplaceableIpodTest, ChangesTheModelAndKeepsTheMusicAndTheFaults) {
  addFault(bay.ipod().faults(), "lost@04:18#2");
  addFault(bay.ipod().faults(), "random=0.5");
  const Catalogue* const music = &bay.ipod().catalogue();
  pty.start();
  pty.unplug();
  ASSERT_TRUE(bay.changeModel(pty, personality("nano")));
  EXPECT_EQ(bay.ipod().personality().preset, "nano");
  EXPECT_EQ(&bay.ipod().catalogue(), music);
  EXPECT_EQ(faultTexts(bay.ipod().faults()),
            (std::vector<std::string>{"lost@04:0018#2", "random=0.5"}));
  pty.plug();
  EXPECT_TRUE(pty.access(
      [](SimulatedIpod& ipod) { return ipod.personality().preset == "nano" && ipod.plugged(); }));
}

TEST_F(ReplaceableIpodTest, ResizesTheOriginalMusicEachTime) {
  pty.start();
  pty.unplug();
  ASSERT_TRUE(bay.changeTracks(pty, 2));
  EXPECT_EQ(bay.ipod().catalogue().trackCount(), 2u);
  ASSERT_TRUE(bay.changeTracks(pty, 9));
  EXPECT_EQ(bay.ipod().catalogue().trackCount(), 9u);
  EXPECT_EQ(bay.ipod().catalogue().track(6).title, "Episode") << "it was cut off before";
  EXPECT_EQ(bay.ipod().personality().preset, "classic");
}

TEST_F(ReplaceableIpodTest, PreparesEachNewIpod) {
  std::vector<std::string> prepared;
  bay.setPreparation([&](SimulatedIpod& ipod) { prepared.push_back(ipod.personality().preset); });
  pty.start();
  pty.unplug();
  ASSERT_TRUE(bay.changeModel(pty, personality("mini")));
  EXPECT_EQ(prepared, std::vector<std::string>{"mini"});
}

}  // namespace
}  // namespace simulator
