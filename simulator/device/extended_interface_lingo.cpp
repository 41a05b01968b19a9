#include "device/extended_interface_lingo.h"

#include "device/command_table.h"

namespace simulator {

struct ExtendedInterfaceTable {
  using Self = ExtendedInterfaceLingo;

  static constexpr CommandRow<Self> kRows[] = {
      {kGetIndexedPlayingTrackInfo, 7, 7, &Self::trackInfo},
      {kExtendedRequestProtocolVersion, 0, 0, &Self::requestProtocolVersion},
      {kExtendedRequestIpodName, 0, 0, &Self::requestName},
      {kResetDbSelection, 0, 0, &Self::resetSelection},
      {kSelectDbRecord, 5, 5, &Self::selectRecord},
      {kGetNumberCategorizedDbRecords, 1, 1, &Self::countRecords},
      {kRetrieveCategorizedDatabaseRecords, 9, 9, &Self::retrieveRecords},
      {kGetPlayStatus, 0, 0, &Self::playStatus},
      {kGetCurrentPlayingTrackIndex, 0, 0, &Self::currentIndex},
      {kGetIndexedPlayingTrackTitle, 4, 4, &Self::trackTitle},
      {kGetIndexedPlayingTrackArtistName, 4, 4, &Self::trackArtist},
      {kGetIndexedPlayingTrackAlbumName, 4, 4, &Self::trackAlbum},
      {kSetPlayStatusChangeNotification, 1, 1, &Self::setNotifications},
      {kPlayCurrentSelection, 4, 4, &Self::playSelection},
      {kPlayControl, 1, 1, &Self::playControl},
      {kGetShuffle, 0, 0, &Self::getShuffle},
      {kSetShuffle, 1, 2, &Self::setShuffle},
      {kGetRepeat, 0, 0, &Self::getRepeat},
      {kSetRepeat, 1, 2, &Self::setRepeat},
      {kSetDisplayImage, 2, kNoLimit, &Self::displayImage},
      {kGetMonoDisplayImageLimits, 0, 0, &Self::monoImageLimits},
      {kGetNumPlayingTracks, 0, 0, &Self::playingTrackCount},
      {kSetCurrentPlayingTrack, 4, 4, &Self::setCurrentTrack},
      {kSelectSortDbRecord, 6, 6, &Self::selectSortedRecord},
      {kGetColorDisplayImageLimits, 0, 0, &Self::colourImageLimits},
  };
};

void ExtendedInterfaceLingo::handle(const Message& message) {
  if (!answersNow(message.command)) {
    const bool isSilent = state.personality.outsideExtendedMode == OutsideExtendedMode::kSilence;
    if (!isSilent) state.acknowledge(Status::kBadParameter);
    return;
  }
  switch (dispatch(ExtendedInterfaceTable::kRows, *this, message)) {
    case Dispatch::kDone:
      return;
    case Dispatch::kUnknown:
      return state.refuseUnknown();
    case Dispatch::kWrongSize:
      return state.acknowledge(Status::kBadParameter);
  }
}

bool ExtendedInterfaceLingo::answersNow(uint16_t command) const {
  const bool isOfDisplay = command == kSetDisplayImage || command == kGetMonoDisplayImageLimits ||
                           command == kGetColorDisplayImageLimits;
  return state.extendedMode || (isOfDisplay && !state.personality.displayNeedsExtendedMode);
}

}  // namespace simulator
