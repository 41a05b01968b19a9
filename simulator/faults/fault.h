#pragma once

#include <cstdint>
#include <limits>
#include <optional>
#include <vector>

namespace simulator {

/// The faults between an iPod and its accessory. `value` and `value2` are the two numbers of a
/// Fault.
enum class FaultKind {
  // One reply
  kLate,          ///< is sent `value` ms later, after what is sent meanwhile
  kLost,          ///< is not sent
  kDoubled,       ///< is sent twice
  kWrongCommand,  ///< has the command id `value`
  kWrongLingo,    ///< has the lingo id `value`
  kWrongStatus,   ///< is an acknowledgement of the request with the status `value`
  kCut,           ///< ends after `value` bytes of its frame
  kCorrupt,       ///< the frame's byte `value` from the end has one bit flipped; 0: the checksum
  kNoise,         ///< `value` bytes that are not a frame precede it: the byte `value2`, or any if 0
  kSplit,     ///< is sent in two writes, the first of `value` bytes, the second `value2` ms later
  kTogether,  ///< is sent in one write with the frames that follow at the same moment
  kLongForm,  ///< its frame uses the long form, however short
  kNotificationsBefore,  ///< `value` unsolicited notifications precede it
  // The text of one reply
  kTextLength,        ///< is `value` bytes long
  kTextBroken,        ///< is not UTF-8
  kTextUnterminated,  ///< has no final 00
  // One answered request for records or counts
  kShortListing,          ///< lacks its last `value` records
  kLongListing,           ///< has `value` records too many
  kShuffledListing,       ///< has its records in another order
  kNotificationsBetween,  ///< has `value` notifications between each two records
  kDrift,                 ///< the count is wrong by `value` the first time, twice that the next
  // The link
  kSilence,              ///< from this reply on the iPod sends nothing
  kSleep,                ///< as kSilence, but first it reports that it goes to sleep
  kUnplugAfterSent,      ///< the cable is pulled when the iPod has sent `value` bytes
  kUnplugAfterReceived,  ///< the cable is pulled when the iPod has received `value` bytes
};
constexpr size_t kFaultKinds = static_cast<size_t>(FaultKind::kUnplugAfterReceived) + 1;

/// The command that a message answers. The cause of an unsolicited message is the message itself.
struct Cause {
  uint8_t lingo = 0;
  uint16_t command = 0;
};

/// The replies to which a fault applies. Replies are counted from 1, from the time when the fault
/// was added. Each record of a listing is a separate reply. For faults of a whole listing or count,
/// requests are counted instead.
struct FaultTarget {
  std::optional<uint8_t> lingo;     ///< of the request; none: any
  std::optional<uint16_t> command;  ///< of the request; none: any
  uint32_t first = 1;
  uint32_t last = std::numeric_limits<uint32_t>::max();

  static FaultTarget everything() { return {}; }
  static FaultTarget repliesTo(uint8_t lingo, uint16_t command) {
    return {lingo, command, 1, std::numeric_limits<uint32_t>::max()};
  }
  FaultTarget nth(uint32_t number) const { return {lingo, command, number, number}; }
  FaultTarget from(uint32_t number) const {
    return {lingo, command, number, std::numeric_limits<uint32_t>::max()};
  }
  bool matches(Cause cause) const {
    return (!lingo || *lingo == cause.lingo) && (!command || *command == cause.command);
  }
};

struct Fault {
  FaultKind kind = FaultKind::kLost;
  FaultTarget target;
  uint32_t value = 0;
  uint32_t value2 = 0;
};

/// Random faults: each reply has one of these kinds of faults with this chance. Noise then repeats
/// one byte.
struct RandomFaults {
  uint32_t perThousand = 0;
  std::vector<FaultKind> kinds;  ///< empty: every kind for one reply that a host can survive
};

}  // namespace simulator
