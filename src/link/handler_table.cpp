#include "link/handler_table.h"

#include <utility>

#include "lingo/received_message.h"

namespace ipodctl {

bool operator==(const HandlerRecord& left, const HandlerRecord& right) {
  return left.lingo == right.lingo && left.command == right.command &&
         left.handler == right.handler && left.object == right.object;
}

HandlerTable::HandlerTable() { prepare(); }

bool HandlerTable::prepare() { return listGuard.ensure(); }

bool HandlerTable::add(const HandlerRecord& record) {
  const SemaphoreHold hold(listGuard);
  if (!handlerList.append(record)) return false;
  noteLingoes();
  return true;
}

bool HandlerTable::remove(const HandlerRecord& record) {
  const SemaphoreHold hold(listGuard);
  for (uint32_t i = 0; i < handlerList.size(); ++i) {
    if (handlerList[i] == record) {
      removeAt(i);
      return true;
    }
  }
  return false;
}

void HandlerTable::removeAllOf(const void* object) {
  const SemaphoreHold hold(listGuard);
  // The index also advances after a removal, and so skips the record that has moved up.
  for (uint32_t i = 0; i < handlerList.size(); ++i) {
    if (handlerList[i].object == object) removeAt(i);
  }
}

bool HandlerTable::callHandlers(std::unique_ptr<LingoMessage>& message) {
  const uint8_t lingo = message->getLingo();
  const uint16_t command = message->getCommand();
  startSearch();
  HandlerRecord record;
  bool handled = false;
  bool last = false;
  while (nextFor(lingo, command, record, last)) {
    handled = true;
    if (last) {
      record.handler(record.object, std::move(message));
      break;
    }
    std::unique_ptr<LingoMessage> copy = copyMessage(*message);
    if (copy) record.handler(record.object, std::move(copy));
  }
  if (handled) message.reset();
  return handled;
}

void HandlerTable::startSearch() {
  const SemaphoreHold hold(listGuard);
  cursor = 0;
}

/// Finds the next handler for the message and sets `last` when no other follows now. Returns false
/// when there is none.
bool HandlerTable::nextFor(uint8_t lingo, uint16_t command, HandlerRecord& found, bool& last) {
  const SemaphoreHold hold(listGuard);
  const uint32_t index = findFrom(cursor, lingo, command);
  if (index == handlerList.size()) return false;
  found = handlerList[index];
  cursor = index + 1;
  last = findFrom(cursor, lingo, command) == handlerList.size();
  return true;
}

uint32_t HandlerTable::findFrom(uint32_t start, uint8_t lingo, uint16_t command) const {
  uint32_t index = start;
  while (index < handlerList.size() &&
         (handlerList[index].lingo != lingo || handlerList[index].command != command)) {
    ++index;
  }
  return index;
}

void HandlerTable::removeAt(uint32_t index) {
  handlerList.removeAt(index);
  if (index < cursor) --cursor;
  noteLingoes();
}

void HandlerTable::noteLingoes() {
  uint32_t lingoes = 0;
  for (const HandlerRecord& record : handlerList)
    lingoes |= bitOf(record.lingo);
  handledLingoes = lingoes;
}

}  // namespace ipodctl
