// A step to another group asks track by track. The iPod is lost on the way.
#include <gtest/gtest.h>
#include <ipodctl.h>

#include <tuple>

#include "support/host_folder.h"
#include "virtual/forged_frame.h"
#include "virtual/sweep.h"

namespace virtual_session {
namespace {

using simulator::Lingo;
using std::chrono::seconds;
using virtual_platform::Loss;

constexpr std::size_t kNamesBeforeTheLoss = 5;

bool hasAnAlbum(const ForgedFrame& frame) {
  return frame.lingo() == static_cast<uint8_t>(Lingo::kExtendedInterface) &&
         frame.request() == simulator::kGetIndexedPlayingTrackAlbumName;
}

/// An iPod with very many tracks of one album. It is pulled when it has sent some names.
void beEndless(VirtualSession& session, Loss loss) {
  session.cable.rewrite(
      [&session, loss, sent = std::size_t{0}](std::size_t, const Bytes& bytes) mutable {
        const ForgedFrame frame(bytes);
        if (frame.is(Lingo::kExtendedInterface, simulator::kReturnNumberCategorizedDbRecords)) {
          return atOnce({frame.withData(bigEndian(0x7FFFFFFF))});
        }
        if (!hasAnAlbum(frame)) return atOnce({bytes});
        if (++sent == kNamesBeforeTheLoss) session.cable.unplugAt(session.world.now(), loss);
        return atOnce({frame.with({0x04, 0x00, 0x25, 'O', 'n', 'e', 0x00})});
      });
}

class GroupWalk : public testing::TestWithParam<std::tuple<int, Loss>> {
 protected:
  GroupWalk() { warmUp(); }

  const session::HostFolder folder;  // without a logo
};

INSTANTIATE_TEST_SUITE_P(All, GroupWalk,
                         testing::Combine(testing::Values(IPOD_NEXT_GROUP, IPOD_PREVIOUS_GROUP),
                                          testing::ValuesIn(kLosses)));

TEST_P(GroupWalk, EndsWhenTheIpodSendsNoMoreNames) {
  const auto [command, loss] = GetParam();
  VirtualSession session(1);
  Time took{0};
  EXPECT_EQ(session.run([&, command = command, loss = loss] {
    IpodConnect();
    IpodGetFirstItem(0, IPOD_ALBUMS, 0);
    IpodSongPlay(0);
    IpodValidateUpDownTree();
    beEndless(session, loss);
    const Time start = session.world.now();
    IpodCommand(command);
    took = session.world.now() - start;
    IpodDisconnect();
  }),
            "");
  EXPECT_FALSE(session.cable.isPlugged());
  // Waits for the name that is not answered, for one more, and for the acknowledgement to play.
  EXPECT_LE(took, seconds(4));
}

}  // namespace
}  // namespace virtual_session
