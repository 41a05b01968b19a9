#pragma once

#include <cstdint>
#include <memory>

#include "base/growable_array.h"
#include "base/semaphore.h"
#include "base/shared_value.h"
#include "lingo/lingo_message.h"

namespace ipodctl {

/// Receives a message on the reader thread and owns it from then on.
using MessageHandler = void (*)(void* object, std::unique_ptr<LingoMessage> message);

/// A registration: the messages of one lingo and command go to this handler of this object.
struct HandlerRecord {
  uint8_t lingo = 0;
  uint16_t command = 0;
  MessageHandler handler = nullptr;
  void* object = nullptr;
};

bool operator==(const HandlerRecord& left, const HandlerRecord& right);

/// The registered handlers in the order of their registration. Any thread, a handler included, may
/// register and remove handlers while the reader thread dispatches messages. If a registration is
/// removed while a message is on its way to the handler, the message still reaches it. The object
/// must therefore outlive the reader thread, or the reader must be stopped first.
class HandlerTable {
 public:
  HandlerTable();
  HandlerTable(const HandlerTable&) = delete;
  HandlerTable& operator=(const HandlerTable&) = delete;

  /// Creates the semaphore if it is missing. Returns false when the system has none left.
  bool prepare();

  Semaphore& lock() { return listGuard; }

  /// Registers a handler. Returns false without memory.
  bool add(const HandlerRecord& record);

  /// Removes the first equal registration. Returns false when there is none.
  bool remove(const HandlerRecord& record);

  /// Removes the object's registrations, but of two adjacent ones only the first.
  void removeAllOf(const void* object);

  /// Reader thread only. Calls all handlers that are registered for the message's lingo and
  /// command, each with its own copy, and returns true. Without a handler it leaves the message and
  /// returns false.
  bool dispatch(std::unique_ptr<LingoMessage>& message) {
    return (handledLingoes & bitOf(message->getLingo())) != 0 && callHandlers(message);
  }

 private:
  bool callHandlers(std::unique_ptr<LingoMessage>& message);
  void startSearch();
  static uint32_t bitOf(uint8_t lingo) { return 1u << (lingo % 32); }
  bool nextFor(uint8_t lingo, uint16_t command, HandlerRecord& found, bool& last);
  uint32_t findFrom(uint32_t start, uint8_t lingo, uint16_t command) const
      IPODCTL_REQUIRES(listGuard);
  void removeAt(uint32_t index) IPODCTL_REQUIRES(listGuard);
  void noteLingoes() IPODCTL_REQUIRES(listGuard);

  /// A bit for each lingo that has a handler. Replies are of another lingo than the messages
  /// with handlers, and so need no lock: two kernel calls fewer of a dozen a request.
  SharedValue<uint32_t> handledLingoes{0};

  Semaphore listGuard;
  GrowableArray<HandlerRecord> handlerList IPODCTL_GUARDED_BY(listGuard);
  uint32_t cursor IPODCTL_GUARDED_BY(listGuard) = 0;  ///< where dispatch continues
};

}  // namespace ipodctl
