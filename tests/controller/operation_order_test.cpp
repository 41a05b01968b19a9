// The order of the virtual operations is the order of the protocol's table of operations, and other
// code counts on it.

#include <gtest/gtest.h>

#include "controller/ipod_controller.h"
#include "support/slot_of.h"

namespace ipodctl {
namespace {

TEST(OperationOrder, OfConnectionAndExtendedMode) {
  using C = IpodControllerBase;
  EXPECT_EQ(slotOf(&C::IdentifyIpod), 1u);
  EXPECT_EQ(slotOf(&C::CloseIpod), 2u);
  EXPECT_EQ(slotOf(&C::isIdentified), 3u);
  EXPECT_EQ(slotOf(&C::GetIpodName), 4u);
  EXPECT_EQ(slotOf(&C::EnterExtendedMode), 5u);
  EXPECT_EQ(slotOf(&C::ExitExtendedMode), 6u);
}

TEST(OperationOrder, OfDatabaseAndPlayback) {
  using C = IpodControllerBase;
  EXPECT_EQ(slotOf(&C::ResetDbSelection), 7u);
  EXPECT_EQ(slotOf(&C::GetDbRecordCount), 8u);
  EXPECT_EQ(slotOf(&C::RetrieveDbRecords), 9u);
  EXPECT_EQ(slotOf(&C::SelectDbRecord), 10u);
  EXPECT_EQ(slotOf(&C::PlayCurrentSelection), 11u);
  EXPECT_EQ(slotOf(&C::PlayControl), 12u);
  EXPECT_EQ(slotOf(&C::GetPlayStatus), 13u);
  EXPECT_EQ(slotOf(&C::GetCurrentTrackIndex), 14u);
  EXPECT_EQ(slotOf(&C::GetTrackTitle), 15u);
  EXPECT_EQ(slotOf(&C::GetTrackArtist), 16u);
  EXPECT_EQ(slotOf(&C::GetTrackAlbum), 17u);
}

TEST(OperationOrder, OfPlayModesAndPicture) {
  using C = IpodControllerBase;
  EXPECT_EQ(slotOf(&C::GetShuffle), 18u);
  EXPECT_EQ(slotOf(&C::SetShuffle), 19u);
  EXPECT_EQ(slotOf(&C::GetRepeat), 20u);
  EXPECT_EQ(slotOf(&C::SetRepeat), 21u);
  EXPECT_EQ(slotOf(&C::GetMonoImageLimits), 22u);
  EXPECT_EQ(slotOf(&C::GetColorImageLimits), 23u);
  EXPECT_EQ(slotOf(&C::SetDisplayImage), 24u);
  EXPECT_EQ(slotOf(&C::LoadLogo), 25u);
  EXPECT_EQ(slotOf(&C::FreeLogo), 26u);
  EXPECT_EQ(slotOf(&C::GetNumPlayingTracks), 27u);
  EXPECT_EQ(slotOf(&C::SetCurrentPlayingTrack), 28u);
  EXPECT_EQ(slotOf(&C::SelectSortDbRecord), 29u);
}

TEST(OperationOrder, OfInformationButtonsAndMessages) {
  using C = IpodControllerBase;
  EXPECT_EQ(slotOf(&C::RequestIpodName), 30u);
  EXPECT_EQ(slotOf(&C::RequestSoftwareVersion), 31u);
  EXPECT_EQ(slotOf(&C::RequestSerialNumber), 32u);
  EXPECT_EQ(slotOf(&C::RequestModelNumber), 33u);
  EXPECT_EQ(slotOf(&C::RequestLingoProtocolVersion), 34u);
  EXPECT_EQ(slotOf(&C::GetIndexedTrackInfo), 35u);
  EXPECT_EQ(slotOf(&C::PressButton), 36u);
  EXPECT_EQ(slotOf(&C::SendAudioButton), 37u);
  EXPECT_EQ(slotOf(&C::IdentifySimpleRemote), 38u);
  EXPECT_EQ(slotOf(&C::ReleaseButtons), 39u);
  EXPECT_EQ(slotOf(&C::IdentifyExtendedInterface), 40u);
  EXPECT_EQ(slotOf(&C::onIncomingMessage), 41u);
  EXPECT_EQ(slotOf(&C::indentifyIpod), 42u);
}

TEST(OperationOrder, OfTheAudioControllerFollowsTheBase) {
  using C = IpodController;
  EXPECT_EQ(slotOf(&C::CloseIpod), 2u);
  EXPECT_EQ(slotOf(&C::onIncomingMessage), 41u);
  EXPECT_EQ(slotOf(&C::indentifyIpod), 42u);
  EXPECT_EQ(slotOf(&C::connect), 43u);
  EXPECT_EQ(slotOf(&C::reenterExtendedMode), 44u);
  EXPECT_EQ(slotOf(&C::waitAudioAttributes), 45u);
  EXPECT_EQ(slotOf(&C::getSampleRate), 46u);
  EXPECT_EQ(slotOf(&C::setResampleCallback), 47u);
}

}  // namespace
}  // namespace ipodctl
