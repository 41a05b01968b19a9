#include "controller/operations.h"

namespace ipodctl {
namespace {

using Controller = IpodController;

constexpr uint8_t kRow[] = {0xAA, 0xBB};

std::function<bool(uint32_t)> atLeast(uint32_t least) {
  return [least](uint32_t length) { return length >= least; };
}

std::function<bool(uint32_t)> exactly(uint32_t only) {
  return [only](uint32_t length) { return length == only; };
}

template <class... Values>
SingleReplyOperation operation(const char* name, std::function<bool(Controller&, Values&...)> call,
                               const char* request, Bytes reply, Outputs outputs,
                               std::function<bool(uint32_t)> takesLength) {
  return {name,
          withOutputs<Values...>(call),
          untouchedOutputs<Values...>,
          request,
          reply,
          outputs,
          takesLength};
}

template <class... Values>
using Call = std::function<bool(Controller&, Values&...)>;

using NameCall = Call<ByteString>;
using NumberCall = Call<uint32_t>;
using ByteTripleCall = Call<uint8_t, uint8_t, uint8_t>;
using IndexCall = Call<RecordIndex>;
using ModeCall = Call<PlayMode>;
using LimitsCall = Call<uint16_t, uint16_t, PixelFormat>;

LimitsCall limitsOf(bool (IpodControllerBase::*request)(ImageLimits&)) {
  return [request](Controller& c, uint16_t& width, uint16_t& height, PixelFormat& format) {
    ImageLimits limits{width, height, format};
    const bool result = (c.*request)(limits);
    width = limits.width;
    height = limits.height;
    format = limits.format;
    return result;
  };
}

std::vector<SingleReplyOperation> deviceInformation() {
  return {
      operation("GetIpodName", NameCall([](auto& c, auto& name) { return c.GetIpodName(name); }),
                "55 03 04 00 14", {0x04, 0x00, 0x15, 'A', 'n', 'n'}, {"Ann"}, atLeast(1)),
      operation("RequestIpodName",
                NameCall([](auto& c, auto& name) { return c.RequestIpodName(name); }),
                "55 02 00 07", {0x00, 0x08, 'B', 'o', 'b'}, {"Bob"}, atLeast(1)),
      operation("RequestSoftwareVersion",
                ByteTripleCall([](auto& c, auto& major, auto& minor, auto& revision) {
                  return c.RequestSoftwareVersion(major, minor, revision);
                }),
                "55 02 00 09", {0x00, 0x0A, 0x01, 0x03, 0x02}, {1u, 3u, 2u}, exactly(3)),
      operation("RequestSerialNumber",
                NameCall([](auto& c, auto& serial) { return c.RequestSerialNumber(serial); }),
                "55 02 00 0B", {0x00, 0x0C, '8', 'K', 0x00}, {std::string("8K\0", 3)}, atLeast(1)),
      operation("RequestModelNumber",
                Call<uint16_t, ByteString>([](auto& c, auto& modelId, auto& text) {
                  return c.RequestModelNumber(modelId, text);
                }),
                "55 02 00 0D", {0x00, 0x0E, 0x12, 0x34, 0x00, 0x05, 'M', 'A', 0x00},
                {0x1234u, std::string("MA\0\0\0\0", 6)}, atLeast(5)),
      operation("RequestLingoProtocolVersion",
                ByteTripleCall([](auto& c, auto& lingo, auto& major, auto& minor) {
                  return c.RequestLingoProtocolVersion(0x04, lingo, major, minor);
                }),
                "55 03 00 0F 04", {0x00, 0x10, 0x04, 0x01, 0x0D}, {4u, 1u, 13u}, exactly(3)),
  };
}

std::vector<SingleReplyOperation> modeAndDatabase() {
  return {
      operation("EnterExtendedMode", Call<>([](auto& c) { return c.EnterExtendedMode(); }),
                "55 02 00 05", {0x00, 0x02, 0x00, 0x05}, {},
                [](uint32_t length) { return length == 2 || length == 6; }),
      operation("ResetDbSelection", Call<>([](auto& c) { return c.ResetDbSelection(); }),
                "55 03 04 00 16", {0x04, 0x00, 0x01, 0x00, 0x00, 0x16}, {}, exactly(3)),
      operation("GetDbRecordCount", NumberCall([](auto& c, auto& count) {
                  return c.GetDbRecordCount(Category::kTracks, count);
                }),
                "55 04 04 00 18 05", {0x04, 0x00, 0x19, 0x01, 0x02, 0x03, 0x04}, {0x01020304u},
                exactly(4)),
  };
}

std::vector<SingleReplyOperation> playStatus() {
  return {
      operation("GetPlayStatus",
                Call<uint32_t, uint32_t, PlayState>(
                    [](auto& c, auto& trackLength, auto& position, auto& state) {
                      return c.GetPlayStatus(trackLength, position, state);
                    }),
                "55 03 04 00 1C",
                {0x04, 0x00, 0x1D, 0x00, 0x03, 0xD0, 0x90, 0x80, 0x00, 0x27, 0x10, 0x02},
                {250000u, 0x80002710u, 2u}, exactly(9)),
      operation("GetCurrentTrackIndex",
                IndexCall([](auto& c, auto& index) { return c.GetCurrentTrackIndex(index); }),
                "55 03 04 00 1E", {0x04, 0x00, 0x1F, 0xFF, 0xFE, 0xFD, 0xFC}, {0xFFFEFDFCu},
                exactly(4)),
      operation("GetNumPlayingTracks",
                NumberCall([](auto& c, auto& count) { return c.GetNumPlayingTracks(count); }),
                "55 03 04 00 35", {0x04, 0x00, 0x36, 0x00, 0x00, 0x01, 0x2C}, {300u}, atLeast(4)),
      operation("GetShuffle", ModeCall([](auto& c, auto& mode) { return c.GetShuffle(mode); }),
                "55 03 04 00 2C", {0x04, 0x00, 0x2D, 0x02}, {2u}, atLeast(1)),
      operation("GetRepeat", ModeCall([](auto& c, auto& mode) { return c.GetRepeat(mode); }),
                "55 03 04 00 2F", {0x04, 0x00, 0x30, 0xFE}, {0xFEu}, atLeast(1)),
  };
}

std::vector<SingleReplyOperation> playingTrack() {
  return {
      operation("GetTrackTitle",
                NameCall([](auto& c, auto& title) { return c.GetTrackTitle(0x01020304, title); }),
                "55 07 04 00 20 01 02 03 04", {0x04, 0x00, 0x21, 'S', 'o', 'n', 'g'}, {"Song"},
                atLeast(2)),
      operation(
          "GetTrackArtist",
          NameCall([](auto& c, auto& artist) { return c.GetTrackArtist(0x01020304, artist); }),
          "55 07 04 00 22 01 02 03 04", {0x04, 0x00, 0x23, 'D', 'u', 'o'}, {"Duo"}, atLeast(2)),
      operation("GetTrackAlbum",
                NameCall([](auto& c, auto& album) { return c.GetTrackAlbum(0xFFFFFFFF, album); }),
                "55 07 04 00 24 FF FF FF FF", {0x04, 0x00, 0x25, 'L', 'P'}, {"LP"}, atLeast(2)),
      operation("GetIndexedTrackInfo",
                Call<ByteString, TrackInfoType>([](auto& c, auto& data, auto& answeredType) {
                  return c.GetIndexedTrackInfo(0x01020304, data, answeredType,
                                               TrackInfoType::kGenre);
                }),
                "55 0A 04 00 0C 05 01 02 03 04 00 00", {0x04, 0x00, 0x0D, 0x05, 'J', 'a', 'z', 'z'},
                {std::string("\x05Jaz"), 5u}, atLeast(2)),
  };
}

std::vector<SingleReplyOperation> imageLimits() {
  return {
      operation("GetMonoImageLimits", limitsOf(&IpodControllerBase::GetMonoImageLimits),
                "55 03 04 00 33", {0x04, 0x00, 0x34, 0x00, 0xA0, 0x00, 0x80, 0x01},
                {160u, 128u, 1u}, atLeast(5)),
      operation("GetColorImageLimits", limitsOf(&IpodControllerBase::GetColorImageLimits),
                "55 03 04 00 39", {0x04, 0x00, 0x3A, 0x01, 0x40, 0x00, 0xF0, 0x02},
                {320u, 240u, 2u}, atLeast(5)),
  };
}

template <class Row>
void append(std::vector<Row>& rows, const std::vector<Row>& more) {
  rows.insert(rows.end(), more.begin(), more.end());
}

std::vector<SingleReplyOperation> allSingleReplyOperations() {
  std::vector<SingleReplyOperation> rows = deviceInformation();
  append(rows, modeAndDatabase());
  append(rows, playStatus());
  append(rows, playingTrack());
  append(rows, imageLimits());
  return rows;
}

}  // namespace

const std::vector<SingleReplyOperation>& singleReplyOperations() {
  static const std::vector<SingleReplyOperation> rows = allSingleReplyOperations();
  return rows;
}

const std::vector<AcknowledgedOperation>& acknowledgedOperations() {
  static const std::vector<AcknowledgedOperation> rows = {
      {"SelectDbRecord",
       [](auto& c) { return c.SelectDbRecord(Category::kArtists, 7); },
       "55 08 04 00 17 02 00 00 00 07",
       {0x04, 0x00, 0x01, 0x00, 0x00, 0x17}},
      {"PlayCurrentSelection",
       [](auto& c) { return c.PlayCurrentSelection(0x01020304); },
       "55 07 04 00 28 01 02 03 04",
       {0x04, 0x00, 0x01, 0x00, 0x00, 0x28}},
      {"PlayControl",
       [](auto& c) { return c.PlayControl(PlayControlCode::kTogglePlayPause); },
       "55 04 04 00 29 01",
       {0x04, 0x00, 0x01, 0x00, 0x00, 0x29}},
      {"SetShuffle",
       [](auto& c) { return c.SetShuffle(PlayMode::kAlbums); },
       "55 04 04 00 2E 02",
       {0x04, 0x00, 0x01, 0x00, 0x00, 0x2E}},
      {"SetRepeat",
       [](auto& c) { return c.SetRepeat(PlayMode{0xFF}); },
       "55 04 04 00 31 FF",
       {0x04, 0x00, 0x01, 0x00, 0x00, 0x31}},
      {"SetDisplayImage",
       [](auto& c) {
         return c.SetDisplayImage(PixelFormat::kRgb565LowByteFirst, 1, 1, 9, 2, kRow);
       },
       "55 07 04 00 32 00 01 AA BB",
       {0x04, 0x00, 0x01, 0x00, 0x00, 0x32}},
      {"SetCurrentPlayingTrack",
       [](auto& c) { return c.SetCurrentPlayingTrack(0x0A0B0C0D); },
       "55 07 04 00 37 0A 0B 0C 0D",
       {0x04, 0x00, 0x01, 0x00, 0x00, 0x37}},
      {"SelectSortDbRecord",
       [](auto& c) {
         return c.SelectSortDbRecord(Category::kAlbums, 0xFFFFFFFE, SortOrder::kName);
       },
       "55 09 04 00 38 03 FF FF FF FE 04",
       {0x04, 0x00, 0x01, 0x00, 0x00, 0x38}},
  };
  return rows;
}

const std::vector<UnansweredOperation>& unansweredOperations() {
  static const std::vector<UnansweredOperation> rows = {
      {"ExitExtendedMode", [](auto& c) { return c.ExitExtendedMode(); }, "55 02 00 06", true},
      {"IdentifySimpleRemote", [](auto& c) { return c.IdentifySimpleRemote(); }, "55 03 00 01 02",
       false},
      {"ReleaseButtons", [](auto& c) { return c.ReleaseButtons(); }, "55 03 02 00 00", true},
      {"IdentifyExtendedInterface", [](auto& c) { return c.IdentifyExtendedInterface(); },
       "55 03 00 01 04", false},
  };
  return rows;
}

uint32_t dataOffset(const Bytes& payload) { return payload[0] == kExtendedInterfaceLingo ? 3 : 2; }

}  // namespace ipodctl
