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
constexpr NamedValue kModeNames[] = {{0, "standard"}, {1, "extended"}, {0, nullptr}};
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
constexpr NamedValue kButtonNames[] = {
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
constexpr FieldLayout buttons() { return {"buttons", 0, FieldKind::kButtons, kButtonNames, false}; }
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
    {"Identify", kEvery, kIdentify, kG, false, {lingo("lingo")}},
    {"iPodAck", kEvery, kAck, kG, false, {status(), command(1), ifAny(number("wait-ms", 4))}},
    {"RequestRemoteUIMode", kEvery, kRequestRemoteUiMode, kG, false, {}},
    {"ReturnRemoteUIMode", kEvery, kReturnRemoteUiMode, kG, false, {choice("mode", 1, kModeNames)}},
    {"EnterRemoteUIMode", kEvery, kEnterRemoteUiMode, kG, false, {}},
    {"ExitRemoteUIMode", kEvery, kExitRemoteUiMode, kG, false, {}},
    {"RequestiPodName", kEvery, kRequestIpodName, kG, false, {}},
    {"ReturniPodName", kEvery, kReturnIpodName, kG, false, {text("name")}},
    {"RequestiPodSoftwareVersion", kEvery, kRequestIpodSoftwareVersion, kG, false, {}},
    {"ReturniPodSoftwareVersion", kEvery, kReturnIpodSoftwareVersion, kG, false,
     {number("major", 1), number("minor", 1), number("revision", 1)}},
    {"RequestiPodSerialNum", kEvery, kRequestIpodSerialNum, kG, false, {}},
    {"ReturniPodSerialNum", kEvery, kReturnIpodSerialNum, kG, false, {text("serial-number")}},
    {"RequestiPodModelNum", kEvery, kRequestIpodModelNum, kG, false, {}},
    {"ReturniPodModelNum", kEvery, kReturnIpodModelNum, kG, false,
     {hex("model-id"), text("model")}},
    {"RequestLingoProtocolVersion", kEvery, kRequestLingoProtocolVersion, kG, false,
     {lingo("lingo")}},
    {"ReturnLingoProtocolVersion", kEvery, kReturnLingoProtocolVersion, kG, false,
     {lingo("lingo"), number("major", 1), number("minor", 1)}},
    {"IdentifyDeviceLingoes", kEvery, kIdentifyDeviceLingoes, kG, false,
     {bits("lingoes", kLingoes), hex("options"), hex("device-id")}},
    {"NotifyiPodStateChange", kEvery, kNotifyIpodStateChange, kG, false, {number("state", 1)}},
    {"GetAccessoryInfo", 2, kGetAccessoryInfo, kG, false,
     {choice("type", 1, kAccessoryInfos), ifAny(hex("model-id")), ifAny(number("major", 1)),
      ifAny(number("minor", 1)), ifAny(number("revision", 1))}},
    {"GetAccessoryInfo", 3, kGetAccessoryInfo, kG, false,
     {choice("type", 1, kAccessoryInfos), ifAny(lingo("lingo"))}},
    {"GetAccessoryInfo", kEvery, kGetAccessoryInfo, kG, false,
     {choice("type", 1, kAccessoryInfos)}},
    {"RetAccessoryInfo", 0, kRetAccessoryInfo, kG, false,
     {choice("type", 1, kAccessoryInfos), bits("capabilities", kAccessoryInfos)}},
    {"RetAccessoryInfo", 2, kRetAccessoryInfo, kG, false,
     {choice("type", 1, kAccessoryInfos), hex("model-id"), number("major", 1),
      number("minor", 1), number("revision", 1)}},
    {"RetAccessoryInfo", 3, kRetAccessoryInfo, kG, false,
     {choice("type", 1, kAccessoryInfos), lingo("lingo"), number("major", 1), number("minor", 1)}},
    {"RetAccessoryInfo", kEvery, kRetAccessoryInfo, kG, false,
     {choice("type", 1, kAccessoryInfos), bytes("value")}},

    {"ContextButtonStatus", kEvery, kContextButtonStatus, kR, false, {buttons()}},
    {"AudioButtonStatus", kEvery, kAudioButtonStatus, kR, false, {buttons()}},

    {"iPodAck", kEvery, kExtendedAck, kE, false,
     {status(), command(2), ifAny(number("wait-ms", 4))}},
    {"GetIndexedPlayingTrackInfo", kEvery, kGetIndexedPlayingTrackInfo, kE, false,
     {choice("type", 1, kTrackInfos), index("track", kNone), number("chapter", 2)}},
    {"ReturnIndexedPlayingTrackInfo", 0, kReturnIndexedPlayingTrackInfo, kE, false,
     {choice("type", 1, kTrackInfos), bits("capabilities", kTrackCapabilities),
      number("length-ms", 4), number("chapters", 2)}},
    {"ReturnIndexedPlayingTrackInfo", 2, kReturnIndexedPlayingTrackInfo, kE, false,
     {choice("type", 1, kTrackInfos), number("seconds", 1), number("minutes", 1),
      number("hours", 1),
      number("day", 1), number("month", 1), number("year", 2), number("weekday", 1)}},
    {"ReturnIndexedPlayingTrackInfo", kEvery, kReturnIndexedPlayingTrackInfo, kE, false,
     {choice("type", 1, kTrackInfos), text("text")}},
    {"RequestProtocolVersion", kEvery, kExtendedRequestProtocolVersion, kE, false, {}},
    {"ReturnProtocolVersion", kEvery, kExtendedReturnProtocolVersion, kE, false,
     {number("major", 1), number("minor", 1)}},
    {"RequestiPodName", kEvery, kExtendedRequestIpodName, kE, false, {}},
    {"ReturniPodName", kEvery, kExtendedReturnIpodName, kE, false, {text("name")}},
    {"ResetDbSelection", kEvery, kResetDbSelection, kE, false, {}},
    {"SelectDbRecord", kEvery, kSelectDbRecord, kE, false,
     {choice("category", 1, kCategories), index("record", kNone)}},
    {"GetNumberCategorizedDbRecords", kEvery, kGetNumberCategorizedDbRecords, kE, false,
     {choice("category", 1, kCategories)}},
    {"ReturnNumberCategorizedDbRecords", kEvery, kReturnNumberCategorizedDbRecords, kE, false,
     {number("count", 4)}},
    {"RetrieveCategorizedDatabaseRecords", kEvery, kRetrieveCategorizedDatabaseRecords, kE, false,
     {choice("category", 1, kCategories), index("start", kNone), index("count", kAll)}},
    {"ReturnCategorizedDatabaseRecord", kEvery, kReturnCategorizedDatabaseRecord, kE, false,
     {index("record", kNone), text("name")}},
    {"GetPlayStatus", kEvery, kGetPlayStatus, kE, false, {}},
    {"ReturnPlayStatus", kEvery, kReturnPlayStatus, kE, false,
     {number("length-ms", 4), number("position-ms", 4), choice("state", 1, kPlayStates)}},
    {"GetCurrentPlayingTrackIndex", kEvery, kGetCurrentPlayingTrackIndex, kE, false, {}},
    {"ReturnCurrentPlayingTrackIndex", kEvery, kReturnCurrentPlayingTrackIndex, kE, false,
     {index("track", kNone)}},
    {"GetIndexedPlayingTrackTitle", kEvery, kGetIndexedPlayingTrackTitle, kE, false,
     {index("track", kNone)}},
    {"ReturnIndexedPlayingTrackTitle", kEvery, kReturnIndexedPlayingTrackTitle, kE, false,
     {text("title")}},
    {"GetIndexedPlayingTrackArtistName", kEvery, kGetIndexedPlayingTrackArtistName, kE, false,
     {index("track", kNone)}},
    {"ReturnIndexedPlayingTrackArtistName", kEvery, kReturnIndexedPlayingTrackArtistName, kE, false,
     {text("artist")}},
    {"GetIndexedPlayingTrackAlbumName", kEvery, kGetIndexedPlayingTrackAlbumName, kE, false,
     {index("track", kNone)}},
    {"ReturnIndexedPlayingTrackAlbumName", kEvery, kReturnIndexedPlayingTrackAlbumName, kE, false,
     {text("album")}},
    {"SetPlayStatusChangeNotification", kEvery, kSetPlayStatusChangeNotification, kE, false,
     {choice("notifications", 1, kSwitch)}},
    {"PlayStatusChangeNotification", 1, kPlayStatusChangeNotification, kE, false,
     {choice("change", 1, kPlayChanges), index("track", kNone)}},
    {"PlayStatusChangeNotification", 4, kPlayStatusChangeNotification, kE, false,
     {choice("change", 1, kPlayChanges), number("position-ms", 4)}},
    {"PlayStatusChangeNotification", kEvery, kPlayStatusChangeNotification, kE, false,
     {choice("change", 1, kPlayChanges)}},
    {"PlayCurrentSelection", kEvery, kPlayCurrentSelection, kE, false, {index("track", kAny)}},
    {"PlayControl", kEvery, kPlayControl, kE, false, {choice("control", 1, kControls)}},
    {"GetShuffle", kEvery, kGetShuffle, kE, false, {}},
    {"ReturnShuffle", kEvery, kReturnShuffle, kE, false, {choice("shuffle", 1, kShuffles)}},
    {"SetShuffle", kEvery, kSetShuffle, kE, false, {choice("shuffle", 1, kShuffles)}},
    {"GetRepeat", kEvery, kGetRepeat, kE, false, {}},
    {"ReturnRepeat", kEvery, kReturnRepeat, kE, false, {choice("repeat", 1, kRepeats)}},
    {"SetRepeat", kEvery, kSetRepeat, kE, false, {choice("repeat", 1, kRepeats)}},
    {"SetDisplayImage", 0, kSetDisplayImage, kE, false,
     {number("packet", 2), choice("format", 1, kPixelFormats), number("width", 2),
      number("height", 2), number("row-bytes", 4), bytes("pixels")}},
    {"SetDisplayImage", kEvery, kSetDisplayImage, kE, false,
     {number("packet", 2), bytes("pixels")}},
    {"GetMonoDisplayImageLimits", kEvery, kGetMonoDisplayImageLimits, kE, false, {}},
    {"ReturnMonoDisplayImageLimits", kEvery, kReturnMonoDisplayImageLimits, kE, true,
     {number("width", 2), number("height", 2), choice("format", 1, kPixelFormats)}},
    {"GetNumPlayingTracks", kEvery, kGetNumPlayingTracks, kE, false, {}},
    {"ReturnNumPlayingTracks", kEvery, kReturnNumPlayingTracks, kE, false, {number("count", 4)}},
    {"SetCurrentPlayingTrack", kEvery, kSetCurrentPlayingTrack, kE, false, {index("track", kNone)}},
    {"SelectSortDbRecord", kEvery, kSelectSortDbRecord, kE, false,
     {choice("category", 1, kCategories), index("record", kNone), choice("order", 1, kOrders)}},
    {"GetColorDisplayImageLimits", kEvery, kGetColorDisplayImageLimits, kE, false, {}},
    {"ReturnColorDisplayImageLimits", kEvery, kReturnColorDisplayImageLimits, kE, true,
     {number("width", 2), number("height", 2), choice("format", 1, kPixelFormats)}},

    {"AccAck", kEvery, kAccAck, kA, false, {status(), command(1)}},
    {"GetAccSampleRateCaps", kEvery, kGetAccSampleRateCaps, kA, false, {}},
    {"RetAccSampleRateCaps", kEvery, kRetAccSampleRateCaps, kA, true, {number("rate", 4)}},
    {"TrackNewAudioAttributes", kEvery, kTrackNewAudioAttributes, kA, false,
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

}  // namespace simulator
