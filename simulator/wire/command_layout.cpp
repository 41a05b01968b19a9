#include "wire/command_layout.h"

#include <algorithm>
#include <iterator>

#include "wire/payload.h"

namespace simulator {

namespace {

constexpr NamedValue kLingoes[] = {
    {0x00, "General"},
    {0x01, "Microphone"},
    {0x02, "SimpleRemote"},
    {0x03, "DisplayRemote"},
    {0x04, "ExtendedInterface"},
    {0x0A, "DigitalAudio"},
    {0, nullptr},
};
constexpr NamedValue kStatuses[] = {
    {0, "ok"},
    {1, "unknown-category"},
    {2, "failed"},
    {3, "out-of-resources"},
    {4, "bad-parameter"},
    {5, "unknown-id"},
    {6, "pending"},
    {7, "not-authenticated"},
    {0, nullptr},
};
constexpr NamedValue kCategories[] = {
    {0, "all"},    {1, "playlists"}, {2, "artists"},    {3, "albums"},   {4, "genres"},
    {5, "tracks"}, {6, "composers"}, {7, "audiobooks"}, {8, "podcasts"}, {0, nullptr},
};
constexpr NamedValue kNone[] = {{kNoIndex, "none"}, {0, nullptr}};
constexpr NamedValue kAll[] = {{kAllRecords, "all"}, {0, nullptr}};
constexpr NamedValue kAny[] = {{kNoIndex, "any"}, {0, nullptr}};
constexpr NamedValue kModes[] = {{0, "standard"}, {1, "extended"}, {0, nullptr}};
constexpr NamedValue kPlayStates[] = {
    {0, "stopped"}, {1, "playing"}, {2, "paused"}, {0xFF, "error"}, {0, nullptr}};
constexpr NamedValue kShuffles[] = {{0, "off"}, {1, "tracks"}, {2, "albums"}, {0, nullptr}};
constexpr NamedValue kRepeats[] = {{0, "off"}, {1, "one"}, {2, "all"}, {0, nullptr}};
constexpr NamedValue kSwitch[] = {{0, "off"}, {1, "on"}, {0, nullptr}};
constexpr NamedValue kControls[] = {
    {1, "toggle-play-pause"}, {2, "stop"},   {3, "next-track"}, {4, "previous-track"},
    {5, "fast-forward"},      {6, "rewind"}, {7, "end-seek"},   {8, "next-chapter"},
    {9, "previous-chapter"},  {10, "play"},  {11, "pause"},     {0, nullptr},
};
constexpr NamedValue kOrders[] = {
    {0, "genre"},    {1, "artist"},       {2, "composer"},   {3, "album"}, {4, "name"},
    {5, "playlist"}, {6, "release-date"}, {0xFF, "default"}, {0, nullptr},
};
constexpr NamedValue kTrackInfos[] = {
    {0, "capabilities"}, {1, "podcast-name"}, {2, "release-date"}, {3, "description"},
    {4, "lyrics"},       {5, "genre"},        {6, "composer"},     {0, nullptr},
};
constexpr NamedValue kTrackCapabilities[] = {
    {0, "audiobook"}, {1, "chapters"},     {2, "artwork"},     {3, "lyrics"},
    {4, "podcast"},   {5, "release-date"}, {6, "description"}, {0, nullptr},
};
constexpr NamedValue kPlayChanges[] = {{0, "stopped"}, {1, "track"}, {4, "position"}, {0, nullptr}};
constexpr NamedValue kAccessoryInfos[] = {
    {0, "capabilities"},  {1, "name"},          {2, "minimum-firmware"}, {3, "minimum-version"},
    {4, "firmware"},      {5, "hardware"},      {6, "manufacturer"},     {7, "model"},
    {8, "serial-number"}, {9, "payload-limit"}, {10, "status-types"},    {0, nullptr},
};
constexpr NamedValue kPixelFormats[] = {
    {1, "grey-2"}, {2, "rgb565-low-first"}, {3, "rgb565-high-first"}, {0, nullptr}};
constexpr NamedValue kButtons[] = {
    {0, "play-pause"},
    {1, "volume-up"},
    {2, "volume-down"},
    {3, "next-track"},
    {4, "previous-track"},
    {5, "next-album"},
    {6, "previous-album"},
    {7, "stop"},
    {8, "play"},
    {9, "pause"},
    {10, "mute"},
    {11, "next-chapter"},
    {12, "previous-chapter"},
    {13, "next-playlist"},
    {14, "previous-playlist"},
    {15, "shuffle"},
    {16, "repeat"},
    {17, "power-on"},
    {18, "power-off"},
    {19, "backlight"},
    {20, "fast-forward"},
    {21, "rewind"},
    {22, "menu"},
    {23, "select"},
    {24, "up"},
    {25, "down"},
    {26, "backlight-off"},
    {0, nullptr},
};

constexpr FieldLayout number(const char* name, size_t width) {
  return {name, width, FieldKind::kNumber, nullptr, false};
}
constexpr FieldLayout choice(const char* name, size_t width, const NamedValue* values) {
  return {name, width, FieldKind::kChoice, values, false};
}
constexpr FieldLayout bits(const char* name, const NamedValue* values) {
  return {name, 4, FieldKind::kBits, values, false};
}
constexpr FieldLayout index(const char* name, const NamedValue* values) {
  return {name, 4, FieldKind::kIndex, values, false};
}
constexpr FieldLayout text(const char* name) { return {name, 0, FieldKind::kText, nullptr, false}; }
constexpr FieldLayout bytes(const char* name) {
  return {name, 0, FieldKind::kBytes, nullptr, false};
}
constexpr FieldLayout lingo(const char* name) {
  return {name, 1, FieldKind::kLingo, kLingoes, false};
}
constexpr FieldLayout status() { return {"status", 1, FieldKind::kStatus, kStatuses, false}; }
constexpr FieldLayout command(size_t width) {
  return {"command", width, FieldKind::kCommand, nullptr, false};
}
constexpr FieldLayout buttons() { return {"buttons", 0, FieldKind::kButtons, kButtons, false}; }
constexpr FieldLayout hex(const char* name) { return {name, 4, FieldKind::kHex, nullptr, false}; }
constexpr FieldLayout ifAny(FieldLayout field) {
  field.isOptional = true;
  return field;
}

constexpr Lingo kG = Lingo::kGeneral;
constexpr Lingo kR = Lingo::kSimpleRemote;
constexpr Lingo kE = Lingo::kExtendedInterface;
constexpr Lingo kA = Lingo::kDigitalAudio;
constexpr int kEvery = kAnyForm;

// clang-format off
constexpr CommandLayout kCommands[] = {
    {kG, kIdentify, "Identify", kEvery, false, {lingo("lingo")}},
    {kG, kAck, "iPodAck", kEvery, false, {status(), command(1), ifAny(number("wait-ms", 4))}},
    {kG, kRequestRemoteUiMode, "RequestRemoteUIMode", kEvery, false, {}},
    {kG, kReturnRemoteUiMode, "ReturnRemoteUIMode", kEvery, false, {choice("mode", 1, kModes)}},
    {kG, kEnterRemoteUiMode, "EnterRemoteUIMode", kEvery, false, {}},
    {kG, kExitRemoteUiMode, "ExitRemoteUIMode", kEvery, false, {}},
    {kG, kRequestIpodName, "RequestiPodName", kEvery, false, {}},
    {kG, kReturnIpodName, "ReturniPodName", kEvery, false, {text("name")}},
    {kG, kRequestIpodSoftwareVersion, "RequestiPodSoftwareVersion", kEvery, false, {}},
    {kG, kReturnIpodSoftwareVersion, "ReturniPodSoftwareVersion", kEvery, false,
     {number("major", 1), number("minor", 1), number("revision", 1)}},
    {kG, kRequestIpodSerialNum, "RequestiPodSerialNum", kEvery, false, {}},
    {kG, kReturnIpodSerialNum, "ReturniPodSerialNum", kEvery, false, {text("serial-number")}},
    {kG, kRequestIpodModelNum, "RequestiPodModelNum", kEvery, false, {}},
    {kG, kReturnIpodModelNum, "ReturniPodModelNum", kEvery, false, {hex("model-id"), text("model")}},
    {kG, kRequestLingoProtocolVersion, "RequestLingoProtocolVersion", kEvery, false, {lingo("lingo")}},
    {kG, kReturnLingoProtocolVersion, "ReturnLingoProtocolVersion", kEvery, false,
     {lingo("lingo"), number("major", 1), number("minor", 1)}},
    {kG, kIdentifyDeviceLingoes, "IdentifyDeviceLingoes", kEvery, false,
     {bits("lingoes", kLingoes), hex("options"), hex("device-id")}},
    {kG, kNotifyIpodStateChange, "NotifyiPodStateChange", kEvery, false, {number("state", 1)}},
    {kG, kGetAccessoryInfo, "GetAccessoryInfo", 2, false,
     {choice("type", 1, kAccessoryInfos), ifAny(hex("model-id")), ifAny(number("major", 1)),
      ifAny(number("minor", 1)), ifAny(number("revision", 1))}},
    {kG, kGetAccessoryInfo, "GetAccessoryInfo", 3, false,
     {choice("type", 1, kAccessoryInfos), ifAny(lingo("lingo"))}},
    {kG, kGetAccessoryInfo, "GetAccessoryInfo", kEvery, false, {choice("type", 1, kAccessoryInfos)}},
    {kG, kRetAccessoryInfo, "RetAccessoryInfo", 0, false,
     {choice("type", 1, kAccessoryInfos), bits("capabilities", kAccessoryInfos)}},
    {kG, kRetAccessoryInfo, "RetAccessoryInfo", 2, false,
     {choice("type", 1, kAccessoryInfos), hex("model-id"), number("major", 1),
      number("minor", 1), number("revision", 1)}},
    {kG, kRetAccessoryInfo, "RetAccessoryInfo", 3, false,
     {choice("type", 1, kAccessoryInfos), lingo("lingo"), number("major", 1), number("minor", 1)}},
    {kG, kRetAccessoryInfo, "RetAccessoryInfo", kEvery, false,
     {choice("type", 1, kAccessoryInfos), bytes("value")}},

    {kR, kContextButtonStatus, "ContextButtonStatus", kEvery, false, {buttons()}},
    {kR, kAudioButtonStatus, "AudioButtonStatus", kEvery, false, {buttons()}},

    {kE, kExtendedAck, "iPodAck", kEvery, false, {status(), command(2), ifAny(number("wait-ms", 4))}},
    {kE, kGetIndexedPlayingTrackInfo, "GetIndexedPlayingTrackInfo", kEvery, false,
     {choice("type", 1, kTrackInfos), index("track", kNone), number("chapter", 2)}},
    {kE, kReturnIndexedPlayingTrackInfo, "ReturnIndexedPlayingTrackInfo", 0, false,
     {choice("type", 1, kTrackInfos), bits("capabilities", kTrackCapabilities),
      number("length-ms", 4), number("chapters", 2)}},
    {kE, kReturnIndexedPlayingTrackInfo, "ReturnIndexedPlayingTrackInfo", 2, false,
     {choice("type", 1, kTrackInfos), number("seconds", 1), number("minutes", 1), number("hours", 1),
      number("day", 1), number("month", 1), number("year", 2), number("weekday", 1)}},
    {kE, kReturnIndexedPlayingTrackInfo, "ReturnIndexedPlayingTrackInfo", kEvery, false,
     {choice("type", 1, kTrackInfos), text("text")}},
    {kE, kExtendedRequestProtocolVersion, "RequestProtocolVersion", kEvery, false, {}},
    {kE, kExtendedReturnProtocolVersion, "ReturnProtocolVersion", kEvery, false,
     {number("major", 1), number("minor", 1)}},
    {kE, kExtendedRequestIpodName, "RequestiPodName", kEvery, false, {}},
    {kE, kExtendedReturnIpodName, "ReturniPodName", kEvery, false, {text("name")}},
    {kE, kResetDbSelection, "ResetDbSelection", kEvery, false, {}},
    {kE, kSelectDbRecord, "SelectDbRecord", kEvery, false,
     {choice("category", 1, kCategories), index("record", kNone)}},
    {kE, kGetNumberCategorizedDbRecords, "GetNumberCategorizedDbRecords", kEvery, false,
     {choice("category", 1, kCategories)}},
    {kE, kReturnNumberCategorizedDbRecords, "ReturnNumberCategorizedDbRecords", kEvery, false,
     {number("count", 4)}},
    {kE, kRetrieveCategorizedDatabaseRecords, "RetrieveCategorizedDatabaseRecords", kEvery, false,
     {choice("category", 1, kCategories), index("start", kNone), index("count", kAll)}},
    {kE, kReturnCategorizedDatabaseRecord, "ReturnCategorizedDatabaseRecord", kEvery, false,
     {index("record", kNone), text("name")}},
    {kE, kGetPlayStatus, "GetPlayStatus", kEvery, false, {}},
    {kE, kReturnPlayStatus, "ReturnPlayStatus", kEvery, false,
     {number("length-ms", 4), number("position-ms", 4), choice("state", 1, kPlayStates)}},
    {kE, kGetCurrentPlayingTrackIndex, "GetCurrentPlayingTrackIndex", kEvery, false, {}},
    {kE, kReturnCurrentPlayingTrackIndex, "ReturnCurrentPlayingTrackIndex", kEvery, false,
     {index("track", kNone)}},
    {kE, kGetIndexedPlayingTrackTitle, "GetIndexedPlayingTrackTitle", kEvery, false,
     {index("track", kNone)}},
    {kE, kReturnIndexedPlayingTrackTitle, "ReturnIndexedPlayingTrackTitle", kEvery, false,
     {text("title")}},
    {kE, kGetIndexedPlayingTrackArtistName, "GetIndexedPlayingTrackArtistName", kEvery, false,
     {index("track", kNone)}},
    {kE, kReturnIndexedPlayingTrackArtistName, "ReturnIndexedPlayingTrackArtistName", kEvery, false,
     {text("artist")}},
    {kE, kGetIndexedPlayingTrackAlbumName, "GetIndexedPlayingTrackAlbumName", kEvery, false,
     {index("track", kNone)}},
    {kE, kReturnIndexedPlayingTrackAlbumName, "ReturnIndexedPlayingTrackAlbumName", kEvery, false,
     {text("album")}},
    {kE, kSetPlayStatusChangeNotification, "SetPlayStatusChangeNotification", kEvery, false,
     {choice("notifications", 1, kSwitch)}},
    {kE, kPlayStatusChangeNotification, "PlayStatusChangeNotification", 1, false,
     {choice("change", 1, kPlayChanges), index("track", kNone)}},
    {kE, kPlayStatusChangeNotification, "PlayStatusChangeNotification", 4, false,
     {choice("change", 1, kPlayChanges), number("position-ms", 4)}},
    {kE, kPlayStatusChangeNotification, "PlayStatusChangeNotification", kEvery, false,
     {choice("change", 1, kPlayChanges)}},
    {kE, kPlayCurrentSelection, "PlayCurrentSelection", kEvery, false, {index("track", kAny)}},
    {kE, kPlayControl, "PlayControl", kEvery, false, {choice("control", 1, kControls)}},
    {kE, kGetShuffle, "GetShuffle", kEvery, false, {}},
    {kE, kReturnShuffle, "ReturnShuffle", kEvery, false, {choice("shuffle", 1, kShuffles)}},
    {kE, kSetShuffle, "SetShuffle", kEvery, false, {choice("shuffle", 1, kShuffles)}},
    {kE, kGetRepeat, "GetRepeat", kEvery, false, {}},
    {kE, kReturnRepeat, "ReturnRepeat", kEvery, false, {choice("repeat", 1, kRepeats)}},
    {kE, kSetRepeat, "SetRepeat", kEvery, false, {choice("repeat", 1, kRepeats)}},
    {kE, kSetDisplayImage, "SetDisplayImage", 0, false,
     {number("packet", 2), choice("format", 1, kPixelFormats), number("width", 2),
      number("height", 2), number("row-bytes", 4), bytes("pixels")}},
    {kE, kSetDisplayImage, "SetDisplayImage", kEvery, false, {number("packet", 2), bytes("pixels")}},
    {kE, kGetMonoDisplayImageLimits, "GetMonoDisplayImageLimits", kEvery, false, {}},
    {kE, kReturnMonoDisplayImageLimits, "ReturnMonoDisplayImageLimits", kEvery, true,
     {number("width", 2), number("height", 2), choice("format", 1, kPixelFormats)}},
    {kE, kGetNumPlayingTracks, "GetNumPlayingTracks", kEvery, false, {}},
    {kE, kReturnNumPlayingTracks, "ReturnNumPlayingTracks", kEvery, false, {number("count", 4)}},
    {kE, kSetCurrentPlayingTrack, "SetCurrentPlayingTrack", kEvery, false, {index("track", kNone)}},
    {kE, kSelectSortDbRecord, "SelectSortDbRecord", kEvery, false,
     {choice("category", 1, kCategories), index("record", kNone), choice("order", 1, kOrders)}},
    {kE, kGetColorDisplayImageLimits, "GetColorDisplayImageLimits", kEvery, false, {}},
    {kE, kReturnColorDisplayImageLimits, "ReturnColorDisplayImageLimits", kEvery, true,
     {number("width", 2), number("height", 2), choice("format", 1, kPixelFormats)}},

    {kA, kAccAck, "AccAck", kEvery, false, {status(), command(1)}},
    {kA, kGetAccSampleRateCaps, "GetAccSampleRateCaps", kEvery, false, {}},
    {kA, kRetAccSampleRateCaps, "RetAccSampleRateCaps", kEvery, true, {number("rate", 4)}},
    {kA, kTrackNewAudioAttributes, "TrackNewAudioAttributes", kEvery, false,
     {number("rate", 4), number("sound-check", 4), number("volume-adjustment", 4)}},
};
// clang-format on

bool hasForm(const CommandLayout& row, const Message& message) {
  if (row.form == kAnyForm) return true;
  PayloadReader reader(message.data);
  const uint32_t first = row.fields[0].width == 2 ? reader.u16() : reader.u8();
  return reader.ok() && first == static_cast<uint32_t>(row.form);
}

}  // namespace

CommandLayouts commandLayouts() { return {std::begin(kCommands), std::end(kCommands)}; }

const CommandLayout* layoutOf(const Message& message) {
  const auto fits = [&](const CommandLayout& row) {
    return message.is(row.lingo, row.command) && hasForm(row, message);
  };
  const auto row = std::find_if(std::begin(kCommands), std::end(kCommands), fits);
  return row == std::end(kCommands) ? nullptr : row;
}

const char* nameOf(const NamedValue* values, uint32_t value) {
  for (; values != nullptr && values->name != nullptr; ++values) {
    if (values->value == value) return values->name;
  }
  return nullptr;
}

const char* lingoName(uint8_t lingoNumber) { return nameOf(kLingoes, lingoNumber); }

const char* statusName(uint8_t statusNumber) { return nameOf(kStatuses, statusNumber); }

}  // namespace simulator
