// Faults of the wire: nothing, garbage, the sync byte, damaged frames.

#include <algorithm>

#include "iaptrace/check_rules.h"
#include "wire/frame.h"

namespace iaptrace::checking {
namespace {

using simulator::kSyncByte;

constexpr trace::Time kWholeConnection = std::chrono::milliseconds(1900);
constexpr size_t kLeastGarbage = 4;

bool isKnownLingoByte(uint8_t lingo) {
  constexpr uint8_t kLast = 0x0E;
  return lingo <= kLast;
}

/// Whether the item is a frame of which only a few bytes are damaged.
bool looksLikeAFrame(const Item& item) {
  constexpr size_t kLeastSize = 5;
  constexpr size_t kPlaceOfLingo = 2;
  return item.kind == Item::Kind::kBadChecksum && !item.isLong && item.bytes.size() >= kLeastSize &&
         isKnownLingoByte(item.bytes[kPlaceOfLingo]);
}

bool isSyncOnly(const Item& item) {
  return std::all_of(item.bytes.begin(), item.bytes.end(),
                     [](uint8_t byte) { return byte == kSyncByte; });
}

std::optional<size_t> firstHostMessage(const Session& session) {
  for (size_t i = 0; i < session.items.size(); ++i) {
    if (session.isHostMessage(i)) return i;
  }
  return std::nullopt;
}

/// Returns the first message that an iPod must answer.
std::optional<size_t> firstRequest(const Session& session) {
  for (const Exchange& exchange : session.exchanges.all) {
    if (session.items[exchange.request].sender == Sender::kHost) return exchange.request;
  }
  return std::nullopt;
}

/// Bytes of which none forms a frame.
struct Garbage {
  size_t bytes = 0;
  size_t lines = 0;
  size_t inFrames = 0;  ///< bytes of frames, also of damaged ones
  bool hasMessage = false;

  bool isAll() const {
    return !hasMessage && 2 * inFrames < bytes && bytes - inFrames >= kLeastGarbage;
  }
};

/// Returns what an end sent from an item on. The start of a frame at the end is not garbage: the
/// recording ends there.
Garbage garbageOf(const Session& session, Sender sender, size_t from) {
  Garbage garbage;
  size_t unfinished = 0;
  for (size_t i = from; i < session.items.size(); ++i) {
    const Item& item = session.items[i];
    if (!item.isFrom(sender)) continue;
    garbage.hasMessage |= item.isMessage() || item.kind == Item::Kind::kMalformed;
    if (looksLikeAFrame(item)) garbage.inFrames += item.bytes.size();
    unfinished = item.kind == Item::Kind::kUnfinished ? item.bytes.size() : 0;
    if (sender == Sender::kHost && isSyncOnly(item)) continue;
    garbage.bytes += item.bytes.size();
    garbage.lines += item.firstLine == item.line ? 1 : 2;
  }
  garbage.bytes -= std::min(garbage.bytes, unfinished);
  return garbage;
}

/// Whether the iPod's answers form no frame.
bool answersGarbage(const Session& session) {
  const std::optional<size_t> first = firstHostMessage(session);
  if (!first) return false;
  return garbageOf(session, Sender::kIpod, *first).isAll();
}

/// Whether the host's bytes form no frame at the iPod's end of the line.
bool hostSendsGarbage(const Session& session) {
  const Garbage garbage = garbageOf(session, Sender::kHost, 0);
  return garbage.isAll() && garbage.lines > 1;
}

std::vector<size_t> linesOf(const Session& session, Sender sender) {
  std::vector<size_t> lines;
  for (const Item& item : session.items) {
    if (!item.isFrom(sender)) continue;
    lines.push_back(item.firstLine);
    if (item.kind == Item::Kind::kNoise) lines.push_back(item.line);
  }
  return lines;
}

/// How many messages of an end follow a sync byte.
struct SyncBytes {
  size_t messages = 0;
  size_t syncs = 0;

