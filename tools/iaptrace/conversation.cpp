#include "iaptrace/conversation.h"

#include <algorithm>
#include <utility>

#include "iaptrace/frame_cutter.h"

namespace iaptrace {
namespace {

Item eventOf(const trace::Record& record) {
  Item item;
  item.kind = Item::Kind::kEvent;
  item.begun = item.at = record.at;
  item.firstLine = item.line = record.line;
  item.event = std::make_shared<const trace::Record>(record);
  return item;
}

bool endsTheStream(const trace::Record& record) {
  return record.kind == trace::Record::Kind::kOpened || record.kind == trace::Record::Kind::kClosed;
}

}  // namespace

Conversation conversationOf(const trace::Trace& records, const std::string& device) {
  Conversation items;
  FrameCutter fromHost(Sender::kHost);
  FrameCutter fromIpod(Sender::kIpod);
  const auto cut = [&] {
    fromHost.cut(items);
    fromIpod.cut(items);
  };
  for (const trace::Record& record : records) {
    const bool isAudio = record.kind == trace::Record::Kind::kAudio;
    if (!isAudio && record.device != device) continue;
    if (endsTheStream(record)) cut();
    if (record.isData()) {
      (record.kind == trace::Record::Kind::kRead ? fromIpod : fromHost).add(record);
    } else {
      items.push_back(eventOf(record));
    }
  }
  cut();
  std::stable_sort(items.begin(), items.end(),
                   [](const Item& a, const Item& b) { return a.line < b.line; });
  return items;
}

}  // namespace iaptrace
