#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <optional>
#include <string>
#include <vector>

#include "ipodctl/mpris/mpris_state.h"
#include "support/program.h"
#include "support/temporary_folder.h"

namespace {

using simulator::Program;
using testing::HasSubstr;
using tool::MprisState;
using tool::mprisState;

MprisState stateIn(const char* text) { return mprisState(nlohmann::json::parse(text)); }

constexpr char kPaused[] =
    R"({"connection":{"stage":"ready"},"playback":{"status":"paused","index":4,"title":"T",)"
    R"("artist":"A","album":"B","genre":"G","position_ms":1500},)"
    R"("modes":{"shuffle":"albums","repeat":"all"}})";

TEST(MprisState, HasWhatPlays) {
  const MprisState state = stateIn(kPaused);
  EXPECT_EQ(state.status, "Paused");
  EXPECT_TRUE(state.hasTrack);
  EXPECT_EQ(state.index, 4);
  EXPECT_EQ(state.title + state.artist + state.album + state.genre, "TABG");
  EXPECT_EQ(state.position, 1500000);
  EXPECT_TRUE(state.shuffle);
  EXPECT_EQ(state.loop, "Playlist");
}

TEST(MprisState, IsStoppedWithoutAnIpod) {
  const MprisState state = stateIn(
      R"({"connection":{"stage":"lost"},"playback":{"status":"playing","index":4,"title":"T"}})");
  EXPECT_EQ(state.status, "Stopped");
  EXPECT_FALSE(state.hasTrack);
}

TEST(MprisState, HasNoTrackWhenNothingIsKnown) {
  const MprisState state =
      stateIn(R"({"connection":{"stage":"ready"},"playback":{"status":null,"index":null}})");
  EXPECT_EQ(state.status, "Stopped");
  EXPECT_FALSE(state.hasTrack);
  EXPECT_EQ(state.loop, "None");
}

TEST(MprisState, DoesNotDifferByThePosition) {
  MprisState later = stateIn(kPaused);
  later.position += 1000;
  EXPECT_FALSE(later.differs(stateIn(kPaused)));
  later.loop = "None";
  EXPECT_TRUE(later.differs(stateIn(kPaused)));
  EXPECT_FALSE(later.hasOtherTrack(stateIn(kPaused)));
}

class MprisTest : public testing::Test {
 protected:
  MprisTest() {
    setenv("XDG_RUNTIME_DIR", (folder / "").c_str(), 1);
    unsetenv("IPODCTL_TRACE");
  }

  void plugIn() {
    ipod.emplace(IPODSIM_PROGRAM, std::vector<std::string>{"--link", folder / "ipod"});
    ASSERT_EQ(ipod->readLine(), "iPod ready on " + (folder / "ipod").string());
  }

  void startServe() {
    serve.emplace(IPODCTL_PROGRAM, std::vector<std::string>{"serve", "--mpris", "--port", "0",
                                                            "--device", folder / "ipod"});
    ASSERT_TRUE(serve->readUntil("head unit ready"));
  }

  static int run(const char* program, const std::vector<std::string>& arguments) {
    return Program(program, arguments).waitForEnd().value_or(-1);
  }

  static int player(const std::vector<std::string>& arguments) {
    return run("/usr/bin/playerctl", arguments);
  }

  const simulator::TemporaryFolder folder;
  std::optional<Program> ipod;
  std::optional<Program> serve;
};

TEST_F(MprisTest, IsDrivenByPlayerctlAlsoAcrossAPulledCable) {
  Program bus("/usr/bin/dbus-daemon", {"--session", "--nofork", "--print-address"});
  const std::optional<std::string> address = bus.readLine();
  ASSERT_TRUE(address);
  setenv("DBUS_SESSION_BUS_ADDRESS", address->c_str(), 1);
  plugIn();
  startServe();
  Program ready(IPODCTL_PROGRAM, {"watch", "--format", "{stage} {status} {position}"});
  ASSERT_TRUE(ready.readUntil("ready stopped"));

  Program status("/usr/bin/playerctl", {"--follow", "status"});
  Program title("/usr/bin/playerctl", {"--follow", "metadata", "title"});
  ASSERT_EQ(run(IPODCTL_PROGRAM, {"play", "artists/2/tracks", "1"}), 0);
  EXPECT_TRUE(status.readUntil("Playing"));
  EXPECT_TRUE(title.readUntil("Ask the Copper Viaduct"));
  EXPECT_EQ(player({"next"}), 0);
  EXPECT_TRUE(title.readUntil("Ask the Tidal Gazette"));
  EXPECT_EQ(player({"play-pause"}), 0);
  EXPECT_TRUE(status.readUntil("Paused"));
  EXPECT_EQ(player({"play"}), 0);
  EXPECT_TRUE(status.readUntil("Playing"));
  ASSERT_TRUE(ready.readUntil("0:01"));
  Program position("/usr/bin/playerctl", {"position"});
  EXPECT_GE(std::atof(position.readLine().value_or("").c_str()), 1.0);
  Program loop("/usr/bin/playerctl", {"--follow", "loop"});
  EXPECT_EQ(player({"loop", "Track"}), 0);
  EXPECT_TRUE(loop.readUntil("Track"));

  ipod.reset();
  EXPECT_TRUE(status.readUntil("Stopped"));
  EXPECT_NE(player({"metadata", "title"}), 0);
  EXPECT_EQ(player({"status"}), 0);
  plugIn();
  ASSERT_TRUE(ready.readUntil("ready stopped"));
  serve->signal(2);
  EXPECT_EQ(serve->waitForEnd(), 0);
}

TEST_F(MprisTest, IsLeftOutWithoutASessionBus) {
  setenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=/there/is/none", 1);
  startServe();
  serve->signal(2);
  EXPECT_EQ(serve->waitForEnd(), 0);
  EXPECT_THAT(serve->errors(), HasSubstr("no media player on the session bus"));
}

}  // namespace
