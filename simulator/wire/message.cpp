#include "wire/message.h"

#include "wire/payload.h"

namespace simulator {

size_t commandWidth(uint8_t lingo) {
  return lingo == static_cast<uint8_t>(Lingo::kExtendedInterface) ? 2 : 1;
}

std::optional<Message> parseMessage(ByteView payload) {
  PayloadReader reader(payload);
  Message message;
  message.lingo = reader.u8();
  message.command = commandWidth(message.lingo) == 2 ? reader.u16() : reader.u8();
  if (!reader.ok()) return std::nullopt;
  message.data.assign(reader.rest().begin(), reader.rest().end());
  return message;
}

Bytes messagePayload(const Message& message) {
  PayloadWriter writer;
  writer.u8(message.lingo);
  if (commandWidth(message.lingo) == 2) {
    writer.u16(message.command);
  } else {
    writer.u8(static_cast<uint8_t>(message.command));
  }
  Bytes payload = writer.take();
  payload.reserve(payload.size() + message.data.size());
  payload.insert(payload.end(), message.data.begin(), message.data.end());
  return payload;
}

}  // namespace simulator
