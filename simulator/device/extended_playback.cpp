#include "device/extended_interface_lingo.h"
#include "device/notifier.h"

namespace simulator {

namespace {

constexpr uint8_t kLastMode = 2;  // of shuffle and of repeat

/// The bits of a track's capabilities.
enum TrackCapability : uint32_t {
  kIsAudiobook = 1u << 0,
  kIsPodcast = 1u << 4,
  kHasReleaseDate = 1u << 5,
};

uint32_t capabilitiesOf(const Track& track) {
  uint32_t bits = 0;
  if (track.kind == MediaKind::kAudiobook) bits |= kIsAudiobook;
  if (track.kind == MediaKind::kPodcast) bits |= kIsPodcast;
  if (track.releaseYear != 0) bits |= kHasReleaseDate;
  return bits;
}

/// Returns the weekday of the first of January, 0 for Sunday, in the Gregorian calendar.
uint8_t newYearsWeekday(uint32_t year) {
  const uint32_t before = year == 0 ? 399 : year - 1;
  return static_cast<uint8_t>((1 + 5 * (before % 4) + 4 * (before % 100) + 6 * (before % 400)) % 7);
}

/// Appends midnight of the first day of the year, because tags contain only the year.
void appendReleaseDate(PayloadWriter& writer, uint32_t year) {
  writer.u8(0).u8(0).u8(0);  // seconds, minutes, hours
  writer.u8(1).u8(1);        // day, month
  writer.u16(static_cast<uint16_t>(year)).u8(newYearsWeekday(year));
}

/// Appends the requested information of a track. Returns false when there is none of this type.
bool appendInfo(PayloadWriter& writer, TrackInfoType type, const Track& track) {
  constexpr uint16_t kNoChapters = 0;
  switch (type) {
    case TrackInfoType::kCapabilities:
      writer.u32(capabilitiesOf(track)).u32(track.lengthMs).u16(kNoChapters);
      return true;
    case TrackInfoType::kPodcastName:
      writer.text(track.kind == MediaKind::kPodcast ? track.album : "");
      return true;
    case TrackInfoType::kReleaseDate:
      appendReleaseDate(writer, track.releaseYear);
      return true;
    case TrackInfoType::kGenre:
      writer.text(track.genre);
      return true;
    case TrackInfoType::kComposer:
      writer.text(track.composer);
      return true;
  }
  return false;
}

bool isText(TrackInfoType type) {
  return type == TrackInfoType::kPodcastName || type == TrackInfoType::kGenre ||
         type == TrackInfoType::kComposer;
}

}  // namespace

void ExtendedInterfaceLingo::playStatus(PayloadReader&) {
  const std::optional<uint32_t> track = state.player.currentTrack();
  const uint32_t length = track ? state.catalogue.track(*track).lengthMs : 0;
  PayloadWriter writer;
  writer.u32(length).u32(positionMs(state)).u8(static_cast<uint8_t>(state.player.state()));
  reply(kReturnPlayStatus, writer.take());
}

void ExtendedInterfaceLingo::currentIndex(PayloadReader&) {
  const bool isPlaying = state.player.currentTrack().has_value();
  const uint32_t index = isPlaying ? state.player.list().currentIndex() : kNoIndex;
  reply(kReturnCurrentPlayingTrackIndex, PayloadWriter().u32(index).take());
}

void ExtendedInterfaceLingo::trackTitle(PayloadReader& data) {
  replyTrackText(kReturnIndexedPlayingTrackTitle, data.u32(), &Track::title);
}

void ExtendedInterfaceLingo::trackArtist(PayloadReader& data) {
  replyTrackText(kReturnIndexedPlayingTrackArtistName, data.u32(), &Track::artist);
}

void ExtendedInterfaceLingo::trackAlbum(PayloadReader& data) {
  replyTrackText(kReturnIndexedPlayingTrackAlbumName, data.u32(), &Track::album);
}

void ExtendedInterfaceLingo::trackInfo(PayloadReader& data) {
  const uint8_t number = data.u8();
  const TrackInfoType type = static_cast<TrackInfoType>(number);
  const Track* track = playingTrack(data.u32());
  PayloadWriter writer;
  writer.u8(number);
  const bool isRefused = type == TrackInfoType::kGenre && !state.personality.tellsGenre;
  if (isRefused || track == nullptr || !appendInfo(writer, type, *track)) {
    return state.acknowledge(Status::kBadParameter);
  }
  const std::optional<size_t> textOffset = isText(type) ? std::optional<size_t>(1) : std::nullopt;
  reply(kReturnIndexedPlayingTrackInfo, writer.take(), textOffset);
}

void ExtendedInterfaceLingo::setNotifications(PayloadReader& data) {
  state.notificationsOn = data.u8() != 0;
  state.acknowledge(Status::kOk);
}

void ExtendedInterfaceLingo::playSelection(PayloadReader& data) {
  const uint32_t asked = data.u32();
  std::vector<uint32_t> tracks = tracksToPlay();
  const uint32_t count = static_cast<uint32_t>(tracks.size());
  const bool isShuffled = state.player.shuffle() != Shuffle::kOff;
  const uint32_t anyTrack = isShuffled ? state.random.below(count) : 0;
  const uint32_t first = asked == kNoIndex ? anyTrack : asked;
  if (first >= count) return state.acknowledge(Status::kBadParameter);
  const auto play = [this, tracks = std::move(tracks), first] {
    state.player.play(tracks, first, state.now);
    state.acknowledge(Status::kOk);
  };
  state.pendThenDo(state.personality.playPending,
                   [this, play] { state.doLater(state.personality.soundDelay, play); });
}

void ExtendedInterfaceLingo::playControl(PayloadReader& data) {
  const bool isKnown = control(static_cast<PlayControlCode>(data.u8()));
  state.acknowledge(isKnown ? Status::kOk : Status::kBadParameter);
}

void ExtendedInterfaceLingo::getShuffle(PayloadReader&) {
  reply(kReturnShuffle, {static_cast<uint8_t>(state.player.shuffle())});
}

void ExtendedInterfaceLingo::setShuffle(PayloadReader& data) {
  const uint8_t mode = data.u8();
  if (mode > kLastMode) return state.acknowledge(Status::kBadParameter);
  state.player.setShuffle(static_cast<Shuffle>(mode));
  state.acknowledge(Status::kOk);
}

void ExtendedInterfaceLingo::getRepeat(PayloadReader&) {
  reply(kReturnRepeat, {static_cast<uint8_t>(state.player.repeat())});
}

void ExtendedInterfaceLingo::setRepeat(PayloadReader& data) {
  const uint8_t mode = data.u8();
  if (mode > kLastMode) return state.acknowledge(Status::kBadParameter);
  state.player.setRepeat(static_cast<Repeat>(mode));
  state.acknowledge(Status::kOk);
}

void ExtendedInterfaceLingo::playingTrackCount(PayloadReader&) {
  reply(kReturnNumPlayingTracks, PayloadWriter().u32(state.player.list().size()).take());
}

void ExtendedInterfaceLingo::setCurrentTrack(PayloadReader& data) {
  const uint32_t index = data.u32();
  if (!state.player.currentTrack()) return state.acknowledge(Status::kFailed);
  if (index >= state.player.list().size()) return state.acknowledge(Status::kBadParameter);
  state.player.goTo(index, state.now);
  state.acknowledge(Status::kOk);
}

void ExtendedInterfaceLingo::replyTrackText(uint16_t command, uint32_t index,
                                            std::string Track::*text) {
  const Track* track = playingTrack(index);
  if (track == nullptr) return refuseTrackIndex();
  reply(command, PayloadWriter().text(track->*text).take(), 0);
}

void ExtendedInterfaceLingo::refuseTrackIndex() {
  const bool fails = state.personality.badTrackIndex == BadTrackIndex::kFailed;
  state.acknowledge(fails ? Status::kFailed : Status::kBadParameter);
}

const Track* ExtendedInterfaceLingo::playingTrack(uint32_t index) const {
  const PlayingList& list = state.player.list();
  return index < list.size() ? &state.catalogue.track(list.trackAt(index)) : nullptr;
}

std::vector<uint32_t> ExtendedInterfaceLingo::tracksToPlay() {
  const std::optional<uint32_t> single = state.database.selectedTrack();
  const bool isAlone = state.personality.trackSelection == TrackSelection::kAlone;
  if (single && isAlone) return {*single};
  return state.database.tracks();
}

/// Returns false when this model does not know the code.
bool ExtendedInterfaceLingo::control(PlayControlCode code) {
  Player& player = state.player;
  const bool isNewer = code == PlayControlCode::kPlay || code == PlayControlCode::kPause;
  if (isNewer && !state.personality.knowsPlayAndPause()) return false;
  switch (code) {
    case PlayControlCode::kTogglePlayPause:
      state.togglePlaying();
      return true;
    case PlayControlCode::kStop:
      player.stop(state.now);
      return true;
    case PlayControlCode::kNextTrack:
    case PlayControlCode::kNextChapter:
      player.next(state.now);
      return true;
    case PlayControlCode::kPreviousTrack:
    case PlayControlCode::kPreviousChapter:
      player.previous(state.now);
      return true;
    case PlayControlCode::kStartFastForward:
      player.startSeek(SeekDirection::kForward, state.now);
      return true;
    case PlayControlCode::kStartRewind:
      player.startSeek(SeekDirection::kBackward, state.now);
      return true;
    case PlayControlCode::kEndSeek:
      player.endSeek(state.now);
      return true;
    case PlayControlCode::kPlay:
      state.startPlaying();
      return true;
    case PlayControlCode::kPause:
      player.pause(state.now);
      return true;
  }
  return false;
}

}  // namespace simulator
