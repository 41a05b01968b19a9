#include "iaptrace/frame_cutter.h"

#include <algorithm>
#include <utility>

#include "wire/frame.h"

namespace iaptrace {
namespace {

using simulator::kLongFormMarker;
using simulator::kStartByte;
using simulator::kSyncByte;

constexpr size_t kShortHeader = 2;  // start byte, length
constexpr size_t kLongHeader = 4;   // start byte, marker, two length bytes

bool isKnownLingo(uint8_t lingo) {
  return lingo == 0x00 || lingo == 0x02 || lingo == 0x03 || lingo == 0x04 || lingo == 0x0A;
}

}  // namespace

void FrameCutter::add(const trace::Record& data) {
  bytes.insert(bytes.end(), data.bytes.begin(), data.bytes.end());
  origins.push_back({bytes.size(), data.line, data.at});
}

void FrameCutter::cut(Conversation& items) {
  for (size_t position = 0; position < bytes.size();) {
    const size_t start = nextStart(position);
    const bool hasSync = start < bytes.size() && start > position && bytes[start - 1] == kSyncByte;
    addNoise(position, start, hasSync, items);
    position = start < bytes.size() ? cutFrame(start, hasSync, items) : start;
  }
  bytes.clear();
  origins.clear();
}

size_t FrameCutter::nextStart(size_t from) const {
  const auto found =
      std::find(bytes.begin() + static_cast<ptrdiff_t>(from), bytes.end(), kStartByte);
  return static_cast<size_t>(found - bytes.begin());
}

FrameCutter::Frame FrameCutter::frameAt(size_t start) const {
  const ByteView left = ByteView(bytes).from(start);
  Frame frame;
  if (left.size() < kShortHeader) return frame;
  size_t length = left[1];
  frame.payloadFrom = kShortHeader;
  frame.isLong = length == kLongFormMarker;
  if (frame.isLong) {
    if (left.size() < kLongHeader) return frame;
    length = static_cast<size_t>(left[2] << 8 | left[3]);
    frame.payloadFrom = kLongHeader;
  }
  frame.size = frame.payloadFrom + length + 1;
  frame.isWhole = left.size() >= frame.size;
  if (!frame.isWhole) return frame;
  const ByteView checked = left.prefix(frame.size - 1).from(1);
  frame.isGood = simulator::frameChecksum(checked) == left[frame.size - 1];
  return frame;
}

/// Returns where a good short frame with a known lingo begins; `end` if there is none before it.
size_t FrameCutter::goodStartWithin(size_t from, size_t end) const {
  for (size_t start = nextStart(from); start < end; start = nextStart(start + 1)) {
    // Summing long frames that overlap would take for ever.
    if (start + 1 < bytes.size() && bytes[start + 1] == kLongFormMarker) continue;
    const Frame frame = frameAt(start);
    const bool isMessage = frame.isGood && !frame.isLong && frame.size > kShortHeader + 2;
    if (isMessage && isKnownLingo(bytes[start + kShortHeader])) return start;
  }
  return end;
}

const FrameCutter::Origin& FrameCutter::originOf(size_t position) const {
  const auto isAfter = [](size_t at, const Origin& origin) { return at < origin.end; };
  return *std::upper_bound(origins.begin(), origins.end(), position, isAfter);
}

Item FrameCutter::itemOf(Item::Kind kind, size_t from, size_t end) const {
  Item item;
  item.kind = kind;
  item.sender = sender;
  item.begun = originOf(from).at;
  item.at = originOf(end - 1).at;
  item.firstLine = originOf(from).line;
  item.line = originOf(end - 1).line;
  item.bytes.assign(bytes.begin() + static_cast<ptrdiff_t>(from),
                    bytes.begin() + static_cast<ptrdiff_t>(end));
  return item;
}

void FrameCutter::addNoise(size_t from, size_t start, bool hasSync, Conversation& items) const {
  const size_t end = hasSync ? start - 1 : start;
  if (end > from) items.push_back(itemOf(Item::Kind::kNoise, from, end));
}

/// Returns where the next frame can begin.
size_t FrameCutter::cutFrame(size_t start, bool hasSync, Conversation& items) const {
  const Frame frame = frameAt(start);
  size_t end = start + frame.size;
  if (frame.isGood) {
    items.push_back(messageOf(start, frame));
  } else {
    end = goodStartWithin(start + 1, frame.isWhole ? end : bytes.size());
    // The sync byte before a good frame belongs to that frame.
    if (end < bytes.size() && bytes[end] == kStartByte && bytes[end - 1] == kSyncByte &&
        end != start + frame.size) {
      --end;
    }
    const auto kind = frame.isWhole ? Item::Kind::kBadChecksum : Item::Kind::kUnfinished;
    items.push_back(itemOf(kind, start, end));
  }
  items.back().hasSync = hasSync;
  items.back().isLong = frame.isLong;
  return end;
}

Item FrameCutter::messageOf(size_t start, const Frame& frame) const {
  Item item = itemOf(Item::Kind::kMessage, start, start + frame.size);
  const ByteView payload = ByteView(item.bytes).prefix(frame.size - 1).from(frame.payloadFrom);
  auto message = simulator::parseMessage(payload);
  if (message) {
    item.message = std::move(*message);
  } else {
    item.kind = Item::Kind::kMalformed;
  }
  return item;
}

}  // namespace iaptrace
