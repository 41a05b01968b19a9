// What happens in a call, step by step, whatever the order of the threads.
#include "virtual/story.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <ipodctl.h>
#include <isochplay_desk.h>

#include <functional>

#include "api/library_state.h"
#include "support/host_folder.h"
#include "virtual/forged_frame.h"
#include "virtual/virtual_session.h"

using namespace ipodctl;

namespace virtual_session::story {
namespace {

using testing::ElementsAreArray;
using virtual_platform::Loss;

using Act = std::function<void(VirtualSession&, Host&)>;

constexpr uint64_t kOrders = 8;
constexpr uint32_t kNewSampleRate = 48000;
constexpr DWORD kRateMilliseconds = 50;

Lines joined(const std::vector<Lines>& parts) {
  Lines all;
  for (const Lines& part : parts)
    all.insert(all.end(), part.begin(), part.end());
  return all;
}

class Story : public testing::Test {
 protected:
  /// Expects these lines of `act` with the reference iPod, after a whole session and `before`.
  static void expect(const Act& before, const Act& act, const Lines& lines) {
    for (uint64_t seed = 1; seed <= kOrders; ++seed) {
      warmUp(referenceScript());
      VirtualSession session(seed, referenceScript());
      std::ptrdiff_t start = 0;
      std::ptrdiff_t end = 0;
      ASSERT_EQ(session.run([&] {
        Host host(session.world);
        before(session, host);
        start = static_cast<std::ptrdiff_t>(session.world.trace().size());
        act(session, host);
        end = static_cast<std::ptrdiff_t>(session.world.trace().size());
        isochplaySetResult(kStartIpodAudioPlay, 0);
        IpodDisconnect();
      }),
                "");
      const auto begin = session.world.trace().begin();
      ASSERT_THAT(storyOf({begin + start, begin + end}), ElementsAreArray(lines)) << seed;
    }
  }

