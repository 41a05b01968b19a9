#pragma once

#include <cstdint>

#include "base/text_string.h"
#include "lingo/database_codes.h"

namespace ipodctl {

/// The exports' requests to the iPod's database. Callers hold the library lock; only countRecords
/// may be called without it.

/// The number of records of a category under the present selection, 0 when the iPod does not
/// answer.
uint32_t countRecords(Category category);

/// Returns the number of tracks under the present selection.
uint32_t countTracks();

/// kNoRecord undoes the selection.
void selectRecord(Category category, RecordIndex index);

/// Selects a record; the list below it, of the category `below`, is sorted as its records are.
void selectRecordSorted(Category category, RecordIndex index, Category below);

/// Reads the name of one record. Returns false when no record is received.
bool retrieveName(Category category, RecordIndex index, ByteString& name);

}  // namespace ipodctl
