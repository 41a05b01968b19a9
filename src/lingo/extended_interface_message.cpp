#include "lingo/extended_interface_message.h"

namespace ipodctl {
namespace {

/// A track's text is never empty: a single byte would be its terminator alone.
constexpr uint32_t kLeastTrackText = 2;

constexpr uint32_t kLeastName = 1;
constexpr uint32_t kRecordIndexSize = 4;

}  // namespace

ExtendedInterfaceMessage::ExtendedInterfaceMessage() : LingoMessage(kLingo) {}

ExtendedInterfaceMessage::~ExtendedInterfaceMessage() = default;

uint16_t ExtendedInterfaceMessage::encode(uint8_t* buffer, uint32_t capacity) const {
  return encodeBody(buffer, capacity, sizeof(uint16_t));
}

bool ExtendedInterfaceMessage::buildGetIndexedPlayingTrackInfo(TrackInfoType infoType,
                                                               RecordIndex trackIndex,
                                                               uint16_t chapterIndex) {
  return build(kGetIndexedPlayingTrackInfo, infoType, trackIndex, chapterIndex);
}

bool ExtendedInterfaceMessage::buildRequestIpodName() { return build(kRequestIpodName); }

bool ExtendedInterfaceMessage::buildResetDbSelection() { return build(kResetDbSelection); }

bool ExtendedInterfaceMessage::buildSelectDbRecord(Category category, RecordIndex index) {
  return build(kSelectDbRecord, category, index);
}

bool ExtendedInterfaceMessage::buildGetNumberCategorizedDbRecords(Category category) {
  return build(kGetNumberCategorizedDbRecords, category);
}

bool ExtendedInterfaceMessage::buildRetrieveCategorizedDatabaseRecords(Category category,
                                                                       RecordIndex start,
                                                                       uint32_t count) {
  return build(kRetrieveCategorizedDatabaseRecords, category, start, count);
}

bool ExtendedInterfaceMessage::buildGetPlayStatus() { return build(kGetPlayStatus); }

bool ExtendedInterfaceMessage::buildGetCurrentPlayingTrackIndex() {
  return build(kGetCurrentPlayingTrackIndex);
}

bool ExtendedInterfaceMessage::buildGetIndexedPlayingTrackTitle(RecordIndex trackIndex) {
  return build(kGetIndexedPlayingTrackTitle, trackIndex);
}

bool ExtendedInterfaceMessage::buildGetIndexedPlayingTrackArtistName(RecordIndex trackIndex) {
  return build(kGetIndexedPlayingTrackArtistName, trackIndex);
}

bool ExtendedInterfaceMessage::buildGetIndexedPlayingTrackAlbumName(RecordIndex trackIndex) {
  return build(kGetIndexedPlayingTrackAlbumName, trackIndex);
}

bool ExtendedInterfaceMessage::buildPlayCurrentSelection(RecordIndex trackIndex) {
  return build(kPlayCurrentSelection, trackIndex);
}

bool ExtendedInterfaceMessage::buildPlayControl(PlayControlCode code) {
  return build(kPlayControl, code);
}

bool ExtendedInterfaceMessage::buildGetShuffle() { return build(kGetShuffle); }

bool ExtendedInterfaceMessage::buildSetShuffle(PlayMode mode) { return build(kSetShuffle, mode); }

bool ExtendedInterfaceMessage::buildGetRepeat() { return build(kGetRepeat); }

bool ExtendedInterfaceMessage::buildSetRepeat(PlayMode mode) { return build(kSetRepeat, mode); }

bool ExtendedInterfaceMessage::buildSetDisplayImage(PixelFormat pixelFormat, uint16_t packetIndex,
                                                    uint16_t width, uint16_t height,
                                                    uint32_t rowBytes, const uint8_t* row) {
  const bool described =
      packetIndex == 0 ? build(kSetDisplayImage, packetIndex, pixelFormat, width, height, rowBytes)
                       : build(kSetDisplayImage, packetIndex);
  return described && appendData(row, static_cast<uint16_t>(rowBytes));
}

bool ExtendedInterfaceMessage::buildGetMonoDisplayImageLimits() {
  return build(kGetMonoDisplayImageLimits);
}

bool ExtendedInterfaceMessage::buildGetNumPlayingTracks() { return build(kGetNumPlayingTracks); }

bool ExtendedInterfaceMessage::buildSetCurrentPlayingTrack(RecordIndex trackIndex) {
  return build(kSetCurrentPlayingTrack, trackIndex);
}

bool ExtendedInterfaceMessage::buildSelectSortDbRecord(Category category, RecordIndex index,
                                                       SortOrder sortOrder) {
  return build(kSelectSortDbRecord, category, index, sortOrder);
}

bool ExtendedInterfaceMessage::buildGetColorDisplayImageLimits() {
  return build(kGetColorDisplayImageLimits);
}

bool ExtendedInterfaceMessage::decodeIpodAck(uint8_t& status, uint16_t& command) const {
  return decodeExactly(kIpodAck, status, command);
}

bool ExtendedInterfaceMessage::acknowledges(uint16_t command) const {
  uint8_t status = kStatusOk;
  uint16_t acknowledgedCommand = 0;
  return decodeIpodAck(status, acknowledgedCommand) && status == kStatusOk &&
         acknowledgedCommand == command;
}

bool ExtendedInterfaceMessage::decodeReturnIndexedPlayingTrackInfo(TrackInfoType& infoType,
                                                                   ByteString& text) const {
  TrackInfoType type{};
  if (!decodeFirst(kReturnIndexedPlayingTrackInfo, type)) return false;
  if (getDataLength() < kLeastTrackText) return false;
  if (!decodeText(0, getDataLength() - 1u, text)) return false;
  infoType = type;
  return true;
}

bool ExtendedInterfaceMessage::decodeReturnIpodName(ByteString& name) const {
  return decodeWholeText(kReturnIpodName, kLeastName, name);
}

bool ExtendedInterfaceMessage::decodeReturnNumberCategorizedDbRecords(uint32_t& count) const {
  return decodeExactly(kReturnNumberCategorizedDbRecords, count);
}

bool ExtendedInterfaceMessage::isRecord() const {
  return getCommand() == kReturnCategorizedDatabaseRecord && getDataLength() > kRecordIndexSize;
}

bool ExtendedInterfaceMessage::decodeReturnCategorizedDatabaseRecord(RecordIndex& index,
                                                                     ByteString& name) const {
  if (!isRecord()) return false;
  RecordIndex recordIndex = 0;
  decodeFirst(kReturnCategorizedDatabaseRecord, recordIndex);
  if (!decodeText(kRecordIndexSize, getDataLength() - kRecordIndexSize, name)) return false;
  index = recordIndex;
  return true;
}

bool ExtendedInterfaceMessage::decodeReturnPlayStatus(uint32_t& trackLength, uint32_t& position,
                                                      PlayState& state) const {
  return decodeExactly(kReturnPlayStatus, trackLength, position, state);
}

bool ExtendedInterfaceMessage::decodeReturnCurrentPlayingTrackIndex(RecordIndex& trackIndex) const {
  return decodeExactly(kReturnCurrentPlayingTrackIndex, trackIndex);
}

bool ExtendedInterfaceMessage::decodeReturnIndexedPlayingTrackTitle(ByteString& title) const {
  return decodeWholeText(kReturnIndexedPlayingTrackTitle, kLeastTrackText, title);
}

bool ExtendedInterfaceMessage::decodeReturnIndexedPlayingTrackArtistName(ByteString& artist) const {
  return decodeWholeText(kReturnIndexedPlayingTrackArtistName, kLeastTrackText, artist);
}

bool ExtendedInterfaceMessage::decodeReturnIndexedPlayingTrackAlbumName(ByteString& album) const {
  return decodeWholeText(kReturnIndexedPlayingTrackAlbumName, kLeastTrackText, album);
}

bool ExtendedInterfaceMessage::decodeReturnShuffle(PlayMode& mode) const {
  return decodeFirst(kReturnShuffle, mode);
}

bool ExtendedInterfaceMessage::decodeReturnRepeat(PlayMode& mode) const {
  return decodeFirst(kReturnRepeat, mode);
}

bool ExtendedInterfaceMessage::decodeReturnMonoDisplayImageLimits(uint16_t& width, uint16_t& height,
                                                                  PixelFormat& format) const {
  return decodeFirst(kReturnMonoDisplayImageLimits, width, height, format);
}

bool ExtendedInterfaceMessage::decodeReturnColorDisplayImageLimits(uint16_t& width,
                                                                   uint16_t& height,
                                                                   PixelFormat& format) const {
  return decodeFirst(kReturnColorDisplayImageLimits, width, height, format);
}

bool ExtendedInterfaceMessage::decodeReturnNumPlayingTracks(uint32_t& count) const {
  return decodeFirst(kReturnNumPlayingTracks, count);
}

bool ExtendedInterfaceMessage::decodeWholeText(Command command, uint32_t leastLength,
                                               ByteString& text) const {
  return getCommand() == command && getDataLength() >= leastLength &&
         decodeText(0, getDataLength(), text);
}

}  // namespace ipodctl
