#include <algorithm>
#include <numeric>

#include "device/extended_interface_lingo.h"

namespace simulator {

namespace {

/// Returns the records of a listing, changed by the faults.
std::vector<uint32_t> shapedListing(uint32_t start, uint32_t count, const ListingShape& shape,
                                    Random& random) {
  const uint32_t shown = count > shape.missing ? count - shape.missing : 0;
  std::vector<uint32_t> indexes(shown + std::min(shape.extra, count + 1000));
  std::iota(indexes.begin(), indexes.end(), start);
  if (shape.shuffled && indexes.size() > 1) {
    random.shuffle(indexes);
    const bool isUnchanged = std::is_sorted(indexes.begin(), indexes.end());
    if (isUnchanged) std::swap(indexes.front(), indexes.back());
  }
  return indexes;
}

}  // namespace

void ExtendedInterfaceLingo::requestProtocolVersion(PayloadReader&) {
  const Version* const version =
      state.personality.versionOf(static_cast<uint8_t>(Lingo::kExtendedInterface));
  if (version == nullptr) return state.refuseUnknown();
  reply(kExtendedReturnProtocolVersion, {version->major, version->minor});
}

void ExtendedInterfaceLingo::requestName(PayloadReader&) {
  reply(kExtendedReturnIpodName, PayloadWriter().text(state.name()).take(), 0);
}

void ExtendedInterfaceLingo::resetSelection(PayloadReader&) {
  state.database.reset();
  state.acknowledge(Status::kOk);
}

void ExtendedInterfaceLingo::selectRecord(PayloadReader& data) {
  const uint8_t category = data.u8();
  state.acknowledge(select(category, data.u32(), SortOrder::kDefault));
}

void ExtendedInterfaceLingo::selectSortedRecord(PayloadReader& data) {
  const uint8_t category = data.u8();
  const uint32_t index = data.u32();
  state.acknowledge(select(category, index, sortOrderOf(data.u8())));
}

void ExtendedInterfaceLingo::countRecords(PayloadReader& data) {
  const std::optional<Category> category = categoryOf(data.u8());
  if (!category) return state.acknowledge(Status::kUnknownCategory);
  const uint32_t count = state.database.count(*category) + state.faults.drift(*state.request);
  reply(kReturnNumberCategorizedDbRecords, PayloadWriter().u32(count).take());
}

void ExtendedInterfaceLingo::retrieveRecords(PayloadReader& data) {
  const std::optional<Category> category = categoryOf(data.u8());
  if (!category) return state.acknowledge(Status::kUnknownCategory);
  const uint32_t start = data.u32();
  const uint32_t asked = data.u32();
  const uint32_t size = state.database.size(*category);
  if (start >= size) return state.acknowledge(Status::kBadParameter);
  const uint32_t count = asked == kAllRecords ? size - start : asked;
  if (count == 0 || count > size - start) return state.acknowledge(Status::kBadParameter);
  sendListing(*category, start, count);
}

Status ExtendedInterfaceLingo::select(uint8_t categoryNumber, uint32_t index, SortOrder order) {
  const std::optional<Category> category = categoryOf(categoryNumber);
  if (!category) return Status::kUnknownCategory;
  const bool undoesPlaylist = *category == Category::kPlaylist && index == kNoIndex;
  if (undoesPlaylist && !state.personality.deselectsPlaylists) return Status::kBadParameter;
  const bool isCounted = state.database.wasCounted(*category);
  if (index != kNoIndex && state.personality.countBeforeSelect && !isCounted)
    return Status::kFailed;
  if (*category != Category::kTrack) return state.database.select(*category, index, order);
  const std::vector<uint32_t> list = state.database.tracks();
  const Status status = state.database.select(*category, index, order);
  if (status == Status::kOk) playTrackOf(list, index);
  return status;
}

void ExtendedInterfaceLingo::playTrackOf(const std::vector<uint32_t>& list, uint32_t index) {
  if (state.personality.trackSelection == TrackSelection::kAlone) {
    state.player.play({list[index]}, 0, state.now);
  } else {
    state.player.play(list, index, state.now);
  }
}

void ExtendedInterfaceLingo::sendListing(Category category, uint32_t start, uint32_t count) {
  const ListingShape shape = state.faults.shapeListing(*state.request);
  const std::vector<uint32_t> indexes = shapedListing(start, count, shape, state.faultChance);
  for (size_t i = 0; i < indexes.size(); ++i) {
    for (uint32_t n = 0; i > 0 && n < shape.notificationsBetween; ++n)
      sendStrayNotification();
    sendRecord(category, indexes[i]);
  }
}

/// Sends a record. A record beyond the end, which only a fault requests, has the name of an
/// existing one.
void ExtendedInterfaceLingo::sendRecord(Category category, uint32_t index) {
  const uint32_t named = index % state.database.size(category);
  PayloadWriter writer;
  writer.u32(index).text(state.database.recordName(category, named));
  reply(kReturnCategorizedDatabaseRecord, writer.take(), sizeof(uint32_t));
}

}  // namespace simulator
