#pragma once

#include <windows.h>

#include <cstdint>
#include <memory>

#include "base/shared_value.h"
#include "lingo/frame_format.h"
#include "lingo/lingo_message.h"
#include "link/handler_table.h"
#include "link/message_queue.h"
#include "link/reader_locks.h"

namespace ipodctl {

/// The byte link to the iPod: what the serial and the USB kind share. Its reader thread turns
/// received frames into messages. A message with a registered handler goes to the handler; the
/// others are queued for the host's threads. The link never pairs a reply with a command. The
/// controller does.
///
/// One host thread at a time calls open, startReadData, stopReadData, close and awaitReader. The
/// reader thread and handlers call close and stopReadData, too. Several threads at once may call
/// everything else. One reader thread runs at a time: open and startReadData wait until the
/// previous one has left.
class Transport {
 public:
  Transport();
  virtual ~Transport();
  Transport(const Transport&) = delete;
  Transport& operator=(const Transport&) = delete;

  /// Closes, stores the name and opens the device. Returns false when the device does not open.
  virtual bool open(const char* deviceName) = 0;

  /// Closes the device and stops the reader. Always returns true.
  virtual bool close() = 0;

  /// Starts the reader thread. Returns false when it already runs, when the previous one has not
  /// left within a second, when the device is not open, or when the system has no thread.
  virtual bool startReadData();

  /// Closes the device and waits at most 300 ms until the reader has ended. Does nothing when the
  /// reader was stopped before. Always returns true.
  virtual bool stopReadData();

  /// Reader thread only. Waits for the next frame, copies its payload to `dest` and sets
  /// `payloadOut` to `dest`. Returns the payload's length, which is 0 for a good long frame without
  /// a payload. Sets `payloadOut` to null and returns 0 for a bad frame, -1 when nothing can be
  /// read any more.
  virtual int readFrame(uint8_t* dest, int capacity, uint8_t*& payloadOut) = 0;

  /// Removes the oldest queued message. Waits for one as long as semMutexTake does (0 and 0: for
  /// ever). Returns null after that time, and once the reader has stopped. If another thread
  /// removes the message that ended the wait, the wait starts again, once.
  virtual std::unique_ptr<LingoMessage> getMessage(uint32_t nanoseconds, uint32_t seconds);

  virtual bool isOpen() const = 0;

  /// Writes the single byte FF. Returns true when it was sent.
  virtual bool sendSyncByte() = 0;

  /// Frames a message and writes it. Returns true when all bytes were sent.
  virtual bool sendMessage(const LingoMessage& message) = 0;

  /// Destroys all queued messages. Always returns 0.
  virtual int flushMessages();

  /// Registers a handler. The messages of this lingo and command go to it, on the reader thread,
  /// instead of the queue. Returns false for a null object or handler, and without memory.
  virtual bool addHandler(void* object, MessageHandler handler, uint16_t command, uint8_t lingo);

  /// Removes the first such registration. Returns false when there is none.
  virtual bool removeHandler(void* object, MessageHandler handler, uint16_t command, uint8_t lingo);

  /// Removes the object's registrations, but of two adjacent ones only the first. Returns false for
  /// null.
  virtual bool removeHandlers(void* object);

  /// The reader thread's body. Reads frames until the reader is stopped, the device fails or a
  /// frame is bad. Closes all live transports when readFrame returns no payload.
  virtual void thReadDataLocal();

  /// Returns true when the last of `count` bytes is the checksum of those before it.
  virtual bool checkChecksum(const uint8_t* bytes, int count) const;

  /// Returns the byte that makes the sum of all bytes 0; 0 for no bytes.
  virtual uint8_t computeChecksum(const uint8_t* bytes, int count) const;

  /// Writes bytes unchanged. Returns true when all were sent.
  virtual bool writeData(const uint8_t* bytes, uint32_t count) = 0;

  /// Waits at most a second until the reader thread has ended, and closes its handle. Returns false
  /// when it has not ended. The reader thread itself must not call it.
  bool awaitReader();

  /// Releases the locks that the reader held if it was killed: see ReaderLocks.
  void releaseLocksOfKilledReader();

  void releaseReaderLocks() { readerLocks.release(); }

  /// Closes permanently: waits for the reader without limit and removes the transport from the live
  /// ones. After this only flushMessages and the destructor may be called. The destructor of every
  /// kind calls it first, while the reader can still call the kind's operations. An owner calls it
  /// before it destroys what its handlers use.
  void shutDown();

 protected:
  /// Creates the missing semaphores and adds the transport to the live ones. The constructor of
  /// every kind calls it; from then on the reader of another transport can close this one. open
  /// calls it again. Returns false when the system has no room; the transport does not open then.
  virtual bool prepare();

  SharedValue<uint8_t> readDataActive{0};
  ReaderLocks readerLocks;

  /// The payload of the frame just read. Reader thread only.
  uint8_t rxPayload[kPayloadCapacity] = {};

 private:
  static DWORD WINAPI threadEntry(void* transport);
  void receiveMessages();
  void deliver(const uint8_t* payload, uint16_t length);

  SharedValue<uint8_t> threadExited{1};
  SharedValue<uint8_t> readerInside{0};  ///< from startReadData to the reader's last step
  Semaphore readerEnded;                 ///< set at the reader's end
  HANDLE readerThread = nullptr;
  MessageQueue messages{readDataActive};
  HandlerTable handlers;
};

}  // namespace ipodctl
