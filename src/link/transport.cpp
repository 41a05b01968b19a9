#include "link/transport.h"

#include <utility>

#include "base/debug_print.h"
#include "base/os_primitives.h"
#include "lingo/received_message.h"
#include "link/frame_checksum.h"
#include "link/transport_registry.h"

namespace ipodctl {
namespace {

constexpr int kStopWaits = 3;
constexpr uint32_t kStopWaitNanoseconds = 100000000;

/// A signal without a message comes from a message that another thread removed. Only one can be
/// left from before the wait.
constexpr int kSignalWaits = 2;

constexpr uint32_t kReaderEndMilliseconds = 1000;
constexpr uint32_t kReaderPollMilliseconds = 100;

}  // namespace

Transport::Transport() {
  // Creates the registry first, so that it is destroyed after this object even if add() fails.
  TransportRegistry::instance();
  readerLocks.add(messages.lock());
  readerLocks.add(handlers.lock());
}

Transport::~Transport() { TransportRegistry::instance().remove(this); }

bool Transport::prepare() {
  return messages.prepare() && handlers.prepare() && readerEnded.ensure() &&
         TransportRegistry::instance().add(this);
}

void Transport::releaseLocksOfKilledReader() {
  // Join first: a reader that ends normally clears readerInside before its thread ends.
  if (readerThread != nullptr && threadJoin(readerThread, 0) == 0 && readerInside) {
    TransportRegistry::instance().releaseReaderLocks();
  }
}

void Transport::shutDown() {
  releaseLocksOfKilledReader();
  close();
  // During FreeLibrary the loader lock keeps a finished thread from exiting, so its handle is not
  // signalled. readerInside says whether it has left our code.
  while (readerInside && threadJoin(readerThread, kReaderPollMilliseconds) != 0) {
  }
  if (!awaitReader()) CloseHandle(readerThread);
  readerThread = nullptr;
  TransportRegistry::instance().remove(this);
}

bool Transport::startReadData() {
  if (readDataActive || !isOpen() || !awaitReader()) return false;
  // Set it first: a late wake() for the previous reader then leaves the signal alone.
  readDataActive = 1;
  messages.clearSignal();
  readerEnded.reset();
  readerInside = 1;
  threadCreate(readerThread, threadEntry, this);
  if (readerThread != nullptr) return true;
  readerInside = 0;
  readDataActive = 0;
  return false;
}

bool Transport::stopReadData() {
  if (!readDataActive) return true;
  readDataActive = 0;
  close();
  messages.wake();
  for (int i = 0; i < kStopWaits && !threadExited; ++i)
    readerEnded.await(kStopWaitNanoseconds, 0);
  return true;
}

bool Transport::awaitReader() {
  if (readerThread == nullptr) return true;
  if (threadJoin(readerThread, kReaderEndMilliseconds) != 0) return false;
  CloseHandle(readerThread);
  readerThread = nullptr;
  readerInside = 0;  // a killed reader did not clear it
  return true;
}

DWORD WINAPI Transport::threadEntry(void* transport) {
  debugPrint("begin thReadDat >>>>>>>>>>\n");
  if (transport == nullptr) return 0;
  auto* self = static_cast<Transport*>(transport);
  self->thReadDataLocal();
  self->readerInside = 0;
  return 0;
}

void Transport::thReadDataLocal() {
  debugPrint("readDataActive  = %d  >>>>>>>>>>\n", static_cast<int>(readDataActive));
  threadExited = 0;
  receiveMessages();
  debugPrint("exit from thReadDataLocal\n");
  threadExited = 1;
  readerEnded.signal();
  messages.wake();
}

void Transport::receiveMessages() {
  while (readDataActive) {
    if (isDebugging()) debugPrint("begin READ....\n");
    uint8_t* payload = nullptr;
    const int length = readFrame(rxPayload, kPayloadCapacity, payload);
    if (isDebugging()) debugPrint("received msg dim %d\n", length);
    if (length <= 0 || payload == nullptr) {
      readDataActive = 0;
      threadExited = 1;
      TransportRegistry::instance().closeAll();
      return;
    }
    deliver(payload, static_cast<uint16_t>(length));
  }
}

void Transport::deliver(const uint8_t* payload, uint16_t length) {
  std::unique_ptr<LingoMessage> message = makeReceivedMessage(payload, length);
  if (!message) return;
  if (isDebugging()) message->dump();
  if (!handlers.dispatch(message)) messages.append(std::move(message));
}

std::unique_ptr<LingoMessage> Transport::getMessage(uint32_t nanoseconds, uint32_t seconds) {
  std::unique_ptr<LingoMessage> message;
  if (!readDataActive && threadExited) return message;
  for (int i = 0; i < kSignalWaits && messages.awaitSignal(nanoseconds, seconds); ++i) {
    if (!readDataActive || threadExited) {
      messages.wake();  // the other waiters must notice the stop, too
      break;
    }
    if (messages.takeFirst(message)) break;
  }
  return message;
}

int Transport::flushMessages() {
  messages.flush();
  return 0;
}

bool Transport::addHandler(void* object, MessageHandler handler, uint16_t command, uint8_t lingo) {
  if (object == nullptr || handler == nullptr) return false;
  return handlers.add({lingo, command, handler, object});
}

bool Transport::removeHandler(void* object, MessageHandler handler, uint16_t command,
                              uint8_t lingo) {
  if (object == nullptr || handler == nullptr) return false;
  return handlers.remove({lingo, command, handler, object});
}

bool Transport::removeHandlers(void* object) {
  if (object == nullptr) return false;
  handlers.removeAllOf(object);
  return true;
}

bool Transport::checkChecksum(const uint8_t* bytes, int count) const {
  return endsWithChecksum(bytes, count);
}

uint8_t Transport::computeChecksum(const uint8_t* bytes, int count) const {
  return frameChecksum(bytes, count);
}

}  // namespace ipodctl
