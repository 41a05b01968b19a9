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

/// Unlike a selection's acknowledgement this one must be the first message received.
bool IpodControllerBase::ResetDbSelection() {
  return sendAndAwaitReply(&Message::buildResetDbSelection)
      .acknowledges(Message::kResetDbSelection);
}

bool IpodControllerBase::SelectDbRecord(Category category, RecordIndex index) {
  return sendAndAwaitAcknowledgement(&Message::buildSelectDbRecord, category, index);
}

bool IpodControllerBase::SelectSortDbRecord(Category category, RecordIndex index,
                                            SortOrder sortOrder) {
  return sendAndAwaitAcknowledgement(&Message::buildSelectSortDbRecord, category, index, sortOrder);
}

bool IpodControllerBase::GetDbRecordCount(Category category, uint32_t& count) {
  return sendAndAwaitReply(&Message::buildGetNumberCategorizedDbRecords, category)
      .read(&Message::decodeReturnNumberCategorizedDbRecords, count);
}

bool IpodControllerBase::RetrieveDbRecords(Category category, RecordIndex start, uint32_t count,
                                           RecordList& records) {
  if (count == 0) return false;
  if (!sendOnly(&Message::buildRetrieveCategorizedDatabaseRecords, category, start, count)) {
    return false;
  }
  bool lastIsRecord = false;
  bool allAppended = true;
  for (uint32_t pass = 0; pass < count; ++pass) {
    const std::unique_ptr<LingoMessage> message = nextMessage();
    const Message* reply = message ? messageAs<Message>(*message) : nullptr;
    if (reply == nullptr) return false;
    if (reply->getCommand() != Message::kReturnCategorizedDatabaseRecord) continue;
    lastIsRecord = reply->isRecord();
    if (lastIsRecord && !appendRecord(*reply, records)) allAppended = false;
  }
  return lastIsRecord && allAppended;
}

}  // namespace ipodctl
