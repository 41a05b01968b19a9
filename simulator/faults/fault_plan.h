#pragma once

#include <array>
#include <functional>
#include <map>
#include <utility>
#include <vector>

#include "faults/fault.h"
#include "random.h"
#include "simulated_time.h"
#include "wire/frame.h"
#include "wire/message.h"

namespace simulator {

/// A message on its way to the accessory.
struct Outgoing {
  Message message;
  Cause cause;
  std::optional<size_t> textOffset;  ///< the offset of the text in the data, if there is one
  Time delay{0};
  bool together = false;  ///< in one write with the next message
};

/// The effects of the faults on one outgoing message, in addition to the changes of its content.
struct Fate {
  bool lost = false;
  bool together = false;
  bool silenceAfter = false;
  bool sleepNotice = false;
  unsigned copies = 1;
  LengthForm form = LengthForm::kAsNeeded;
  Time delay{0};
  Bytes noise;
  uint32_t notificationsBefore = 0;
  std::optional<size_t> cutAt;
  std::optional<size_t> corruptFromEnd;
  std::optional<size_t> splitAt;
  Time splitGap{0};
  std::string note;  ///< names of the faults, for the trace; empty: none
};

/// The effects of the faults on one listing.
struct ListingShape {
  uint32_t missing = 0;
  uint32_t extra = 0;
  bool shuffled = false;
  uint32_t notificationsBetween = 0;
};

/// The faults of an iPod, which of them have happened, and how often.
class FaultPlan {
 public:
  /// Called when a fault happens, with a fault that repeats only this one: its target is the one
  /// reply or request, counted from the start of the plan. The function must not change the plan.
  using StrikeHook = std::function<void(const Fault&)>;

  explicit FaultPlan(Random& chance) : random(chance) {}

  void setStrikeHook(StrikeHook hook) { onStrike = std::move(hook); }
  void add(const Fault& fault);
  void strikeAtRandom(RandomFaults faults) { byChance = std::move(faults); }
  /// Returns the faults that were added, in their order.
  std::vector<Fault> added() const;
  const RandomFaults& atRandom() const { return byChance; }
  /// Removes all faults. The counters keep their values.
  void clear();

  /// Decides on a message before it is sent, and changes it as the faults require.
  Fate decide(Outgoing& outgoing, FrameKind kind);
  /// Decides on a listing before it is answered.
  ListingShape shapeListing(Cause request);
  /// Returns the error of a count that is about to be answered.
  uint32_t drift(Cause request);
  /// Returns how many of the `now` bytes still pass before the cable is pulled; no value when it is
  /// not pulled within them. `passed` bytes have passed since the cable was plugged in.
  std::optional<size_t> bytesBeforeUnplug(FaultKind direction, size_t passed, size_t now);

  /// Returns how often this kind of fault has happened.
  size_t injected(FaultKind kind) const { return struck[static_cast<size_t>(kind)]; }
  size_t injectedInAll() const;

 private:
  struct Rule {
    Fault fault;
    uint32_t seen = 0;     ///< replies or requests that it was compared with
    uint32_t applied = 0;  ///< how many of them it changed
  };

  /// The number of replies or requests for each lingo and command.
  using Counts = std::map<std::pair<uint8_t, uint16_t>, uint32_t>;

  static FaultTarget countUp(Counts& counts, Cause cause);
  bool strikes(Rule& rule, Cause cause);
  void apply(const Fault& fault, Outgoing& outgoing, Fate& fate, FrameKind kind);
  void applyToMessage(const Fault& fault, Outgoing& outgoing);
  void applyToFrame(const Fault& fault, Fate& fate, FrameKind kind);
  void applyByChance(FaultTarget reply, Outgoing& outgoing, Fate& fate, FrameKind kind);
  Fault randomFault(FrameKind kind);
  uint8_t noiseByte(FrameKind kind);
  Bytes noise(const Fault& fault, FrameKind kind);
  void record(const Fault& struckAlone);

  Random& random;
  std::vector<Rule> rules;
  RandomFaults byChance;
  std::array<size_t, kFaultKinds> struck{};
  Counts replies;
  Counts listings;
  Counts counted;  ///< requests for a count
  StrikeHook onStrike;
};

}  // namespace simulator
