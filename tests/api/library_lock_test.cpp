// Which exports wait for the call of another thread. Those that ask the iPod must, or two callers
// get each other's answers; one that has no lock must not, as a user interface asks it while it
// draws.
#include <chrono>
#include <future>

#include "api/api_test.h"

using namespace ipodctl;

namespace {

struct LockCase {
  const char* name;
  void (*call)();
};

void PrintTo(const LockCase& each, std::ostream* out) { *out << each.name; }

std::string nameOfTest(const testing::TestParamInfo<LockCase>& each) { return each.param.name; }

class LockTest : public ConnectedApiTest, public testing::WithParamInterface<LockCase> {
 protected:
  /// Whether the export waits for the lock while another thread of the host holds it; else it
  /// returns.
  bool waits() {
    std::future<void> call;
    const LibraryLockHold lock;
    const EndlessWaits waitsForTheLock(libraryLock.handle());
    call = std::async(std::launch::async, GetParam().call);
    while (!waitsForTheLock.any() &&
           call.wait_for(std::chrono::milliseconds(1)) != std::future_status::ready) {
    }
    return waitsForTheLock.any();
  }
};

class LockedExport : public LockTest {};
class LockFreeExport : public LockTest {};

int number;
unsigned short text[8];

INSTANTIATE_TEST_SUITE_P(
    Each, LockedExport,
    testing::Values(
        LockCase{"IpodDisconnect", [] { IpodDisconnect(); }},
        LockCase{"IpodValidateUpDownTree", [] { IpodValidateUpDownTree(); }},
        LockCase{"IpodCommand", [] { IpodCommand(IPOD_PAUSE); }},
        LockCase{"IpodSongPlay", [] { IpodSongPlay(0); }},
        LockCase{"IpodSongGetNumElem", [] { IpodSongGetNumElem(&number); }},
        LockCase{"IpodGetTrackIndex", [] { IpodGetTrackIndex(&number); }},
        LockCase{"IpodSetShuffleMode", [] { IpodSetShuffleMode(IPOD_MODE_OFF); }},
        LockCase{"IpodGetShuffleMode", [] { IpodGetShuffleMode(&number); }},
        LockCase{"IpodSetRepeatMode", [] { IpodSetRepeatMode(IPOD_MODE_OFF); }},
        LockCase{"IpodGetRepeatMode", [] { IpodGetRepeatMode(&number); }},
        LockCase{"IpodGetCurrentPlayStatus", [] { IpodGetCurrentPlayStatus(&number); }},
        LockCase{"IpodGetCurrentTrackPosition", [] { IpodGetCurrentTrackPosition(&number); }},
        LockCase{"IpodGetFirstItem", [] { IpodGetFirstItem(0, IPOD_ARTISTS, 0); }},
        LockCase{"IpodGetNextItem", [] { IpodGetNextItem(); }},
        LockCase{"IpodGetPrevItem", [] { IpodGetPrevItem(); }},
        LockCase{"IpodGetParentItem", [] { IpodGetParentItem(); }},
        LockCase{"IpodCurItemIsEmpty", [] { IpodCurItemIsEmpty(); }},
        LockCase{"IpodIsTrack", [] { IpodIsTrack(); }},
        LockCase{"IpodGetType", [] { IpodGetType(); }},
        LockCase{"IpodGetMediaFileCount", [] { IpodGetMediaFileCount(&number); }},
        LockCase{"IpodGetItemName", [] { IpodGetItemName(0, text, nullptr, 7); }},
        LockCase{"IpodGetParentUpDownName", [] { IpodGetParentUpDownName(0, text, nullptr, 7); }},
        LockCase{"IpodGetTrackInfo",
                 [] { IpodGetTrackInfo(&number, text, nullptr, nullptr, nullptr, nullptr, 7); }},
        LockCase{"IpodGetName", [] { IpodGetName(text, 7); }},
        LockCase{"IpodGetSerialNumber", [] { IpodGetSerialNumber(text, 7); }}),
    nameOfTest);

TEST_P(LockedExport, WaitsForTheOneThatHoldsTheLock) { EXPECT_TRUE(waits()); }

INSTANTIATE_TEST_SUITE_P(
    Each, LockFreeExport,
    testing::Values(
        LockCase{"IpodConnect", [] { IpodConnect(); }},
        LockCase{"IpodIsConnect", [] { IpodIsConnect(); }},
        LockCase{"isIpodAudioPresent", [] { isIpodAudioPresent(0, 0, 0, 0); }},
        LockCase{"IpodSetSameIpod", [] { IpodSetSameIpod(0); }},
        LockCase{"IpodIsPlayAll", [] { IpodIsPlayAll(); }},
        LockCase{"IpodIsTabActive", [] { IpodIsTabActive(); }},
        LockCase{"IpodIsTabVisualizationActive", [] { IpodIsTabVisualizationActive(); }},
        LockCase{"IpodDisableTabVisualizationActive", [] { IpodDisableTabVisualizationActive(); }},
        LockCase{"IpodEnableTabVisualizationActive", [] { IpodEnableTabVisualizationActive(); }},
        LockCase{"IpodGetNumberOfPlaylist", [] { IpodGetNumberOfPlaylist(); }}),
    nameOfTest);

TEST_P(LockFreeExport, WaitsForNobody) { EXPECT_FALSE(waits()); }

}  // namespace
