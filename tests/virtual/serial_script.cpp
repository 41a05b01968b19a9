// The controller's operations: only they can use a serial line.
#include <windows.h>

#include "virtual/reference_library.h"
#include "virtual/scripts.h"
#include "virtual/serial_host.h"
#include "virtual/virtual_session.h"

using namespace ipodctl;

namespace virtual_session {
namespace {

constexpr DWORD kPauseMilliseconds = 1200;
constexpr Category kArtists = Category::kArtists;
constexpr Category kTracks = Category::kTracks;
constexpr SortOrder kSortByName = SortOrder::kName;
constexpr PlayControlCode kPause = PlayControlCode::kPause;
constexpr uint8_t kExtendedInterface = 4;
constexpr uint32_t kNewSampleRate = 48000;

using Controller = IpodController;
using Word = uint32_t;
using Mode = PlayMode;

void connect(SerialHost& host) {
  host.act("connect", [](Controller& c) {
    return c.LoadLogo("logo_zel.bmp") && c.connect("COM1:", c.logoImage());
  });
  Sleep(kPauseMilliseconds);
  host.act("isIdentified", [](Controller& c) { return c.isIdentified() != 0; });
  host.act("EnterExtendedMode", [](Controller& c) { return c.EnterExtendedMode(); });
}

void askWhoItIs(SerialHost& host) {
  using Name = ByteString;
  host.ask<Name>("GetIpodName", [](Controller& c, Name& name) { return c.GetIpodName(name); });
  host.ask<Name>("RequestIpodName",
                 [](Controller& c, Name& name) { return c.RequestIpodName(name); });
  host.ask<Name>("RequestSerialNumber",
                 [](Controller& c, Name& serial) { return c.RequestSerialNumber(serial); });
  host.ask<uint16_t>("RequestModelNumber", [](Controller& c, uint16_t& model) {
    Name modelText;
    return c.RequestModelNumber(model, modelText);
  });
  host.ask<uint8_t>("RequestSoftwareVersion", [](Controller& c, uint8_t& major) {
    uint8_t minor = 0;
    uint8_t revision = 0;
    return c.RequestSoftwareVersion(major, minor, revision);
  });
  host.ask<uint8_t>("RequestLingoProtocolVersion", [](Controller& c, uint8_t& minor) {
    uint8_t lingo = 0;
    uint8_t major = 0;
    return c.RequestLingoProtocolVersion(kExtendedInterface, lingo, major, minor);
  });
  using Limits = ImageLimits;
  host.ask<Limits>("GetMonoImageLimits",
                   [](Controller& c, Limits& limits) { return c.GetMonoImageLimits(limits); });
  host.ask<Limits>("GetColorImageLimits",
                   [](Controller& c, Limits& limits) { return c.GetColorImageLimits(limits); });
}

void walk(SerialHost& host) {
  host.act("ResetDbSelection", [](Controller& c) { return c.ResetDbSelection(); });
  host.ask<Word>("GetDbRecordCount",
                 [](Controller& c, Word& count) { return c.GetDbRecordCount(kArtists, count); });
  host.ask<RecordList>("RetrieveDbRecords", [](Controller& c, RecordList& records) {
    return c.RetrieveDbRecords(kArtists, 0, kRecordsAtOnce, records);
  });
  host.act("SelectSortDbRecord",
           [](Controller& c) { return c.SelectSortDbRecord(kArtists, 0, kSortByName); });
  host.ask<Word>("GetDbRecordCount",
                 [](Controller& c, Word& count) { return c.GetDbRecordCount(kTracks, count); });
  host.act("SelectDbRecord", [](Controller& c) { return c.SelectDbRecord(kTracks, 1); });
}

void play(SerialHost& host) {
  host.act("PlayCurrentSelection", [](Controller& c) { return c.PlayCurrentSelection(0); });
  host.ask<Word>("GetNumPlayingTracks",
                 [](Controller& c, Word& count) { return c.GetNumPlayingTracks(count); });
  host.act("SetCurrentPlayingTrack", [](Controller& c) { return c.SetCurrentPlayingTrack(1); });
  host.ask<RecordIndex>("GetCurrentTrackIndex", [](Controller& c, RecordIndex& index) {
    return c.GetCurrentTrackIndex(index);
  });
  host.act("PlayControl", [](Controller& c) { return c.PlayControl(kPause); });
  host.ask<PlayState>("GetPlayStatus", [](Controller& c, PlayState& state) {
    Word length = 0;
    Word position = 0;
    return c.GetPlayStatus(length, position, state);
  });
}

void readTexts(SerialHost& host) {
  using Text = ByteString;
  host.ask<Text>("GetTrackTitle",
                 [](Controller& c, Text& text) { return c.GetTrackTitle(0, text); });
  host.ask<Text>("GetTrackArtist",
                 [](Controller& c, Text& text) { return c.GetTrackArtist(0, text); });
  host.ask<Text>("GetTrackAlbum",
                 [](Controller& c, Text& text) { return c.GetTrackAlbum(0, text); });
  host.ask<Text>("GetIndexedTrackInfo", [](Controller& c, Text& text) {
    TrackInfoType type{};
    return c.GetIndexedTrackInfo(0, text, type, TrackInfoType::kGenre);
  });
}

/// Off first, whatever the previous session left.
void changeModes(SerialHost& host) {
  host.act("SetShuffle", [](Controller& c) { return c.SetShuffle(PlayMode::kOff); });
  host.act("SetRepeat", [](Controller& c) { return c.SetRepeat(PlayMode::kOff); });
  host.act("SetShuffle", [](Controller& c) { return c.SetShuffle(PlayMode::kTracks); });
  host.ask<Mode>("GetShuffle", [](Controller& c, Mode& mode) { return c.GetShuffle(mode); });
  host.act("SetRepeat", [](Controller& c) { return c.SetRepeat(PlayMode::kAlbums); });
  host.ask<Mode>("GetRepeat", [](Controller& c, Mode& mode) { return c.GetRepeat(mode); });
}

/// The handler receives a new sample rate, so a thread that waits for it gets nothing.
void listen(VirtualSession& session, SerialHost& host) {
  session.ipod.announceSampleRate(session.world.now(), kNewSampleRate);
  Sleep(kPauseMilliseconds);
  host.ask<Word>("getSampleRate", [](Controller& c, Word& rate) { return c.getSampleRate(rate); });
  host.ask<Word>("waitAudioAttributes",
                 [](Controller& c, Word& rate) { return c.waitAudioAttributes(rate); });
}

void leave(SerialHost& host) {
  host.act("ReleaseButtons", [](Controller& c) { return c.ReleaseButtons(); });
  host.act("ExitExtendedMode", [](Controller& c) { return c.ExitExtendedMode(); });
  host.act("reenterExtendedMode", [](Controller& c) { return c.reenterExtendedMode(); });
  host.act("CloseIpod", [](Controller& c) { return c.CloseIpod(); });
  host.act("isIdentified", [](Controller& c) { return c.isIdentified() != 0; });
}

void playAll(VirtualSession& session, Host& caller) {
  SerialHost host(caller);
  connect(host);
  askWhoItIs(host);
  walk(host);
  play(host);
  readTexts(host);
  changeModes(host);
  listen(session, host);
  leave(host);
}

}  // namespace

const Script& serialScript() {
  static const Script script{"serial",
                             "COM1:",
                             simulator::FrameKind::kSerial,
                             referenceModel(),
                             referenceLibrary(),
                             referenceLogo(),
                             playAll,
                             serialResults(),
                             operationPromises(),
                             kLatestOnASerialLine};
  return script;
}

}  // namespace virtual_session
