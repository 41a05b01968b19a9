// The rules of `iaptrace check`. Each function finds one cause, or a kind of note, and decides only
// by what is in the trace.
#pragma once

#include "iaptrace/check_findings.h"
#include "iaptrace/check_session.h"

namespace iaptrace::checking {

// Opening the device
void findMissingDevice(const Case& trace, Diagnosis& diagnosis);
void findBusyDevice(const Case& trace, Diagnosis& diagnosis);

// The bytes of the wire
void findSilence(const Case& trace, Diagnosis& diagnosis);
void findWrongSpeed(const Case& trace, Diagnosis& diagnosis);
void findMissingSync(const Case& trace, Diagnosis& diagnosis);
void findExtraSync(const Case& trace, Diagnosis& diagnosis);
void findBadChecksum(const Case& trace, Diagnosis& diagnosis);
void findLongText(const Case& trace, Diagnosis& diagnosis);

// The connection
void findRefusedIdentification(const Case& trace, Diagnosis& diagnosis);
void findNoDigitalAudio(const Case& trace, Diagnosis& diagnosis);
void findStoppedConnection(const Case& trace, Diagnosis& diagnosis);
void findPendingMode(const Case& trace, Diagnosis& diagnosis);

// Requests and answers
void findShiftedAnswers(const Case& trace, Diagnosis& diagnosis);
void findShortList(const Case& trace, Diagnosis& diagnosis);

// The sample rate
void findUnacknowledgedRate(const Case& trace, Diagnosis& diagnosis);
void findUnfollowedRate(const Case& trace, Diagnosis& diagnosis);

// The end
void findLoss(const Case& trace, Diagnosis& diagnosis);

/// What no other rule explains. The last rule, because it looks at what the others found.
/// A device that cannot be opened for another reason.
void findUnknownOpening(const Case& trace, Diagnosis& diagnosis);
void findStrangeRefusals(const Case& trace, Diagnosis& diagnosis);
void findUnexplained(const Case& trace, Diagnosis& diagnosis);

void noteLogo(const Case& trace, Diagnosis& diagnosis);
void noteSlowAnswers(const Case& trace, Diagnosis& diagnosis);
void noteModeAcknowledgedTwice(const Case& trace, Diagnosis& diagnosis);
void noteLateDevice(const Case& trace, Diagnosis& diagnosis);
void noteNothing(const Case& trace, Diagnosis& diagnosis);

// What several rules ask about a session

/// Returns whether the bytes of the iPod, or those of the host, are what another speed makes of a
/// frame.
bool isGarbled(const Session& session);
/// Returns whether the host announced itself, waited, and received nothing at all.
bool isSilent(const Session& session);
/// Returns the attempts of a connection that surely failed; empty when there is none.
std::vector<Attempt> failedAttempts(const Session& session);
/// Returns the frame that makes the library close the link: a damaged one, or one of the long form.
std::optional<size_t> fatalFrame(const Session& session);
/// Returns the first of the last requests, which are more than one and were not answered any more.
std::optional<size_t> fellSilentAt(const Session& session);
/// Returns how many records of the category the iPod counted last, if the selection of the database
/// is still the one that they were counted in.
std::optional<uint32_t> countedBefore(const Session& session, size_t request, uint8_t category);

/// The times in which a change of the mode is pending.
class PendingTimes {
 public:
  explicit PendingTimes(const Session& session);
  /// Returns whether a change was pending when the host sent the request.
  bool contain(size_t request) const;

 private:
  /// Between two items.
  struct Time {
    size_t pending;
    size_t end;
  };
  std::vector<Time> times;  ///< rising; none begins before the one before has ended
};

/// The requests of the host that change the mode.
class ModeChanges {
 public:
  explicit ModeChanges(const Session& session);
  /// Returns whether the host had left the mode, and not entered it again, before the request.
  bool haveLeftBefore(size_t request) const;

 private:
  struct Change {
    size_t item;
    bool leaves;
  };
  std::vector<Change> changes;
};

}  // namespace iaptrace::checking
