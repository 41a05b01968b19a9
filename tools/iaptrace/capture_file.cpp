#include "iaptrace/capture_file.h"

#include <algorithm>

#include "iaptrace/decoded_line.h"
#include "wire/frame.h"

namespace iaptrace {
namespace {

// Numbers of the pcapng format.
constexpr uint32_t kSectionHeader = 0x0A0D0D0A;
constexpr uint32_t kByteOrderMagic = 0x1A2B3C4D;
constexpr uint32_t kInterfaceDescription = 1;
constexpr uint32_t kEnhancedPacket = 6;
constexpr uint16_t kLinkTypeUser0 = 147;
constexpr uint16_t kEndOfOptions = 0;
constexpr uint16_t kComment = 1;
constexpr uint16_t kInterfaceName = 2;
constexpr uint16_t kPacketFlags = 2;
constexpr uint16_t kTimeResolution = 9;
constexpr char kInbound = 1;
constexpr char kOutbound = 2;

/// Builds a block. Its numbers have their low byte first.
class Block {
 public:
  explicit Block(uint32_t type) : blockType(type) {}

  Block& u16(uint32_t value) { return number(value, 2); }
  Block& u32(uint32_t value) { return number(value, 4); }
  /// Appends bytes, and zeros up to a multiple of four.
  Block& padded(const std::string& bytes) {
    body += bytes;
    body.append((4 - body.size() % 4) % 4, '\0');
    return *this;
  }
  Block& option(uint16_t code, const std::string& value) {
    constexpr size_t kLongest = 0xFFFF;
    const std::string kept = value.substr(0, kLongest);
    return u16(code).u16(static_cast<uint32_t>(kept.size())).padded(kept);
  }
  std::string take() const {
    constexpr size_t kFrame = 12;  // type and twice the length
    const auto length = static_cast<uint32_t>(body.size() + kFrame);
    return Block(0).u32(blockType).u32(length).body + body + Block(0).u32(length).body;
  }

 private:
  Block& number(uint32_t value, size_t bytes) {
    for (size_t i = 0; i < bytes; ++i)
      body += static_cast<char>(value >> (8 * i) & 0xFF);
    return *this;
  }

  uint32_t blockType;
  std::string body;
};

std::string sectionHeader() {
  constexpr uint32_t kUnknownLength = 0xFFFFFFFF;
  return Block(kSectionHeader)
      .u32(kByteOrderMagic)
      .u16(1)  // version 1.0
      .u16(0)
      .u32(kUnknownLength)
      .u32(kUnknownLength)
      .take();
}

std::string interfaceOf(const std::string& device, const std::vector<std::string>& comments) {
  constexpr char kMicroseconds[] = "\x06";
  Block block(kInterfaceDescription);
  block.u16(kLinkTypeUser0).u16(0).u32(0);  // packets of any length
  for (const std::string& comment : comments)
    block.option(kComment, comment);
  return block.option(kInterfaceName, device)
      .option(kTimeResolution, kMicroseconds)
      .option(kEndOfOptions, "")
      .take();
}

struct Packet {
  trace::Time at{0};
  size_t line = 0;
  uint32_t interfaceNumber = 0;
  Sender sender = Sender::kHost;
  std::string bytes;
  std::vector<std::string> comments;
};

std::string blockOf(const Packet& packet) {
  const auto micros = static_cast<uint64_t>(packet.at.count());
  const auto size = static_cast<uint32_t>(packet.bytes.size());
  Block block(kEnhancedPacket);
  block.u32(packet.interfaceNumber)
      .u32(static_cast<uint32_t>(micros >> 32))
      .u32(static_cast<uint32_t>(micros))
      .u32(size)
      .u32(size)
      .padded(packet.bytes);
  for (const std::string& comment : packet.comments)
    block.option(kComment, comment);
  const char direction = packet.sender == Sender::kHost ? kOutbound : kInbound;
  block.option(kPacketFlags, std::string(1, direction) + std::string(3, '\0'));
  return block.option(kEndOfOptions, "").take();
}

Packet packetOf(const DecodedLine& line, uint32_t interfaceNumber) {
  const Item& item = *line.item;
  Packet packet{item.at, item.line, interfaceNumber, item.sender, "", line.marks};
  if (item.hasSync) packet.bytes += static_cast<char>(simulator::kSyncByte);
  packet.bytes.append(item.bytes.begin(), item.bytes.end());
  return packet;
}

/// Appends the packets of a device. Returns the events that belong to none of them.
std::vector<std::string> addPackets(const Conversation& items, uint32_t interfaceNumber,
                                    std::vector<Packet>& packets) {
  std::vector<std::string> events;
  const size_t first = packets.size();
  for (const DecodedLine& line : decodedLines(items, false)) {
    if (line.item->kind == Item::Kind::kEvent) {
      events.push_back(line.what);
      continue;
    }
    packets.push_back(packetOf(line, interfaceNumber));
    auto& comments = packets.back().comments;
    comments.insert(comments.begin(), events.begin(), events.end());
    events.clear();
  }
  if (packets.size() == first) return events;
  auto& comments = packets.back().comments;
  comments.insert(comments.end(), events.begin(), events.end());
  return {};
}

}  // namespace

std::string captureOf(const trace::Trace& records) {
  std::string file = sectionHeader();
  std::vector<Packet> packets;
  uint32_t interfaceNumber = 0;
  for (const std::string& device : trace::devicesOf(records)) {
    const auto events = addPackets(conversationOf(records, device), interfaceNumber++, packets);
    file += interfaceOf(device, events);
  }
  std::stable_sort(packets.begin(), packets.end(),
                   [](const Packet& a, const Packet& b) { return a.line < b.line; });
  for (const Packet& packet : packets)
    file += blockOf(packet);
  return file;
}

}  // namespace iaptrace
