// What plays: control, status, the playing list and its texts, and the play modes.

#include "controller/ipod_controller_base.h"

namespace ipodctl {

using Message = ExtendedInterfaceMessage;

bool IpodControllerBase::PlayCurrentSelection(uint32_t trackIndex) {
  return acknowledged(&Message::buildPlayCurrentSelection, trackIndex);
}

bool IpodControllerBase::PlayControl(uint8_t code) {
  return acknowledged(&Message::buildPlayControl, code);
}

bool IpodControllerBase::SetCurrentPlayingTrack(uint32_t trackIndex) {
  return acknowledged(&Message::buildSetCurrentPlayingTrack, trackIndex);
}

bool IpodControllerBase::GetPlayStatus(uint32_t& trackLength, uint32_t& position, uint32_t& state) {
  uint8_t stateByte = 0;
  if (!ask(&Message::buildGetPlayStatus)
           .read(&Message::decodeReturnPlayStatus, trackLength, position, stateByte)) {
    return false;
  }
  state = stateByte;
  return true;
}

bool IpodControllerBase::GetCurrentTrackIndex(uint32_t& trackIndex) {
  return ask(&Message::buildGetCurrentPlayingTrackIndex)
      .read(&Message::decodeReturnCurrentPlayingTrackIndex, trackIndex);
}

bool IpodControllerBase::GetNumPlayingTracks(uint32_t& count) {
  return ask(&Message::buildGetNumPlayingTracks)
      .read(&Message::decodeReturnNumPlayingTracks, count);
}

bool IpodControllerBase::GetTrackTitle(uint32_t trackIndex, ByteString& title) {
  return ask(&Message::buildGetIndexedPlayingTrackTitle, trackIndex)
      .read(&Message::decodeReturnIndexedPlayingTrackTitle, title);
}

bool IpodControllerBase::GetTrackArtist(uint32_t trackIndex, ByteString& artist) {
  return ask(&Message::buildGetIndexedPlayingTrackArtistName, trackIndex)
      .read(&Message::decodeReturnIndexedPlayingTrackArtistName, artist);
}

bool IpodControllerBase::GetTrackAlbum(uint32_t trackIndex, ByteString& album) {
  return ask(&Message::buildGetIndexedPlayingTrackAlbumName, trackIndex)
      .read(&Message::decodeReturnIndexedPlayingTrackAlbumName, album);
}

bool IpodControllerBase::GetIndexedTrackInfo(uint32_t trackIndex, ByteString& data,
                                             uint8_t& answeredType, uint32_t infoType) {
  constexpr uint16_t kFirstChapter = 0;
  return ask(&Message::buildGetIndexedPlayingTrackInfo, static_cast<uint8_t>(infoType), trackIndex,
             kFirstChapter)
      .read(&Message::decodeReturnIndexedPlayingTrackInfo, answeredType, data);
}

bool IpodControllerBase::GetShuffle(uint32_t& mode) {
  return readMode(&Message::buildGetShuffle, &Message::decodeReturnShuffle, mode);
}

bool IpodControllerBase::SetShuffle(uint8_t mode) {
  return acknowledged(&Message::buildSetShuffle, mode);
}

bool IpodControllerBase::GetRepeat(uint32_t& mode) {
  return readMode(&Message::buildGetRepeat, &Message::decodeReturnRepeat, mode);
}

bool IpodControllerBase::SetRepeat(uint8_t mode) {
  return acknowledged(&Message::buildSetRepeat, mode);
}

bool IpodControllerBase::readMode(bool (Message::*builder)(),
                                  bool (Message::*decoder)(uint8_t&) const, uint32_t& mode) {
  uint8_t modeByte = 0;
  if (!ask(builder).read(decoder, modeByte)) return false;
  mode = modeByte;
  return true;
}

}  // namespace ipodctl