  const session::HostFolder folder;
};

void nothing(VirtualSession&, Host&) {}

void connect(VirtualSession&, Host& host) { host.call("IpodConnect", IpodConnect); }

void disconnect(VirtualSession&, Host& host) { host.call("IpodDisconnect", IpodDisconnect); }

void openAlbums(VirtualSession& session, Host& host) {
  connect(session, host);
  host.open(0, IPOD_ALBUMS);
}

void openTracksOfTheSecondAlbum(VirtualSession& session, Host& host) {
  openAlbums(session, host);
  host.move("IpodGetPrevItem", IpodGetPrevItem);
  host.open(1, IPOD_TRACKS);
}

void remember(VirtualSession&, Host& host) {
  host.call("IpodValidateUpDownTree", IpodValidateUpDownTree);
}

// ---------------------------------------------------------------- connections

// The library remembers that the previous iPod has the commands play and pause.
const Lines kBegins{"calls IpodConnect",
                    "prints Tavrel version is 01.29",
                    "prints IpodConnect start",
                    "takes the library's lock",
                    "sets ipodHasPlayPause = 0",
                    "changes the browse tree: level 0",
                    "SelectZeroBandwithInterface()"};

const Lines kIdentifies{"CreateFileW(IPD1:) = device 1",
                        "Sleep(80)",
                        "Sleep(20)",
                        "sends 55 0E 00 13 00 00 04 11 00 00 00 00 00 00 00 00 CA",
                        "sends 55 07 00 28 00 00 00 00 01 D0",
                        "sends 55 12 0A 03 00 00 1F 40 00 00 7D 00 00 00 AC 44 00 00 BB 80 DA",
                        "sends 55 03 00 0F 00 EE",
                        "sets the controller's rate = 44100",
                        "sends 55 04 0A 00 00 04 EE",
                        "sends 55 03 00 0F 04 EA",
                        "sends 55 03 00 0F 0A E4",
                        "sets identified = 1"};

const Lines kShowsTheLogo{
    "sends 55 03 04 00 39 C0",
    "sends 55 16 04 00 32 00 00 02 00 04 00 03 00 00 00 08 FF FF FF FF FF FF FF FF AB",
    "sends 55 0D 04 00 32 00 01 6C 63 84 63 6C 21 AE 63 68",
    "sends 55 0D 04 00 32 00 02 6C 73 6C 21 8C 63 6C 23 D1"};

const Lines kEntersTheMode{"SelectFullBandwithInterface()", "sends 55 02 00 05 F9"};

const Lines kStartsTheStream{"sets ipodSampleRate = 44100",
                             "StartIpodAudioPlay(44100 Hz, 2 channels, 16 bits)"};

const Lines kFollowsARate{
    "reader: sets the controller's rate = 48000", "reader: sends 55 04 0A 00 00 04 EE",
    "reader: prints Tavrel RestartPlayForResample 48000", "reader: sets ipodSampleRate = 48000",
    "reader: SelectFrequency(48000 Hz)"};

const Lines kIsConnected{"sends 55 03 00 0F 04 EA",
                         "sets ipodHasPlayPause = 1",
                         "prints ",
                         "prints IPod connected",
                         "Sleep(0)",
                         "prints IpodConnect end",
                         "sets ipodConnected = 1",
                         "releases the library's lock",
                         "returns 1"};

const Lines kIsNotConnected{"prints ",
                            "prints No iPod connected",
                            "Sleep(0)",
                            "prints IpodConnect end",
                            "releases the library's lock",
                            "returns 0"};

const Lines kCloses{"prints IpodDisconnect start", "StopIpodAudioPlay()",
                    "sends 55 02 00 06 F8",        "sets identified = 0",
                    "CloseHandle(device 1)",       "prints IpodDisconnect end"};

TEST_F(Story, OfAConnection) {
  expect(nothing, connect,
         joined({kBegins, kIdentifies, kShowsTheLogo, kEntersTheMode, kStartsTheStream,
                 kIsConnected}));
}

/// Makes the iPod announce a rate before it acknowledges the Extended Interface mode.
void announceARateWithTheMode(VirtualSession& session) {
  session.cable.rewrite([](std::size_t, const Bytes& bytes) {
    const ForgedFrame frame(bytes);
    if (frame.payload() != Bytes{0x00, 0x02, 0x00, 0x05}) return atOnce({bytes});
    return atOnce(
        {frame.with({0x0A, 0x04, 0x00, 0x00, 0xBB, 0x80, 0, 0, 0, 0, 0, 0, 0, 0}), bytes});
  });
}

TEST_F(Story, OfAConnectionInWhichARateIsAnnounced) {
  expect([](VirtualSession& session, Host&) { announceARateWithTheMode(session); }, connect,
         joined({kBegins,
                 kIdentifies,
                 kShowsTheLogo,
                 kEntersTheMode,
                 kFollowsARate,
                 {"StartIpodAudioPlay(48000 Hz, 2 channels, 16 bits)"},
                 kIsConnected}));
}

TEST_F(Story, OfAConnectionWithoutADevice) {
  expect([](VirtualSession& session,
            Host&) { session.cable.unplug(session.world.now(), Loss::kGone); },
         connect, joined({kBegins, {"CreateFileW(IPD1:): error 2"}, kIsNotConnected}));
}

TEST_F(Story, OfAStreamThatDoesNotStart) {
  expect([](VirtualSession&, Host&) { isochplaySetResult(kStartIpodAudioPlay, -1); }, connect,
         joined({kBegins, kIdentifies, kShowsTheLogo, kEntersTheMode, kStartsTheStream, kCloses,
                 kIsNotConnected}));
}

TEST_F(Story, OfADisconnection) {
  expect(connect, disconnect,
         joined({{"calls IpodDisconnect", "takes the library's lock"},
                 kCloses,
                 {"sets ipodConnected = 0", "releases the library's lock", "returns 0"}}));
}

TEST_F(Story, OfANewSampleRate) {
  const auto announce = [](VirtualSession& session, Host&) {
    session.ipod.announceSampleRate(session.world.now(), kNewSampleRate);
    Sleep(kRateMilliseconds);
  };
  expect(connect, announce, joined({kFollowsARate, {"Sleep(50)"}}));
}

// ---------------------------------------------------------------- calls under the lock

/// Returns the lines of a call between the taking and the release of the lock.
Lines locked(const std::string& call, int result, const Lines& lines) {
  return joined({{"calls " + call, "takes the library's lock"},
                 lines,
                 {"releases the library's lock", "returns " + std::to_string(result)}});
}

TEST_F(Story, OfANewTree) {
  expect(
      connect, [](VirtualSession&, Host& host) { host.open(0, IPOD_ARTISTS); },
      locked("IpodGetFirstItem", 1,
             {"changes the browse tree: level 1", "sends 55 03 04 00 16 E3",
              "sends 55 04 04 00 18 02 DE", "changes the browse tree: level 1"}));
}

TEST_F(Story, OfTheNextLevel) {
  expect(
      openAlbums, [](VirtualSession&, Host& host) { host.open(1, IPOD_TRACKS); },
      locked("IpodGetFirstItem", 1,
             {"changes the browse tree: level 2", "sends 55 04 04 00 18 03 DD",
              "sends 55 09 04 00 38 03 FF FF FF FF 04 B8", "sends 55 04 04 00 18 05 DB",
              "changes the browse tree: level 2"}));
}

TEST_F(Story, OfTheLevelAbove) {
  expect(
      openTracksOfTheSecondAlbum,
      [](VirtualSession&, Host& host) { host.move("IpodGetParentItem", IpodGetParentItem); },
      locked("IpodGetParentItem", 1,
             {"changes the browse tree: level 1", "sends 55 08 04 00 17 03 FF FF FF FF DE",
              "sends 55 04 04 00 18 03 DD"}));
}

TEST_F(Story, OfASnapshot) {
  expect(openAlbums, remember,
         locked("IpodValidateUpDownTree", 0, {"changes the snapshot: level 1"}));
}

TEST_F(Story, OfATrackOfTheWholeLibrary) {
  expect(
      openAlbums, [](VirtualSession&, Host& host) { host.play(1); },
      locked("IpodSongPlay", 0,
             {"sends 55 04 04 00 18 01 DF", "sends 55 09 04 00 38 01 00 00 00 00 03 B7",
              "sends 55 04 04 00 18 05 DB", "sends 55 08 04 00 17 05 00 00 00 01 D7",
              "sends 55 07 04 00 28 00 00 00 01 CC", "PostMessageW(0xffff, 0x2400, 0, 0)"}));
}

TEST_F(Story, OfAStepToTheRecordBefore) {
  const auto rememberTracks = [](VirtualSession& session, Host& host) {
    openTracksOfTheSecondAlbum(session, host);
    remember(session, host);
  };
  expect(
      rememberTracks, [](VirtualSession&, Host& host) { host.command(IPOD_PREVIOUS_GROUP); },
      locked("IpodCommand(12)", 0,
             {"sends 55 03 04 00 16 E3", "sends 55 04 04 00 18 03 DD",
              "sends 55 09 04 00 38 03 00 00 00 00 03 B5", "sends 55 04 04 00 18 05 DB",
              "sends 55 07 04 00 28 00 00 00 00 CD", "changes the snapshot: level 2",
              "PostMessageW(0xffff, 0x2400, 0, 0)"}));
}

TEST_F(Story, OfANewPlayMode) {
  const auto setMode = [](VirtualSession&, Host& host) {
    host.call("IpodSetShuffleMode", [] { return IpodSetShuffleMode(IPOD_MODE_TRACKS); });
  };
  expect(connect, setMode,
         locked("IpodSetShuffleMode", 0,
                {"sends 55 04 04 00 2E 01 C9", "prints ", "prints Shuffle tracks activated"}));
}

TEST_F(Story, OfThePlayMode) {
  const auto getMode = [](VirtualSession&, Host& host) {
    host.number("IpodGetShuffleMode", IpodGetShuffleMode);
  };
  expect(connect, getMode,
         locked("IpodGetShuffleMode", 0,
                {"sends 55 03 04 00 2C CD", "prints ", "prints The shuffle is off"}));
}

TEST_F(Story, OfTheName) {
  const auto readName = [](VirtualSession&, Host& host) {
    host.deviceText("IpodGetName", IpodGetName);
  };
  expect(connect, readName,
         locked("IpodGetName", 0,
                {"prints IpodGetName start", "sends 55 02 00 07 F7", "prints IpodGetName end"}));
}

TEST_F(Story, OfTheSerialNumber) {
  const auto readSerialNumber = [](VirtualSession&, Host& host) {
    host.deviceText("IpodGetSerialNumber", IpodGetSerialNumber);
  };
  expect(connect, readSerialNumber,
         locked("IpodGetSerialNumber", 0,
                {"prints IpodGetSerialNumber start", "sends 55 02 00 0B F3",
                 "prints IpodGetSerialNumber is S", "prints IpodGetSerialNumber end"}));
}

TEST_F(Story, OfTheTexts) {
  const auto playAlbums = [](VirtualSession& session, Host& host) {
    openAlbums(session, host);
    host.play(0);
  };
  expect(
      playAlbums, [](VirtualSession&, Host& host) { host.trackTexts(); },
      locked("IpodGetTrackInfo", 0,
             {"sends 55 03 04 00 1E DB", "sends 55 07 04 00 20 00 00 00 00 D5",
              "sends 55 07 04 00 22 00 00 00 00 D3", "sends 55 07 04 00 24 00 00 00 00 D1",
              "sends 55 0A 04 00 0C 05 00 00 00 00 00 00 E1",
              "prints Gnere is \x05"
              "G1"}));
}

}  // namespace
}  // namespace virtual_session::story
