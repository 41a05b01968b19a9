// One opening of a device, as the rules of `iaptrace check` look at it.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "iaptrace/check_stage.h"
#include "iaptrace/conversation.h"
#include "iaptrace/exchange.h"
#include "wire/lingo.h"

namespace iaptrace::checking {

/// A host that waits a second has given up after this time. Less, so that a clock's steps and a
/// host with a little less patience make no difference.
constexpr trace::Time kGaveUp = std::chrono::milliseconds(900);

/// One IdentifyDeviceLingoes and what follows it up to the next one. The members are
/// indexes of the session's items.
struct Attempt {
  size_t announcement = 0;
  size_t end = 0;  ///< of the next announcement, or of the session
  uint32_t lingoes = 0;
  std::optional<size_t> accepted;
  std::optional<size_t> refused;
  uint8_t refusal = 0;  ///< the status, if refused
  std::optional<size_t> asksInfo;
  std::optional<size_t> answersInfo;
  std::optional<size_t> asksRates;
  std::optional<size_t> answersRates;
  std::optional<size_t> version;      ///< the first ReturnLingoProtocolVersion
  std::optional<size_t> asksMode;     ///< the host's EnterRemoteUiMode
  std::optional<size_t> identified;   ///< the end of the version chain, or the mode
  std::optional<size_t> asksForKeys;  ///< the iPod demands authentication
  bool wentOn = false;                ///< the host went on as one that is identified

  bool announcesAudio() const { return (lingoes >> 10 & 1) != 0; }
};

struct Session {
  Conversation items;
  Exchanges exchanges;
  std::vector<Attempt> attempts;
  std::string device;
  trace::Time ended{0};  ///< of the close, or of the last record of the trace
  bool isClosed = false;
  std::optional<size_t> failure;  ///< a read or a write that failed although nobody had closed
  std::optional<size_t> lastHostMessage;
  std::optional<size_t> lastIpodMessage;
  size_t lastIpodLine = 0;          ///< the first line of the iPod's last item
  std::optional<size_t> connected;  ///< the first answer that shows the Extended Interface mode

  /// Returns the next request of the host, or what else it does in place of one; items.size() when
  /// there is none.
  size_t nextRequest(size_t after) const;
  /// Returns how long the host surely waited for an answer to the request.
  trace::Time waitAfter(size_t request) const;
  bool isHostMessage(size_t index) const;
  bool isIpodMessage(size_t index) const;
  /// Returns the last stage that was completed before the item.
  Stage reachedBefore(size_t index) const;
  Stage reached() const { return reachedBefore(items.size()); }
  /// Returns whether anything at all was received.
  bool hasIpodBytes() const { return lastIpodLine != 0; }
};

/// Returns the final status of an exchange that was acknowledged, 0 for one that was answered with
/// data, and nothing for one that was not answered or is still pending.
std::optional<uint8_t> resultOf(const Session& session, const Exchange& exchange);

/// Returns whether a message belongs to the Extended Interface but not to its images, which work
/// outside the mode, too.
bool needsTheMode(const Message& message);
bool isImageMessage(const Message& message);
bool isGeneral(const Message& message, uint16_t command);
bool isExtended(const Message& message, uint16_t command);
bool isAudio(const Message& message, uint16_t command);

/// A device that could not be opened.
struct FailedOpening {
  std::string device;
  size_t line = 0;
  uint32_t code = 0;
};

/// Everything that the rules look at.
struct Case {
  std::vector<Session> sessions;
  std::vector<FailedOpening> failedOpenings;
  std::vector<size_t> gaps;
  trace::Time lastTime{0};  ///< of the part of the trace whose sessions were added last
  bool isEmpty = true;

  std::set<std::string> answeringDevices;      ///< on which an iPod's message was received
  std::set<std::string> audioDevices;          ///< the same, a message of the Digital Audio lingo
  std::map<std::string, size_t> lastOpenings;  ///< the line in which each device was opened last
};

/// Lines of the trace are missing after each of the lines `gaps`, which rise.
Case caseOf(const trace::Trace& records, const std::vector<size_t>& gaps);

}  // namespace iaptrace::checking
