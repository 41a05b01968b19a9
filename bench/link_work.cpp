#include "link_work.h"

#include <windows.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <random>
#include <string>

#include "lingo/extended_interface_message.h"
#include "link/frame_checksum.h"
#include "link/usb_transport.h"
#include "stub_platform.h"
#include "wire_frame.h"

namespace bench {
namespace {

using ipodctl::ExtendedInterfaceMessage;
using ipodctl::LingoMessage;
using ipodctl::UsbTransport;

constexpr int kCapacity = 65535;

/// ReturnCategorizedDatabaseRecord with a name that fills the payload.
Bytes recordFrame(uint32_t payloadSize) {
  Bytes payload = {0x04, 0x00, 0x1B, 0x00, 0x00, 0x00, 0x01};
  payload.resize(payloadSize, 'a');
  payload.back() = 0;
  return frameOf(payload);
}

Bytes junkOf(const std::string& kind) {
  constexpr size_t kSize = 1 << 20;
  if (kind == "start") return Bytes(kSize, 0x55);
  if (kind == "sync") return Bytes(kSize, 0xFF);
  Bytes junk(kSize);
  std::mt19937 random(1);
  for (uint8_t& byte : junk)
    byte = static_cast<uint8_t>(random());
  return junk;
}

std::unique_ptr<UsbTransport> openedLink() {
  auto link = std::make_unique<UsbTransport>();
  link->open("IPD1:");
  link->startReadData();
  return link;
}

}  // namespace

void frame(uint32_t size, uint64_t count) {
  const auto link = openedLink();
  const Bytes data(size, 'a');
  ExtendedInterfaceMessage message;
  message.setCommand(0x0020);
  message.appendData(data.data(), static_cast<uint16_t>(size));
  for (uint64_t i = 0; i < count; ++i)
    link->sendMessage(message);
}

void read(uint32_t size, uint32_t readSize, uint64_t count) {
  const auto link = openedLink();
  stub::deliver(recordFrame(size), readSize);
  static uint8_t payload[kCapacity];
  uint8_t* received = nullptr;
  for (uint64_t i = 0; i < count; ++i) {
    if (link->readFrame(payload, kCapacity, received) != static_cast<int>(size)) std::abort();
  }
}

void send(uint64_t count) {
  const auto link = openedLink();
  for (uint64_t i = 0; i < count; ++i)
    link->sendSyncByte();
}

void device(uint32_t size, uint32_t readSize, uint64_t count) {
  stub::deliver(recordFrame(size), readSize);
  static uint8_t bytes[200000];
  const uint64_t total = count * (size + 3);
  for (uint64_t taken = 0; taken < total; taken += readSize) {
    DWORD got = 0;
    ReadFile(reinterpret_cast<HANDLE>(4), bytes, readSize, &got, nullptr);
  }
}

void path(uint32_t size, uint32_t readSize, uint64_t count) {
  const auto link = openedLink();
  stub::deliver(recordFrame(size), readSize);
  link->addHandler(
      link.get(), [](void*, std::unique_ptr<LingoMessage>) {}, 0x04, 0x0A);
  uint32_t arrived = 0;
  stub::beforeRead([&] {
    for (; arrived >= size + 3 && count > 0; arrived -= size + 3, --count) {
      if (!link->getMessage(0, 1)) std::abort();
    }
    arrived += readSize;
    return count > 0;
  });
  link->thReadDataLocal();
}

namespace {

/// The device delivers `count` bytes of junk and then fails.
void deliverJunk(const std::string& kind, uint32_t readSize, uint64_t count) {
  stub::deliver(junkOf(kind), readSize);
  uint64_t left = count;
  stub::beforeRead([left, readSize]() mutable {
    if (left < readSize) return false;
    left -= readSize;
    return true;
  });
}

}  // namespace

void junk(const std::string& kind, uint32_t readSize, uint64_t count) {
  const auto link = openedLink();
  deliverJunk(kind, readSize, count);
  static uint8_t payload[kCapacity];
  uint8_t* received = nullptr;
  while (link->readFrame(payload, kCapacity, received) >= 0) {
  }
}

void junkDevice(const std::string& kind, uint32_t readSize, uint64_t count) {
  deliverJunk(kind, readSize, count);
  static uint8_t bytes[200000];
  DWORD got = 0;
  while (ReadFile(reinterpret_cast<HANDLE>(4), bytes, readSize, &got, nullptr)) {
  }
}

void queue(uint64_t count) {
  const auto link = openedLink();
  stub::deliver(recordFrame(33), 36);
  uint64_t left = count;
  stub::beforeRead([&] {
    if (left-- > 0) return true;
    for (uint64_t i = 0; i < count; ++i) {
      if (!link->getMessage(0, 1)) std::abort();
    }
    return false;
  });
  link->thReadDataLocal();
}

void copyAndSum(uint32_t size, uint64_t count) {
  const Bytes source = recordFrame(size);
  Bytes copy(source.size());
  volatile uint8_t checked = 0;
  for (uint64_t i = 0; i < count; ++i) {
    std::memcpy(copy.data(), source.data(), source.size());
    checked = ipodctl::frameChecksum(copy.data(), static_cast<int>(copy.size()));
  }
  (void)checked;
}

}  // namespace bench
