#include "device/general_lingo.h"

#include "device/command_table.h"

namespace simulator {

namespace {

constexpr uint8_t kLingoBits = 32;
/// The time that the acknowledgement of a completed mode change states.
constexpr Time kStatedPending = milliseconds(300);

}  // namespace

struct GeneralTable {
  static constexpr CommandRow<GeneralLingo> kRows[] = {
      {kIdentify, 1, 1, &GeneralLingo::identify},
      {kRequestRemoteUiMode, 0, 0, &GeneralLingo::requestMode},
      {kEnterRemoteUiMode, 0, 0, &GeneralLingo::enterMode},
      {kExitRemoteUiMode, 0, 0, &GeneralLingo::exitMode},
      {kRequestIpodName, 0, 0, &GeneralLingo::requestName},
      {kRequestIpodSoftwareVersion, 0, 0, &GeneralLingo::requestSoftwareVersion},
      {kRequestIpodSerialNum, 0, 0, &GeneralLingo::requestSerialNumber},
      {kRequestIpodModelNum, 0, 0, &GeneralLingo::requestModelNumber},
      {kRequestLingoProtocolVersion, 1, 1, &GeneralLingo::requestLingoVersion},
      {kIdentifyDeviceLingoes, 12, 12, &GeneralLingo::identifyDeviceLingoes},
      {kRetAccessoryInfo, 1, kNoLimit, &GeneralLingo::accessoryInfo},
  };
};

void GeneralLingo::handle(const Message& message) {
  switch (dispatch(GeneralTable::kRows, *this, message)) {
    case Dispatch::kDone:
      return;
    case Dispatch::kUnknown:
      return state.refuseUnknown();
    case Dispatch::kWrongSize:
      return state.acknowledge(Status::kBadParameter);
  }
}

bool GeneralLingo::comesTooEarly(const Message& message) const {
  return state.personality.silentBeforeIdentification && !wasAnnounced &&
         !message.is(Lingo::kGeneral, kIdentifyDeviceLingoes);
}

void GeneralLingo::stop() {
  identification.stop();
  announcements = 0;
  wasAnnounced = false;
}

void GeneralLingo::identify(PayloadReader& data) {
  const uint8_t lingo = data.u8();
  identification.stop();
  state.setExtendedMode(false);
  state.announcedLingoes = lingo < kLingoBits ? 1u << lingo : 0;
  if (lingo == static_cast<uint8_t>(Lingo::kExtendedInterface)) state.setExtendedMode(true);
}

void GeneralLingo::requestMode(PayloadReader&) {
  state.send(Lingo::kGeneral, kReturnRemoteUiMode, {static_cast<uint8_t>(state.extendedMode)});
}

void GeneralLingo::enterMode(PayloadReader&) { changeMode(true); }

void GeneralLingo::exitMode(PayloadReader&) { changeMode(false); }

void GeneralLingo::requestName(PayloadReader&) { replyText(kReturnIpodName, state.name()); }

void GeneralLingo::requestSoftwareVersion(PayloadReader&) {
  const auto& version = state.personality.softwareVersion;
  state.send(Lingo::kGeneral, kReturnIpodSoftwareVersion, Bytes(version.begin(), version.end()));
}

void GeneralLingo::requestSerialNumber(PayloadReader&) {
  replyText(kReturnIpodSerialNum, state.personality.serialNumber);
}

void GeneralLingo::requestModelNumber(PayloadReader&) {
  PayloadWriter writer;
  writer.u32(state.personality.modelId).text(state.personality.modelNumber);
  state.send(Lingo::kGeneral, kReturnIpodModelNum, writer.take(), sizeof(uint32_t));
}

void GeneralLingo::requestLingoVersion(PayloadReader& data) {
  const uint8_t lingo = data.u8();
  const Version* const version = state.personality.versionOf(lingo);
  if (version == nullptr) return state.acknowledge(Status::kBadParameter);
  state.send(Lingo::kGeneral, kReturnLingoProtocolVersion, {lingo, version->major, version->minor});
}

void GeneralLingo::identifyDeviceLingoes(PayloadReader& data) {
  if (announcements++ < state.personality.silentIdentifications) return;
  if (wasAnnounced && state.personality.refusesSecondIdentification) {
    return state.acknowledge(Status::kBadParameter);
  }
  const uint32_t lingoes = data.u32();
  if ((lingoes & 1) == 0 || !speaksAll(lingoes)) return state.acknowledge(Status::kFailed);
  wasAnnounced = true;
  state.setExtendedMode(false);
  state.announcedLingoes = lingoes;
  state.acknowledge(Status::kOk);
  identification.begin();
}

void GeneralLingo::accessoryInfo(PayloadReader& data) { identification.takeAccessoryInfo(data); }

void GeneralLingo::changeMode(bool isOn) {
  const auto change = [this, isOn] {
    state.setExtendedMode(isOn);
    state.acknowledge(Status::kOk);
  };
  const Time wait = state.personality.modeChangePending;
  if (state.extendedMode == isOn) return change();
  if (!state.personality.modeChangeTogether) return state.pendThenDo(wait, change);
  state.pendAndDo(wait > Time(0) ? wait : kStatedPending, change);
}

void GeneralLingo::replyText(uint16_t command, const std::string& text) {
  state.send(Lingo::kGeneral, command, PayloadWriter().text(text).take(), 0);
}

bool GeneralLingo::speaksAll(uint32_t lingoes) const {
  for (uint8_t lingo = 0; lingo < kLingoBits; ++lingo) {
    if ((lingoes >> lingo & 1) != 0 && state.personality.lingoes.count(lingo) == 0) return false;
  }
  return true;
}

}  // namespace simulator
