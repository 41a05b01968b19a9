// The names of the browse tree's entries.

#include <algorithm>

#include "api/browse_tree.h"
#include "api/database_requests.h"
#include "api/ipodctl.h"
#include "api/library_state.h"
#include "api/text_output.h"

namespace ipodctl {
namespace {

/// How many characters of a tab's first and last name its label shows.
constexpr uint32_t kLabelChars = 4;
constexpr char kLabelJoint[] = " - ";
constexpr uint32_t kLabelJointLength = sizeof(kLabelJoint) - 1;

/// Appends the beginning of a record's name to a label; nothing when no record is received.
uint8_t* addName(uint8_t* end, Category type, RecordIndex index) {
  ByteString name;
  retrieveName(type, index, name);
  const uint32_t count = std::min(name.size(), kLabelChars);
  for (uint32_t i = 0; i < count; ++i)
    *end++ = name[i];
  return end;
}

void writeTabLabel(const BrowseLevel& list, const TextBuffers& buffers) {
  uint8_t label[kLabelChars + kLabelJointLength + kLabelChars];
  uint8_t* end = addName(label, list.type, list.tab * ipodTabSize);
  end = std::copy_n(kLabelJoint, kLabelJointLength, end);
  end = addName(end, list.type, list.end - 1);
  writeText(label, static_cast<uint32_t>(end - label), buffers);
}

/// Writes the name of the list's current item, or the mark of its play-all entry.
void writeItemName(const BrowseLevel& list, const TextBuffers& buffers) {
  if (list.onPlayAllEntry() && !list.isEmpty()) {
    writePlayAllMark(buffers);
    return;
  }
  ByteString name;
  if (list.onItem() && retrieveName(list.type, list.index, name)) writeText(name, buffers);
}

void writeCurrentName(const BrowseLevel& list, const TextBuffers& buffers) {
  if (!list.showsTabs()) {
    writeItemName(list, buffers);
  } else if (list.onPlayAllTab()) {
    writePlayAllMark(buffers);
  } else {
    writeTabLabel(list, buffers);
  }
}

/// A selection must not narrow the parent's own list while its name is read. Afterwards the
/// selection that the playing list was made from is made again.
void writeParentName(const BrowseTree& tree, int32_t parent, const TextBuffers& buffers) {
  constexpr int32_t kSortedLevel = 2;
  const BrowseLevel& list = tree.levels[parent];
  selectRecord(list.type, kNoRecord);
  countRecords(list.type);
  writeItemName(list, buffers);
  if (parent == kSortedLevel) {
    selectRecordSorted(list.type, list.index, list.type);
  } else {
    selectRecord(list.type, list.index);
  }
}

}  // namespace
}  // namespace ipodctl

using namespace ipodctl;

int IPODCTL_CALL IpodGetItemName(int, unsigned short* first, unsigned short* second, int maxChars) {
  const LibraryLockHold lock;
  if (lock) writeCurrentName(browseTree.current(), {first, second, maxChars});
  return 0;
}

int IPODCTL_CALL IpodGetParentUpDownName(int, unsigned short* first, unsigned short* second,
                                         int maxChars) {
  const LibraryLockHold lock;
  const int32_t upDownLevel = upDownTree.level;
  if (lock && upDownLevel > 0) {
    writeParentName(upDownTree, upDownLevel - 1, {first, second, maxChars});
  }
  return 0;
}
