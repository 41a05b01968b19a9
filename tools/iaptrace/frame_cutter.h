// Cuts the bytes of one direction into frames.
#pragma once

#include "iaptrace/conversation.h"

namespace iaptrace {

/// Collects the bytes that one end sent between an open and a close of the device.
class FrameCutter {
 public:
  explicit FrameCutter(Sender end) : sender(end) {}

  void add(const trace::Record& data);

  /// Appends all items of the bytes collected, and starts again without bytes.
  void cut(Conversation& items);

 private:
  /// Where bytes came from: all up to `end` and not of the part before.
  struct Origin {
    size_t end;
    size_t line;
    trace::Time at;
  };

  struct Frame {
    size_t size = 0;         ///< of the whole frame
    size_t payloadFrom = 0;  ///< from the start byte
    bool isWhole = false;
    bool isGood = false;
    bool isLong = false;
  };

  Frame frameAt(size_t start) const;
  size_t nextStart(size_t from) const;
  size_t goodStartWithin(size_t from, size_t end) const;
  const Origin& originOf(size_t position) const;
  Item itemOf(Item::Kind kind, size_t from, size_t end) const;
  void addNoise(size_t from, size_t start, bool hasSync, Conversation& items) const;
  size_t cutFrame(size_t start, bool hasSync, Conversation& items) const;
  Item messageOf(size_t start, const Frame& frame) const;

  Sender sender;
  Bytes bytes;
  std::vector<Origin> origins;
};

}  // namespace iaptrace
