#pragma once

#include <windows.h>

#include <atomic>
#include <cstdint>
#include <memory>

#include "lingo/frame_format.h"
#include "lingo/lingo_message.h"
#include "link/handler_table.h"
#include "link/message_queue.h"
#include "link/reader_locks.h"

namespace ipodctl {

/// The byte link to the iPod: what the serial and the USB kind share. It turns received frames into
/// messages on a reader thread, hands those with a registered handler to it, and queues the others
/// for the host's threads. It never pairs a reply with a command; that is the controller's work.
///
/// open, startReadData, stopReadData, close and awaitReader are called by one host thread at a
/// time; close and stopReadData also by the reader thread and by handlers. Everything else may be
/// called by several threads at once. One reader thread runs at a time: open and startReadData wait
/// for the one before to leave.
class Transport {
 public:
  Transport();
  virtual ~Transport();
  Transport(const Transport&) = delete;
  Transport& operator=(const Transport&) = delete;

  /// Closes, remembers the name and opens the device. False when the device does not open.
  virtual bool open(const char* deviceName) = 0;

  /// Closes the device and stops the reader. Always true.
  virtual bool close() = 0;

  /// Starts the reader thread. False when it runs already, when the one before has not left within
  /// a second, when the device is not open, or when the system has no thread.
  virtual bool startReadData();

  /// Closes the device and waits until the reader has ended, at most 300 ms; does nothing when the
  /// reader was stopped before. Always true.
  virtual bool stopReadData();

  /// Reader thread only. Waits for the next frame and copies its payload to `dest`. Returns the
  /// payload's length and sets `payloadOut` to `dest`; 0 for a bad frame and -1 when there is
  /// nothing to read any more, both with a null `payloadOut`. A good long frame without a payload
  /// is 0, too.
  virtual int readFrame(uint8_t* dest, int capacity, uint8_t*& payloadOut) = 0;

  /// Takes the oldest queued message, waiting for one as long as semMutexTake does (0, 0: without
  /// limit). Null after that time, and once the reader has stopped.
  virtual std::unique_ptr<LingoMessage> getMessage(uint32_t nanoseconds, uint32_t seconds);

  virtual bool isOpen() const = 0;

  /// Writes the single byte FF. True when it went out.
  virtual bool sendSyncByte() = 0;

  /// Frames a message and writes it. True when every byte went out.
  virtual bool sendMessage(const LingoMessage& message) = 0;

  /// Destroys every queued message. Always 0.
  virtual int flushMessages();

  /// From now on the messages of this lingo and command go to the handler, on the reader thread,
  /// instead of the queue. False for a null object or handler, and without memory.
  virtual bool addHandler(void* object, MessageHandler handler, uint16_t command, uint8_t lingo);

  /// Takes the first such registration back. False when there is none.
  virtual bool removeHandler(void* object, MessageHandler handler, uint16_t command, uint8_t lingo);

  /// Takes the object's registrations back, but of two adjacent ones only the first. False for
  /// null.
  virtual bool removeHandlers(void* object);

  /// The reader thread's body: reads frames until the device fails, a frame is bad or the reader is
  /// stopped, then closes every live transport.
  virtual void thReadDataLocal();

  /// True when the last of `count` bytes is the checksum of those before it.
  virtual bool checkChecksum(const uint8_t* bytes, int count) const;

  /// The byte that makes the sum of all bytes 0; 0 for no bytes.
  virtual uint8_t computeChecksum(const uint8_t* bytes, int count) const;

  /// Writes bytes as they are. True when all went out.
  virtual bool writeData(const uint8_t* bytes, uint32_t count) = 0;

  /// Waits until the reader thread has left and gives its handle back. False when it has not after
  /// a second. Not for the reader thread itself.
  bool awaitReader();

  /// Releases the locks that the reader held if it was killed: see ReaderLocks.
  void releaseLocksOfKilledReader();

  void releaseReaderLocks() { readerLocks.release(); }

  /// Closes for good: waits for the reader however long it takes and leaves the live transports.
  /// After this only flushMessages and the destructor may be called. Every kind's destructor does
  /// it first, while the reader can still call the kind's operations; an owner does it before what
  /// its handlers use goes.
  void shutDown();

 protected:
  /// Makes the semaphores that are missing and enters the transport among the live ones. Called by
  /// the constructor of every kind, whose operations can be called from then on, and again by open.
  /// False when the system has no room; the transport does not open then.
  virtual bool prepare();

  std::atomic<uint8_t> readDataActive{0};
  ReaderLocks readerLocks;

  /// The payload of the frame just read. Reader thread only.
  uint8_t rxPayload[kPayloadCapacity] = {};

 private:
  static DWORD WINAPI threadEntry(void* transport);
  void receiveMessages();
  void deliver(const uint8_t* payload, uint16_t length);

  std::atomic<uint8_t> threadExited{1};
  std::atomic<uint8_t> readerInside{0};  ///< from startReadData to the reader's last step
  HANDLE readerThread = nullptr;
  MessageQueue messages{readDataActive};
  HandlerTable handlers;
};

}  // namespace ipodctl
