#include "api/database_requests.h"

#include <utility>

#include "api/library_state.h"
#include "api/list_rules.h"

namespace ipodctl {

uint32_t countRecords(Category category) {
  uint32_t count = 0;
  ipodController.GetDbRecordCount(category, count);
  return count;
}

uint32_t countTracks() { return countRecords(Category::kTracks); }

void selectRecord(Category category, RecordIndex index) {
  ipodController.SelectDbRecord(category, index);
}

void selectRecordSorted(Category category, RecordIndex index, Category below) {
  ipodController.SelectSortDbRecord(category, index, sortOrderOf(below));
}

bool retrieveName(Category category, RecordIndex index, ByteString& name) {
  RecordList records;
  ipodController.RetrieveDbRecords(category, index, 1, records);
  if (records.empty()) return false;
  name = std::move(records[0].name);
  return true;
}

}  // namespace ipodctl
