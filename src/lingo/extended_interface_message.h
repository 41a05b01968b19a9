#pragma once

#include "lingo/database_codes.h"
#include "lingo/display_codes.h"
#include "lingo/lingo_message.h"
#include "lingo/playback_codes.h"

namespace ipodctl {

/// The Extended Interface lingo (0x04): the database, playback, the playing track and the picture
/// on the iPod's screen. Its command ids are two bytes wide.
///
/// Builders fail when there is no memory; decoders when command or length do not match, and then
/// leave their outputs as they were.
class ExtendedInterfaceMessage final : public LingoMessage {
 public:
  static constexpr LingoId kLingo = kExtendedInterfaceLingo;

  enum Command : uint16_t {
    kIpodAck = 0x0001,
    kGetIndexedPlayingTrackInfo = 0x000C,
    kReturnIndexedPlayingTrackInfo = 0x000D,
    kRequestIpodName = 0x0014,
    kReturnIpodName = 0x0015,
    kResetDbSelection = 0x0016,
    kSelectDbRecord = 0x0017,
    kGetNumberCategorizedDbRecords = 0x0018,
    kReturnNumberCategorizedDbRecords = 0x0019,
    kRetrieveCategorizedDatabaseRecords = 0x001A,
    kReturnCategorizedDatabaseRecord = 0x001B,
    kGetPlayStatus = 0x001C,
    kReturnPlayStatus = 0x001D,
    kGetCurrentPlayingTrackIndex = 0x001E,
    kReturnCurrentPlayingTrackIndex = 0x001F,
    kGetIndexedPlayingTrackTitle = 0x0020,
    kReturnIndexedPlayingTrackTitle = 0x0021,
    kGetIndexedPlayingTrackArtistName = 0x0022,
    kReturnIndexedPlayingTrackArtistName = 0x0023,
    kGetIndexedPlayingTrackAlbumName = 0x0024,
    kReturnIndexedPlayingTrackAlbumName = 0x0025,
    kPlayCurrentSelection = 0x0028,
    kPlayControl = 0x0029,
    kGetShuffle = 0x002C,
    kReturnShuffle = 0x002D,
    kSetShuffle = 0x002E,
    kGetRepeat = 0x002F,
    kReturnRepeat = 0x0030,
    kSetRepeat = 0x0031,
    kSetDisplayImage = 0x0032,
    kGetMonoDisplayImageLimits = 0x0033,
    kReturnMonoDisplayImageLimits = 0x0034,
    kGetNumPlayingTracks = 0x0035,
    kReturnNumPlayingTracks = 0x0036,
    kSetCurrentPlayingTrack = 0x0037,
    kSelectSortDbRecord = 0x0038,
    kGetColorDisplayImageLimits = 0x0039,
    kReturnColorDisplayImageLimits = 0x003A,
  };

  ExtendedInterfaceMessage();
  ~ExtendedInterfaceMessage() override;
  uint16_t encode(uint8_t* buffer, uint32_t capacity) const override;

  // To the iPod.
  bool buildGetIndexedPlayingTrackInfo(TrackInfoType infoType, RecordIndex trackIndex,
                                       uint16_t chapterIndex);
  bool buildRequestIpodName();
  bool buildResetDbSelection();
  bool buildSelectDbRecord(Category category, RecordIndex index);
  bool buildGetNumberCategorizedDbRecords(Category category);
  bool buildRetrieveCategorizedDatabaseRecords(Category category, RecordIndex start,
                                               uint32_t count);
  bool buildGetPlayStatus();
  bool buildGetCurrentPlayingTrackIndex();
  bool buildGetIndexedPlayingTrackTitle(RecordIndex trackIndex);
  bool buildGetIndexedPlayingTrackArtistName(RecordIndex trackIndex);
  bool buildGetIndexedPlayingTrackAlbumName(RecordIndex trackIndex);
  bool buildPlayCurrentSelection(RecordIndex trackIndex);
  bool buildPlayControl(PlayControlCode code);
  bool buildGetShuffle();
  bool buildSetShuffle(PlayMode mode);
  bool buildGetRepeat();
  bool buildSetRepeat(PlayMode mode);

  /// Packet 0 describes the picture (`rowBytes` is its row stride) and carries the first row; every
  /// later packet is its index and a row. The row is sent with the low 16 bits of `rowBytes` as its
  /// length.
  bool buildSetDisplayImage(PixelFormat pixelFormat, uint16_t packetIndex, uint16_t width,
                            uint16_t height, uint32_t rowBytes, const uint8_t* row);

  bool buildGetMonoDisplayImageLimits();
  bool buildGetNumPlayingTracks();
  bool buildSetCurrentPlayingTrack(RecordIndex trackIndex);
  bool buildSelectSortDbRecord(Category category, RecordIndex index, SortOrder sortOrder);
  bool buildGetColorDisplayImageLimits();

  // From the iPod.
  bool decodeIpodAck(uint8_t& status, uint16_t& command) const;

  /// True when this is the iPod's acknowledgement of a command with status 0.
  bool acknowledges(uint16_t command) const;

  /// The text starts at the information type, whose byte becomes its first character, and so lacks
  /// the payload's last byte, which is the terminator.
  bool decodeReturnIndexedPlayingTrackInfo(TrackInfoType& infoType, ByteString& text) const;

  bool decodeReturnIpodName(ByteString& name) const;
  bool decodeReturnNumberCategorizedDbRecords(uint32_t& count) const;

  /// True for a record with an index and at least one byte of name.
  bool isRecord() const;

  bool decodeReturnCategorizedDatabaseRecord(RecordIndex& index, ByteString& name) const;

  /// Times in ms.
  bool decodeReturnPlayStatus(uint32_t& trackLength, uint32_t& position, PlayState& state) const;

  bool decodeReturnCurrentPlayingTrackIndex(RecordIndex& trackIndex) const;
  bool decodeReturnIndexedPlayingTrackTitle(ByteString& title) const;
  bool decodeReturnIndexedPlayingTrackArtistName(ByteString& artist) const;
  bool decodeReturnIndexedPlayingTrackAlbumName(ByteString& album) const;
  bool decodeReturnShuffle(PlayMode& mode) const;
  bool decodeReturnRepeat(PlayMode& mode) const;

  /// Limits in pixels, and the pixel format of the first entry.
  bool decodeReturnMonoDisplayImageLimits(uint16_t& width, uint16_t& height,
                                          PixelFormat& format) const;
  bool decodeReturnColorDisplayImageLimits(uint16_t& width, uint16_t& height,
                                           PixelFormat& format) const;

  bool decodeReturnNumPlayingTracks(uint32_t& count) const;

 private:
  /// A reply that is one text.
  bool decodeWholeText(Command command, uint32_t leastLength, ByteString& text) const;
};

}  // namespace ipodctl
