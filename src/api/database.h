#pragma once

#include <cstdint>

#include "base/text_string.h"

namespace ipodctl {

/// The exports' words for the iPod's database. A type is a BrowseType and goes to the iPod as the
/// category; an index of -1 chooses no record. Callers hold the library lock; only a count may be
/// asked without it.

/// The number of records of a type under the present selection, 0 when the iPod does not answer.
uint32_t countRecords(int32_t type);

/// The number of tracks under the present selection.
uint32_t countTracks();

void selectRecord(int32_t type, int32_t index);

/// Selects a record so that what is below it comes in the sort order of `sortType`.
void selectRecordSorted(int32_t type, int32_t index, int32_t sortType);

/// The name of one record; false when none came.
bool retrieveName(int32_t type, int32_t index, ByteString& name);

}  // namespace ipodctl
