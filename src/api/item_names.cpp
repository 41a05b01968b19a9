// The names of the browse tree's entries.

#include <algorithm>

#include "api/browse_tree.h"
#include "api/database.h"
#include "api/ipodctl.h"
#include "api/library_state.h"
#include "api/text_output.h"

namespace ipodctl {
namespace {

/// How much of a tab's first and last name its label shows.
constexpr uint32_t kLabelChars = 4;
constexpr char kLabelJoint[] = " - ";
constexpr uint32_t kLabelJointLength = sizeof(kLabelJoint) - 1;

/// Appends the beginning of a record's name to a label; nothing when no record came.
uint8_t* addName(uint8_t* end, Category type, RecordIndex index) {
  ByteString name;
  retrieveName(type, index, name);
  const uint32_t count = std::min(name.size(), kLabelChars);
  for (uint32_t i = 0; i < count; ++i)
    *end++ = name[i];
  return end;
}

void writeTabLabel(const BrowseTree& tree, int32_t level, const TextBuffers& buffers) {
  const Category type = tree.ipodLevelType[level];
  uint8_t label[kLabelChars + kLabelJointLength + kLabelChars];
  uint8_t* end = addName(label, type, tree.ipodLevelTab[level] * ipodTabSize);
  end = std::copy_n(kLabelJoint, kLabelJointLength, end);
  end = addName(end, type, tree.ipodLevelEnd[level] - 1);
  writeText(label, static_cast<uint32_t>(end - label), buffers);
}

/// The name of the level's current item, or the mark of its play-all entry.
void writeItemName(const BrowseTree& tree, int32_t level, const TextBuffers& buffers) {
  if (tree.ipodPlayAll[level] == 1 && tree.ipodLevelIndex[level] == kPlayAllEntry &&
      tree.ipodLevelCount[level] > 0) {
    writePlayAllMark(buffers);
    return;
  }
  ByteString name;
  if (tree.onItem(level) &&
      retrieveName(tree.ipodLevelType[level], tree.ipodLevelIndex[level], name)) {
    writeText(name, buffers);
  }
}

void writeCurrentName(const BrowseTree& tree, const TextBuffers& buffers) {
  const int32_t level = tree.ipodLevel;
  if (!tree.showsTabs(level)) {
    writeItemName(tree, level, buffers);
  } else if (tree.ipodLevelTab[level] == kPlayAllEntry) {
    writePlayAllMark(buffers);
  } else {
    writeTabLabel(tree, level, buffers);
  }
}

/// The parent's own list must not be narrowed by a selection while its name is read; the selection
/// that the playing list came from is made again afterwards.
void writeParentName(const BrowseTree& tree, int32_t parent, const TextBuffers& buffers) {
  constexpr int32_t kSortedLevel = 2;
  selectRecord(tree.ipodLevelType[parent], kNoRecord);
  countRecords(tree.ipodLevelType[parent]);
  writeItemName(tree, parent, buffers);
  if (parent == kSortedLevel) {
    selectRecordSorted(tree.ipodLevelType[parent], tree.ipodLevelIndex[parent],
                       tree.ipodLevelType[parent]);
  } else {
    selectRecord(tree.ipodLevelType[parent], tree.ipodLevelIndex[parent]);
  }
}

}  // namespace
}  // namespace ipodctl

using namespace ipodctl;

int IPODCTL_CALL IpodGetItemName(int, unsigned short* first, unsigned short* second, int maxChars) {
  const LibraryLockHold lock;
  if (lock) writeCurrentName(browseTree, {first, second, maxChars});
  return 0;
}

int IPODCTL_CALL IpodGetParentUpDownName(int, unsigned short* first, unsigned short* second,
                                         int maxChars) {
  const LibraryLockHold lock;
  const int32_t upDownLevel = upDownTree.ipodLevel;
  if (lock && upDownLevel > 0) {
    writeParentName(upDownTree, upDownLevel - 1, {first, second, maxChars});
  }
  return 0;
}
