#include "faults/fault_plan.h"

#include <algorithm>
#include <numeric>

#include "faults/fault_table.h"

namespace simulator {

namespace {

/// Bytes with every kind of UTF-8 error.
constexpr uint8_t kBrokenText[] = {0xC3, 0x28, 0xA0, 0xE2, 0x82, 'x', 0xF0, 0x9F, 0xFF};

Message acknowledgement(Cause cause, uint8_t status) {
  if (cause.lingo == static_cast<uint8_t>(Lingo::kExtendedInterface)) {
    return {
        cause.lingo,
        kExtendedAck,
        {status, static_cast<uint8_t>(cause.command >> 8), static_cast<uint8_t>(cause.command)}};
  }
  return {
      static_cast<uint8_t>(Lingo::kGeneral), kAck, {status, static_cast<uint8_t>(cause.command)}};
}

void replaceText(Outgoing& outgoing, const Bytes& text) {
  Bytes& data = outgoing.message.data;
  data.resize(*outgoing.textOffset);
  data.insert(data.end(), text.begin(), text.end());
  data.push_back(0);
}

bool isTextFault(FaultKind kind) {
  return kind == FaultKind::kTextLength || kind == FaultKind::kTextBroken ||
         kind == FaultKind::kTextUnterminated;
}

void spoilText(const Fault& fault, Outgoing& outgoing) {
  if (fault.kind == FaultKind::kTextUnterminated) {
    outgoing.message.data.pop_back();
  } else if (fault.kind == FaultKind::kTextLength) {
    const size_t most = kLongFormLimit / 2;
    replaceText(outgoing, Bytes(std::min<size_t>(fault.value, most), 'x'));
  } else {
    replaceText(outgoing, Bytes(std::begin(kBrokenText), std::end(kBrokenText)));
  }
}

Fault at(FaultTarget target, Fault fault) {
  fault.target = target;
  return fault;
}

}  // namespace

void FaultPlan::add(const Fault& fault) {
  Rule rule;
  rule.fault = fault;
  rules.push_back(rule);
}

std::vector<Fault> FaultPlan::added() const {
  std::vector<Fault> faults;
  faults.reserve(rules.size());
  for (const Rule& rule : rules)
    faults.push_back(rule.fault);
  return faults;
}

void FaultPlan::clear() {
  rules.clear();
  byChance = {};
}

Fate FaultPlan::decide(Outgoing& outgoing, FrameKind kind) {
  Fate fate;
  const Cause cause = outgoing.cause;
  const FaultTarget reply = countUp(replies, cause);
  for (Rule& rule : rules) {
    if (faultRow(rule.fault.kind).stage != FaultStage::kReply || !strikes(rule, cause)) continue;
    apply(at(reply, rule.fault), outgoing, fate, kind);
  }
  applyByChance(reply, outgoing, fate, kind);
  return fate;
}

ListingShape FaultPlan::shapeListing(Cause request) {
  ListingShape shape;
  const FaultTarget listing = countUp(listings, request);
  for (Rule& rule : rules) {
    const Fault& fault = rule.fault;
    if (faultRow(fault.kind).stage != FaultStage::kListing || !strikes(rule, request)) continue;
    record(at(listing, fault));
    if (fault.kind == FaultKind::kShortListing) shape.missing += fault.value;
    if (fault.kind == FaultKind::kLongListing) shape.extra += fault.value;
    if (fault.kind == FaultKind::kShuffledListing) shape.shuffled = true;
    if (fault.kind == FaultKind::kNotificationsBetween) shape.notificationsBetween += fault.value;
  }
  return shape;
}

uint32_t FaultPlan::drift(Cause request) {
  uint32_t sum = 0;
  const FaultTarget count = countUp(counted, request);
  for (Rule& rule : rules) {
    if (rule.fault.kind != FaultKind::kDrift || !strikes(rule, request)) continue;
    Fault now = at(count, rule.fault);
    now.value *= ++rule.applied;
    record(now);
    sum += now.value;
  }
  return sum;
}

std::optional<size_t> FaultPlan::bytesBeforeUnplug(FaultKind direction, size_t passed, size_t now) {
  for (Rule& rule : rules) {
    const Fault& fault = rule.fault;
    if (fault.kind != direction || rule.applied > 0 || fault.value > passed + now) continue;
    ++rule.applied;
    record(fault);
    return std::max<size_t>(fault.value, passed) - passed;
  }
  return std::nullopt;
}

size_t FaultPlan::injectedInAll() const {
  return std::accumulate(struck.begin(), struck.end(), size_t{0});
}

FaultTarget FaultPlan::countUp(Counts& counts, Cause cause) {
  const uint32_t number = ++counts[{cause.lingo, cause.command}];
  return FaultTarget::repliesTo(cause.lingo, cause.command).nth(number);
}

void FaultPlan::record(const Fault& struckAlone) {
  ++struck[static_cast<size_t>(struckAlone.kind)];
  if (onStrike) onStrike(struckAlone);
}

bool FaultPlan::strikes(Rule& rule, Cause cause) {
  const FaultTarget& target = rule.fault.target;
  if (!target.matches(cause)) return false;
  ++rule.seen;
  return rule.seen >= target.first && rule.seen <= target.last;
}

void FaultPlan::apply(const Fault& fault, Outgoing& outgoing, Fate& fate, FrameKind kind) {
  if (isTextFault(fault.kind) && !outgoing.textOffset) return;
  record(fault);
  if (!fate.note.empty()) fate.note += ", ";
  fate.note += faultRow(fault.kind).name;
  applyToMessage(fault, outgoing);
  applyToFrame(fault, fate, kind);
}

void FaultPlan::applyToMessage(const Fault& fault, Outgoing& outgoing) {
  if (isTextFault(fault.kind)) spoilText(fault, outgoing);
  if (fault.kind == FaultKind::kWrongCommand) {
    outgoing.message.command = static_cast<uint16_t>(fault.value);
  }
  if (fault.kind == FaultKind::kWrongLingo) {
    outgoing.message.lingo = static_cast<uint8_t>(fault.value);
  }
  if (fault.kind == FaultKind::kWrongStatus) {
    outgoing.message = acknowledgement(outgoing.cause, static_cast<uint8_t>(fault.value));
    outgoing.textOffset.reset();
  }
}

void FaultPlan::applyToFrame(const Fault& fault, Fate& fate, FrameKind kind) {
  switch (fault.kind) {
    case FaultKind::kLate:
      fate.delay += milliseconds(fault.value);
      break;
    case FaultKind::kLost:
      fate.lost = true;
      break;
    case FaultKind::kDoubled:
      fate.copies = 2;
      break;
    case FaultKind::kCut:
      fate.cutAt = fault.value;
      break;
    case FaultKind::kCorrupt:
      fate.corruptFromEnd = fault.value;
      break;
    case FaultKind::kNoise:
      fate.noise = noise(fault, kind);
      break;
    case FaultKind::kSplit:
      fate.splitAt = fault.value;
      fate.splitGap = milliseconds(fault.value2);
      break;
    case FaultKind::kTogether:
      fate.together = true;
      break;
    case FaultKind::kLongForm:
      fate.form = LengthForm::kLong;
      break;
    case FaultKind::kNotificationsBefore:
      fate.notificationsBefore += fault.value;
      break;
    case FaultKind::kSilence:
      fate.silenceAfter = true;
      break;
    case FaultKind::kSleep:
      fate.sleepNotice = true;
      break;
    default:
      break;
  }
}

void FaultPlan::applyByChance(FaultTarget reply, Outgoing& outgoing, Fate& fate, FrameKind kind) {
  if (byChance.perThousand == 0 || random.below(1000) >= byChance.perThousand) return;
  apply(at(reply, randomFault(kind)), outgoing, fate, kind);
}

Fault FaultPlan::randomFault(FrameKind kind) {
  std::vector<FaultKind> kinds = byChance.kinds;
  for (const FaultRow* row = faultRowsBegin(); byChance.kinds.empty() && row != faultRowsEnd();
       ++row) {
    if (row->survivable && row->stage == FaultStage::kReply) kinds.push_back(row->kind);
  }
  Fault fault;
  fault.kind = kinds[random.below(static_cast<uint32_t>(kinds.size()))];
  fault.value = 1 + random.below(8);
  // The noise repeats one byte, so that the text of the fault can name it.
  while (fault.kind == FaultKind::kNoise && fault.value2 == 0)
    fault.value2 = noiseByte(kind);
  return fault;
}

/// Returns a random byte with which no frame can begin on this kind of link.
uint8_t FaultPlan::noiseByte(FrameKind kind) {
  const uint8_t forbidden = kind == FrameKind::kUsb ? kStartByte : kSyncByte;
  uint8_t byte;
  do {
    byte = static_cast<uint8_t>(random.below(256));
  } while (byte == forbidden);
  return byte;
}

Bytes FaultPlan::noise(const Fault& fault, FrameKind kind) {
  Bytes bytes(std::min<size_t>(fault.value, kLongFormLimit), static_cast<uint8_t>(fault.value2));
  if (fault.value2 != 0) return bytes;
  for (uint8_t& byte : bytes)
    byte = noiseByte(kind);
  return bytes;
}

}  // namespace simulator
