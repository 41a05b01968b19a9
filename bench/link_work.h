#pragma once

#include <cstdint>
#include <string>

/// One piece of the link's work, done `count` times on the stub platform through a real
/// UsbTransport.
namespace bench {

/// Frames a filled message of `size` data bytes and sends it.
void frame(uint32_t size, uint64_t count);

/// Sends one byte without a frame: the part of frame() that is not framing.
void send(uint64_t count);

/// Reads frames with `size` payload bytes from a device that delivers `readSize` bytes at a time.
void read(uint32_t size, uint32_t readSize, uint64_t count);

/// Only reads as many bytes from the device: the part of read() and path() that is not the link's.
void device(uint32_t size, uint32_t readSize, uint64_t count);

/// The reader's whole path of such frames: readFrame, message, handlers, queue, and taking them.
void path(uint32_t size, uint32_t readSize, uint64_t count);

/// Reads `count` bytes of junk: "start" bytes (55), "sync" bytes (FF) or "random" ones.
void junk(const std::string& kind, uint32_t readSize, uint64_t count);

/// Only reads the junk from the device: the part of junk() that is not the link's.
void junkDevice(const std::string& kind, uint32_t readSize, uint64_t count);

/// Receives `count` messages before it takes the first one.
void queue(uint64_t count);

/// The floor of frame() and read(): copies `size` bytes and sums them.
void copyAndSum(uint32_t size, uint64_t count);

}  // namespace bench
