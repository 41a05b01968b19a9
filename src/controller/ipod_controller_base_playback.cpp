// What plays: control, status, the playing list and its texts, and the play modes.

#include "controller/ipod_controller_base.h"

namespace ipodctl {

using Message = ExtendedInterfaceMessage;

bool IpodControllerBase::PlayCurrentSelection(RecordIndex trackIndex) {
  return sendAndAwaitAcknowledgement(&Message::buildPlayCurrentSelection, trackIndex);
}

bool IpodControllerBase::PlayControl(PlayControlCode code) {
  return sendAndAwaitAcknowledgement(&Message::buildPlayControl, code);
}

bool IpodControllerBase::SetCurrentPlayingTrack(RecordIndex trackIndex) {
  return sendAndAwaitAcknowledgement(&Message::buildSetCurrentPlayingTrack, trackIndex);
}

bool IpodControllerBase::GetPlayStatus(uint32_t& trackLength, uint32_t& position,
                                       PlayState& state) {
  return sendAndAwaitReply(&Message::buildGetPlayStatus)
      .read(&Message::decodeReturnPlayStatus, trackLength, position, state);
}

bool IpodControllerBase::GetCurrentTrackIndex(RecordIndex& trackIndex) {
  return sendAndAwaitReply(&Message::buildGetCurrentPlayingTrackIndex)
      .read(&Message::decodeReturnCurrentPlayingTrackIndex, trackIndex);
}

bool IpodControllerBase::GetNumPlayingTracks(uint32_t& count) {
  return sendAndAwaitReply(&Message::buildGetNumPlayingTracks)
      .read(&Message::decodeReturnNumPlayingTracks, count);
}

bool IpodControllerBase::GetTrackTitle(RecordIndex trackIndex, ByteString& title) {
  return sendAndAwaitReply(&Message::buildGetIndexedPlayingTrackTitle, trackIndex)
      .read(&Message::decodeReturnIndexedPlayingTrackTitle, title);
}

bool IpodControllerBase::GetTrackArtist(RecordIndex trackIndex, ByteString& artist) {
  return sendAndAwaitReply(&Message::buildGetIndexedPlayingTrackArtistName, trackIndex)
      .read(&Message::decodeReturnIndexedPlayingTrackArtistName, artist);
}

bool IpodControllerBase::GetTrackAlbum(RecordIndex trackIndex, ByteString& album) {
  return sendAndAwaitReply(&Message::buildGetIndexedPlayingTrackAlbumName, trackIndex)
      .read(&Message::decodeReturnIndexedPlayingTrackAlbumName, album);
}

bool IpodControllerBase::GetIndexedTrackInfo(RecordIndex trackIndex, ByteString& data,
                                             TrackInfoType& answeredType, TrackInfoType infoType) {
  constexpr uint16_t kFirstChapter = 0;
  return sendAndAwaitReply(&Message::buildGetIndexedPlayingTrackInfo, infoType, trackIndex,
                           kFirstChapter)
      .read(&Message::decodeReturnIndexedPlayingTrackInfo, answeredType, data);
}

bool IpodControllerBase::GetShuffle(PlayMode& mode) {
  return sendAndAwaitReply(&Message::buildGetShuffle).read(&Message::decodeReturnShuffle, mode);
}

bool IpodControllerBase::SetShuffle(PlayMode mode) {
  return sendAndAwaitAcknowledgement(&Message::buildSetShuffle, mode);
}

bool IpodControllerBase::GetRepeat(PlayMode& mode) {
  return sendAndAwaitReply(&Message::buildGetRepeat).read(&Message::decodeReturnRepeat, mode);
}

bool IpodControllerBase::SetRepeat(PlayMode mode) {
  return sendAndAwaitAcknowledgement(&Message::buildSetRepeat, mode);
}

}  // namespace ipodctl
