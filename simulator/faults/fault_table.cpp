#include "faults/fault_table.h"

#include <algorithm>
#include <iterator>

namespace simulator {

namespace {

constexpr FaultRow kRows[] = {
    {FaultKind::kLate, FaultStage::kReply, "late", "MS", "is sent MS milliseconds later", true},
    {FaultKind::kLost, FaultStage::kReply, "lost", "", "is not sent", true},
    {FaultKind::kDoubled, FaultStage::kReply, "doubled", "", "is sent twice", true},
    {FaultKind::kWrongCommand, FaultStage::kReply, "wrong-command", "ID", "has this command id",
     true},
    {FaultKind::kWrongLingo, FaultStage::kReply, "wrong-lingo", "ID", "has this lingo id", true},
    {FaultKind::kWrongStatus, FaultStage::kReply, "wrong-status", "STATUS",
     "is an acknowledgement with this status", true},
    {FaultKind::kCut, FaultStage::kReply, "cut", "N", "ends after N bytes of its frame", false},
    {FaultKind::kCorrupt, FaultStage::kReply, "corrupt", "[N]",
     "has a bit flipped, N bytes before its checksum", false},
    {FaultKind::kNoise, FaultStage::kReply, "noise", "N[/BYTE]",
     "follows N bytes of noise, each of them BYTE or any", true},
    {FaultKind::kSplit, FaultStage::kReply, "split", "N[/MS]",
     "is sent in two writes, cut at byte N, MS apart", true},
    {FaultKind::kTogether, FaultStage::kReply, "together", "",
     "is sent in one write with the frames after it", true},
    {FaultKind::kLongForm, FaultStage::kReply, "long-form", "", "has a length field of 16 bits",
     false},
    {FaultKind::kNotificationsBefore, FaultStage::kReply, "notifications-before", "N",
     "follows N notifications", true},
    {FaultKind::kTextLength, FaultStage::kReply, "text-length", "N", "has a text of N bytes", true},
    {FaultKind::kTextBroken, FaultStage::kReply, "text-broken", "", "has a text that is not UTF-8",
     true},
    {FaultKind::kTextUnterminated, FaultStage::kReply, "text-unterminated", "",
     "has a text without its final 00", true},
    {FaultKind::kShortListing, FaultStage::kListing, "short-listing", "N",
     "the listing lacks its last N records", true},
    {FaultKind::kLongListing, FaultStage::kListing, "long-listing", "N",
     "the listing has N records too many", true},
    {FaultKind::kShuffledListing, FaultStage::kListing, "shuffled-listing", "",
     "the listing's records are in another order", true},
    {FaultKind::kNotificationsBetween, FaultStage::kListing, "notifications-between", "N",
     "N notifications are sent between each two records", true},
    {FaultKind::kDrift, FaultStage::kCount, "drift", "N",
     "the count is wrong by N, then by twice N, ...", true},
    {FaultKind::kSilence, FaultStage::kReply, "silence", "",
     "from this reply on the iPod sends nothing", false},
    {FaultKind::kSleep, FaultStage::kReply, "sleep", "",
     "the iPod reports sleep instead, then sends nothing", false},
    {FaultKind::kUnplugAfterSent, FaultStage::kCable, "unplug-sent", "N",
     "the cable is pulled when N bytes were sent", false},
    {FaultKind::kUnplugAfterReceived, FaultStage::kCable, "unplug-received", "N",
     "the cable is pulled when N bytes were received", false},
};
static_assert(std::size(kRows) == kFaultKinds, "a row for each kind");

}  // namespace

const FaultRow& faultRow(FaultKind kind) { return kRows[static_cast<size_t>(kind)]; }

const FaultRow* findFaultRow(const std::string& name) {
  const auto row = std::find_if(std::begin(kRows), std::end(kRows),
                                [&](const FaultRow& each) { return name == each.name; });
  return row == std::end(kRows) ? nullptr : row;
}

const FaultRow* faultRowsBegin() { return std::begin(kRows); }
const FaultRow* faultRowsEnd() { return std::end(kRows); }

}  // namespace simulator
