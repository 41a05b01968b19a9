#pragma once

#include <cstdint>
#include <limits>
#include <optional>
#include <vector>

namespace simulator {

/// What can go wrong between an iPod and its accessory. `value` and `value2` are the two numbers of
/// a Fault.
enum class FaultKind {
  // One reply
  kLate,          ///< comes `value` ms later; what is sent meanwhile overtakes it
  kLost,          ///< never comes
  kDoubled,       ///< comes twice
  kWrongCommand,  ///< bears the command id `value`
  kWrongLingo,    ///< bears the lingo id `value`
  kWrongStatus,   ///< is an acknowledgement of the request with the status `value`
  kCut,           ///< ends after `value` bytes of its frame
  kCorrupt,       ///< the frame's byte `value` from the end has one bit flipped; 0: the checksum
  kNoise,         ///< `value` bytes that are no frame come first: the byte `value2`, or any if 0
  kSplit,         ///< comes in two writes, the first of `value` bytes, the second `value2` ms later
  kTogether,      ///< comes in one write with the frames that follow at the same moment
  kLongForm,      ///< its frame uses the long form, however short
  kNotificationsBefore,  ///< `value` notifications that nobody asked for come first
  // The text of one reply
  kTextLength,        ///< is `value` bytes long
  kTextBroken,        ///< is no UTF-8
  kTextUnterminated,  ///< has no 00 behind it
  // One answered request for records or counts
  kShortListing,          ///< lacks its last `value` records
  kLongListing,           ///< goes on for `value` records more
  kShuffledListing,       ///< has its records in another order
  kNotificationsBetween,  ///< has `value` notifications between each two records
  kDrift,                 ///< the count is wrong by `value` the first time, twice that the next
  // The link
  kSilence,              ///< from this reply on the iPod says nothing at all
  kSleep,                ///< as kSilence, but first it says that it goes to sleep
  kUnplugAfterSent,      ///< the cable is pulled when the iPod has sent `value` bytes
  kUnplugAfterReceived,  ///< the cable is pulled when the iPod has received `value` bytes
};
constexpr size_t kFaultKinds = static_cast<size_t>(FaultKind::kUnplugAfterReceived) + 1;

/// The command that a message answers. A message that the iPod sends on its own stands for itself.
struct Cause {
  uint8_t lingo = 0;
  uint16_t command = 0;
};

/// Which replies a fault is for. Replies are counted from 1, from the moment when the fault was
/// added, and each record of a listing is a reply of its own; for faults of a whole listing or
/// count, requests are counted instead.
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

/// Faults that strike at random: each reply with this chance, with one of these kinds. Noise is one
/// byte then, several times.
struct RandomFaults {
  uint32_t perThousand = 0;
  std::vector<FaultKind> kinds;  ///< empty: every kind of one reply that a host can survive
};

}  // namespace simulator
