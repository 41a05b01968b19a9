#pragma once

#include <deque>
#include <functional>
#include <initializer_list>
#include <memory>
#include <string>
#include <vector>

#include "controller/call_log.h"
#include "link/transport.h"
#include "support/message_bytes.h"

namespace ipodctl {

/// What the iPod sends, one message after another: payloads (lingo, command, data). An empty one is
/// a second of silence.
using Payloads = std::vector<Bytes>;

const Bytes kSilence;

/// A link in memory with an iPod of the test's making at its far end. Every call goes to the call
/// log; a wait for a message that has not arrived ends at once, and waits without end abort the
/// test.
class FakeTransport final : public Transport {
 public:
  /// `onMade` gets each message that the iPod is going to send; it may be null.
  explicit FakeTransport(void (*onMade)(const LingoMessage*));
  ~FakeTransport() override;

  /// The iPod has sent these, before anything else happens.
  void arrive(const Payloads& payloads);

  /// The iPod will send these right after the queue is next cleared.
  void arriveAfterFlush(const Payloads& payloads);

  /// The iPod will send these when it gets a message with this body (hex, from the start byte on).
  /// Each answer is given once, equal ones in the order of these calls.
  void answer(const std::string& body, const Payloads& payloads);

  /// The iPod will send these after all answers, whatever it gets.
  void flood(uint32_t count, const Bytes& payload);

  /// Hands a message to the registered handlers, as the reader thread does.
  void notify(const Bytes& payload);

  /// Messages received and not taken yet.
  uint32_t queued() const { return static_cast<uint32_t>(queue.size()); }

  uint32_t registeredHandlers() const { return static_cast<uint32_t>(registered.size()); }

  // What the calls of these names return.
  bool opens = true;
  bool starts = true;
  bool closes = true;
  bool sends = true;
  bool registers = true;  ///< addHandler

  /// Runs after each line of the call log that comes from here.
  std::function<void(const std::string& call)> onCall;

  bool open(const char* deviceName) override;
  bool close() override;
  bool startReadData() override;
  int readFrame(uint8_t* dest, int capacity, uint8_t*& payloadOut) override;
  std::unique_ptr<LingoMessage> getMessage(uint32_t nanoseconds, uint32_t seconds) override;
  bool isOpen() const override;
  bool sendSyncByte() override;
  bool sendMessage(const LingoMessage& message) override;
  int flushMessages() override;
  bool addHandler(void* object, MessageHandler handler, uint16_t command, uint8_t lingo) override;
  bool removeHandler(void* object, MessageHandler handler, uint16_t command,
                     uint8_t lingo) override;
  bool removeHandlers(void* object) override;
  bool writeData(const uint8_t* bytes, uint32_t count) override;

 private:
  using Messages = std::deque<std::unique_ptr<LingoMessage>>;

  struct Answer {
    std::string body;
    Messages messages;
  };

  void log(const std::string& call);
  std::unique_ptr<LingoMessage> make(const Bytes& payload) const;
  Messages makeAll(const Payloads& payloads) const;

  void (*const onMade)(const LingoMessage*);
  Messages queue;
  Messages behindFlush;
  std::deque<Answer> answers;
  uint32_t waits = 0;
  uint32_t floodLeft = 0;
  Bytes floodPayload;
  std::vector<HandlerRecord> registered;
  bool opened = false;
};

}  // namespace ipodctl