  bool areAll() const { return messages > 0 && syncs == messages; }
  bool areNone() const { return messages > 0 && syncs == 0; }
};

SyncBytes syncBytesOf(const Session& session, Sender sender) {
  SyncBytes found;
  for (const Item& item : session.items) {
    if (!item.isMessage() || item.sender != sender) continue;
    ++found.messages;
    if (item.hasSync) ++found.syncs;
  }
  return found;
}

bool isSerialLine(const std::string& device) {
  return device.size() >= 3 && (device[0] == 'C' || device[0] == 'c') &&
         (device[1] == 'O' || device[1] == 'o') && (device[2] == 'M' || device[2] == 'm');
}

bool isStreamDevice(const std::string& device) {
  return device.size() >= 3 && (device[0] == 'I' || device[0] == 'i') &&
         (device[1] == 'P' || device[1] == 'p') && (device[2] == 'D' || device[2] == 'd');
}

enum class SyncFault { kNone, kMissing, kExtra };

/// The sync byte in a session in which nothing was received. The device's name says what it takes.
SyncFault syncFaultOfSilence(const Case& trace, const Session& session) {
  const SyncBytes host = syncBytesOf(session, Sender::kHost);
  if (trace.answeringDevices.count(session.device) > 0) return SyncFault::kNone;
  if (isSerialLine(session.device) && host.areNone()) return SyncFault::kMissing;
  if (isStreamDevice(session.device) && host.areAll()) return SyncFault::kExtra;
  return SyncFault::kNone;
}

/// An iPod on a serial line sends the sync byte itself, and one on a stream sends none. A stream
/// that passes over the host's sync bytes has the wrong map, too; a host that needs none is right.
SyncFault syncFaultOf(const Case& trace, const Session& session) {
  if (isSilent(session)) return syncFaultOfSilence(trace, session);
  const SyncBytes host = syncBytesOf(session, Sender::kHost);
  const SyncBytes ipod = syncBytesOf(session, Sender::kIpod);
  if (host.areAll() && ipod.areNone() && ipod.messages > 1) return SyncFault::kExtra;
  const bool hasFailed = !failedAttempts(session).empty();
  return host.areNone() && ipod.areAll() && hasFailed ? SyncFault::kMissing : SyncFault::kNone;
}

void findSyncFault(const Case& trace, Diagnosis& diagnosis, SyncFault wanted, const char* cause) {
  for (const Session& session : trace.sessions) {
    if (syncFaultOf(trace, session) != wanted) continue;
    diagnosis.add(cause, linesOf(session, Sender::kHost));
  }
}

/// Whether the host still sends after the frame: it did not close the link.
bool isFollowedByHost(const Session& session, size_t index) {
  return session.lastHostMessage && *session.lastHostMessage > index;
}

/// Whether the rest of a frame did not arrive, although there was time enough before the end, or
/// before the cable was pulled.
bool isCutShort(const Session& session, size_t index) {
  const Item& item = session.items[index];
  if (item.kind != Item::Kind::kUnfinished || item.sender != Sender::kIpod) return false;
  const bool failsLater = session.failure && *session.failure > index;
  const trace::Time end = failsLater ? session.items[*session.failure].at : session.ended;
  return session.lastIpodLine > item.line || end - item.at >= kGaveUp;
}

bool isDamaged(const Session& session, size_t index) {
  const Item& item = session.items[index];
  return item.kind == Item::Kind::kBadChecksum || isCutShort(session, index);
}

bool hasText(const Message& message) {
  using namespace simulator;
  constexpr uint16_t kExtendedTexts[] = {
      kReturnIndexedPlayingTrackInfo,       kExtendedReturnIpodName,
      kReturnCategorizedDatabaseRecord,     kReturnIndexedPlayingTrackTitle,
      kReturnIndexedPlayingTrackArtistName, kReturnIndexedPlayingTrackAlbumName};
  constexpr uint16_t kGeneralTexts[] = {kReturnIpodName, kReturnIpodSerialNum, kReturnIpodModelNum};
  const auto isOne = [&](const auto& commands, Lingo lingo) {
    return std::any_of(std::begin(commands), std::end(commands),
                       [&](uint16_t command) { return message.is(lingo, command); });
  };
  return isOne(kExtendedTexts, Lingo::kExtendedInterface) || isOne(kGeneralTexts, Lingo::kGeneral);
}

bool isLongText(const Session& session, size_t index) {
  const Item& item = session.items[index];
  return session.isIpodMessage(index) && item.isLong && hasText(item.message) &&
         messagePayload(item.message).size() > simulator::kShortFormLimit &&
         !isFollowedByHost(session, index);
}

}  // namespace

bool isGarbled(const Session& session) {
  if (session.lastIpodMessage.has_value()) return false;
  return answersGarbage(session) || hostSendsGarbage(session);
}

bool isSilent(const Session& session) {
  const std::optional<size_t> first = firstRequest(session);
  if (!first || session.hasIpodBytes() || isGarbled(session)) return false;
  const trace::Time end = session.failure ? session.items[*session.failure].at : session.ended;
  const trace::Time waited = end - session.items[*first].at;
  return waited >= kWholeConnection || (session.isClosed && !session.failure && waited >= kGaveUp);
}

std::optional<size_t> fatalFrame(const Session& session) {
  for (size_t i = 0; i < session.items.size(); ++i) {
    const Item& item = session.items[i];
    const bool isLong = item.isFrom(Sender::kIpod) && item.isLong && !isFollowedByHost(session, i);
    if (isLong || (item.isFrom(Sender::kIpod) && isDamaged(session, i))) return i;
  }
  return std::nullopt;
}

void findSilence(const Case& trace, Diagnosis& diagnosis) {
  for (const Session& session : trace.sessions) {
    if (!isSilent(session) || syncFaultOf(trace, session) != SyncFault::kNone) continue;
    diagnosis.add("silent", linesOf(session, Sender::kHost));
  }
}

void findWrongSpeed(const Case& trace, Diagnosis& diagnosis) {
  for (const Session& session : trace.sessions) {
    if (!isGarbled(session)) continue;
    const bool isIpod = answersGarbage(session);
    diagnosis.add("wrong-speed", linesOf(session, isIpod ? Sender::kIpod : Sender::kHost));
  }
}

void findMissingSync(const Case& trace, Diagnosis& diagnosis) {
  findSyncFault(trace, diagnosis, SyncFault::kMissing, "sync-missing");
}

void findExtraSync(const Case& trace, Diagnosis& diagnosis) {
  findSyncFault(trace, diagnosis, SyncFault::kExtra, "sync-extra");
}

void findBadChecksum(const Case& trace, Diagnosis& diagnosis) {
  for (const Session& session : trace.sessions) {
    if (isGarbled(session)) continue;
    for (size_t i = 0; i < session.items.size(); ++i) {
      if (!isDamaged(session, i)) continue;
      const bool isHosts = session.items[i].sender == Sender::kHost;
      diagnosis.add("bad-checksum", {session.items[i].firstLine},
                    isHosts ? "The host sent it. An iPod ignores such a frame." : "");
    }
  }
}

void findLongText(const Case& trace, Diagnosis& diagnosis) {
  for (const Session& session : trace.sessions) {
    for (size_t i = 0; i < session.items.size(); ++i) {
      if (!isLongText(session, i)) continue;
      const size_t bytes = messagePayload(session.items[i].message).size();
      diagnosis.add("text-too-long", {session.items[i].firstLine, session.items[i].line},
                    "The message has " + std::to_string(bytes) + " bytes.");
    }
  }
}

}  // namespace iaptrace::checking
