#include "api/database.h"

#include <utility>

#include "api/browse_tree.h"
#include "api/library_state.h"

namespace ipodctl {

uint32_t countRecords(int32_t type) {
  uint32_t count = 0;
  ipodController.GetDbRecordCount(static_cast<uint8_t>(type), count);
  return count;
}

uint32_t countTracks() { return countRecords(kTracks); }

void selectRecord(int32_t type, int32_t index) {
  ipodController.SelectDbRecord(static_cast<uint8_t>(type), static_cast<uint32_t>(index));
}

void selectRecordSorted(int32_t type, int32_t index, int32_t sortType) {
  ipodController.SelectSortDbRecord(static_cast<uint8_t>(type), static_cast<uint32_t>(index),
                                    sortOrderOf(sortType));
}

bool retrieveName(int32_t type, int32_t index, ByteString& name) {
  RecordList records;
  ipodController.RetrieveDbRecords(static_cast<uint8_t>(type), static_cast<uint32_t>(index), 1,
                                   records);
  if (records.empty()) return false;
  name = std::move(records[0].name);
  return true;
}

}  // namespace ipodctl
