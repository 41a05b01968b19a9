// The iPod's music database: what is selected, how much there is, and what it is called.

#include "controller/ipod_controller_base.h"

namespace ipodctl {

using Message = ExtendedInterfaceMessage;

namespace {

/// False without memory.
bool appendRecord(const Message& reply, RecordList& records) {
  RecordEntry entry;
  return reply.decodeReturnCategorizedDatabaseRecord(entry.index, entry.name) &&
         records.append(std::move(entry));
}

}  // namespace

/// Unlike a selection's acknowledgement this one must come first, before any other message.
bool IpodControllerBase::ResetDbSelection() {
  uint8_t status = kStatusOk;
  uint16_t command = 0;
  return ask(&Message::buildResetDbSelection).read(&Message::decodeIpodAck, status, command) &&
         status == kStatusOk && command == Message::kResetDbSelection;
}

bool IpodControllerBase::SelectDbRecord(Category category, RecordIndex index) {
  return acknowledged(&Message::buildSelectDbRecord, category, index);
}

bool IpodControllerBase::SelectSortDbRecord(Category category, RecordIndex index,
                                            SortOrder sortOrder) {
  return acknowledged(&Message::buildSelectSortDbRecord, category, index, sortOrder);
}

bool IpodControllerBase::GetDbRecordCount(Category category, uint32_t& count) {
  return ask(&Message::buildGetNumberCategorizedDbRecords, category)
      .read(&Message::decodeReturnNumberCategorizedDbRecords, count);
}

bool IpodControllerBase::RetrieveDbRecords(Category category, RecordIndex start, uint32_t count,
                                           RecordList& records) {
  if (count == 0) return false;
  if (!tell(&Message::buildRetrieveCategorizedDatabaseRecords, category, start, count)) {
    return false;
  }
  bool lastIsRecord = false;
  bool allAppended = true;
  for (uint32_t pass = 0; pass < count; ++pass) {
    const std::unique_ptr<LingoMessage> message = nextReply(kExtendedInterfaceLingo);
    if (!message) return false;
    if (message->getCommand() != Message::kReturnCategorizedDatabaseRecord) continue;
    const auto& reply = static_cast<const Message&>(*message);
    lastIsRecord = reply.isRecord();
    if (lastIsRecord && !appendRecord(reply, records)) allAppended = false;
  }
  return lastIsRecord && allAppended;
}

}  // namespace ipodctl
