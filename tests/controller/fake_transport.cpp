#include "controller/fake_transport.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <iterator>
#include <utility>

#include "lingo/received_message.h"

namespace ipodctl {
namespace {

/// More than any test waits for messages: whoever gets here would wait for ever.
constexpr uint32_t kEndlessWaits = 100000;

std::string registration(const char* call, uint16_t command, uint8_t lingo) {
  char line[32];
  std::snprintf(line, sizeof(line), "%s %02X %04X", call, lingo, command);
  return line;
}

}  // namespace

FakeTransport::FakeTransport(void (*tell)(const LingoMessage*)) : onMade(tell) {}

FakeTransport::~FakeTransport() {
  shutDown();
  log("destroyed");
}

void FakeTransport::arrive(const Payloads& payloads) {
  for (const Bytes& payload : payloads)
    queue.push_back(make(payload));
}

void FakeTransport::arriveAfterFlush(const Payloads& payloads) { behindFlush = makeAll(payloads); }

void FakeTransport::answer(const std::string& body, const Payloads& payloads) {
  answers.push_back({body, makeAll(payloads)});
}

void FakeTransport::flood(uint32_t count, const Bytes& payload) {
  floodLeft = count;
  floodPayload = payload;
}

void FakeTransport::notify(const Bytes& payload) {
  const std::vector<HandlerRecord> records = registered;
  for (const HandlerRecord& record : records) {
    if (payload[0] == record.lingo && payload[1] == record.command)
      record.handler(record.object, make(payload));
  }
}

bool FakeTransport::open(const char* deviceName) {
  log(std::string("open ") + deviceName);
  opened = opens;
  return opens;
}

bool FakeTransport::close() {
  log("close");
  opened = false;
  return closes;
}

bool FakeTransport::startReadData() {
  log("start");
  return starts;
}

int FakeTransport::readFrame(uint8_t* /*dest*/, int /*capacity*/, uint8_t*& payloadOut) {
  payloadOut = nullptr;
  return -1;
}

std::unique_ptr<LingoMessage> FakeTransport::getMessage(uint32_t nanoseconds, uint32_t seconds) {
  if (++waits > kEndlessWaits) {
    std::fputs("the controller waits without end\n", stderr);
    std::abort();
  }
  log("wait " + std::to_string(nanoseconds) + " ns " + std::to_string(seconds) + " s");
  if (queue.empty() && floodLeft > 0) {
    --floodLeft;
    return make(floodPayload);
  }
  if (queue.empty()) return nullptr;
  std::unique_ptr<LingoMessage> first = std::move(queue.front());
  queue.pop_front();
  return first;
}

bool FakeTransport::isOpen() const { return opened; }

bool FakeTransport::sendSyncByte() {
  log("sync");
  return sends;
}

bool FakeTransport::sendMessage(const LingoMessage& message) {
  const Bytes bytes = bodyOf(message);
  const std::string body = hexText(bytes.data(), static_cast<uint32_t>(bytes.size()));
  log("send " + body);
  const auto found = std::find_if(answers.begin(), answers.end(),
                                  [&](const Answer& answer) { return answer.body == body; });
  if (found == answers.end()) return sends;
  std::move(found->messages.begin(), found->messages.end(), std::back_inserter(queue));
  answers.erase(found);
  return sends;
}

int FakeTransport::flushMessages() {
  log("flush");
  queue.clear();
  std::swap(queue, behindFlush);
  return 0;
}

bool FakeTransport::addHandler(void* object, MessageHandler handler, uint16_t command,
                               uint8_t lingo) {
  log(registration("addHandler", command, lingo));
  if (!registers) return false;
  registered.push_back({lingo, command, handler, object});
  return true;
}

bool FakeTransport::removeHandler(void* object, MessageHandler handler, uint16_t command,
                                  uint8_t lingo) {
  log(registration("removeHandler", command, lingo));
  const HandlerRecord record = {lingo, command, handler, object};
  const auto found = std::find(registered.begin(), registered.end(), record);
  if (found == registered.end()) return false;
  registered.erase(found);
  return true;
}

bool FakeTransport::removeHandlers(void* object) {
  log("removeHandlers");
  registered.erase(std::remove_if(registered.begin(), registered.end(),
                                  [&](const HandlerRecord& r) { return r.object == object; }),
                   registered.end());
  return true;
}

bool FakeTransport::writeData(const uint8_t* bytes, uint32_t count) {
  log("write " + hexText(bytes, count));
  return sends;
}

std::unique_ptr<LingoMessage> FakeTransport::make(const Bytes& payload) const {
  if (payload.empty()) return nullptr;
  std::unique_ptr<LingoMessage> message =
      makeReceivedMessage(payload.data(), static_cast<uint16_t>(payload.size()));
  if (message != nullptr && onMade != nullptr) onMade(message.get());
  return message;
}

FakeTransport::Messages FakeTransport::makeAll(const Payloads& payloads) const {
  Messages made;
  for (const Bytes& payload : payloads)
    made.push_back(make(payload));
  return made;
}

void FakeTransport::log(const std::string& call) {
  callLog().push_back(call);
  if (onCall) onCall(call);
}

}  // namespace ipodctl
