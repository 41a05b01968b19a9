#include "coredll/sync_bytes.h"

#include <gtest/gtest.h>

#include "support/bytes.h"

namespace sync_bytes {
namespace {

using coredll::SyncBytesAdded;
using coredll::SyncBytesRemoved;

/// Returns what is on the line after writes of these bytes.
Bytes onTheLine(const std::vector<Bytes>& writes) {
  SyncBytesAdded added;
  Bytes all;
  for (const Bytes& bytes : writes) {
    const Bytes line = added.with(bytes.data(), bytes.size());
    all.insert(all.end(), line.begin(), line.end());
  }
  return all;
}

/// Returns what the program reads when the line delivers these bytes.
Bytes fromTheLine(const std::vector<Bytes>& reads) {
  SyncBytesRemoved removed;
  Bytes all;
  for (const Bytes& bytes : reads)
    removed.append(bytes.data(), bytes.size(), all);
  return all;
}

std::vector<Bytes> byteByByte(const Bytes& bytes) {
  std::vector<Bytes> single;
  for (const std::uint8_t byte : bytes)
    single.push_back({byte});
  return single;
}

TEST(SyncBytesAdded, PrecedeEachFrame) {
  EXPECT_EQ(onTheLine({{0x55, 0x02, 0x00, 0x07, 0xF7, 0x55, 0x02, 0x00, 0x03, 0xFB}}),
            (Bytes{0xFF, 0x55, 0x02, 0x00, 0x07, 0xF7, 0xFF, 0x55, 0x02, 0x00, 0x03, 0xFB}));
}

TEST(SyncBytesAdded, DoNotPrecedeAStartByteInsideAFrame) {
  EXPECT_EQ(
      onTheLine({{0x55, 0x04, 0x00, 0x55, 0xFF, 0x55, 0x53}, {0x55, 0x02, 0x00, 0x07, 0xF7}}),
      (Bytes{0xFF, 0x55, 0x04, 0x00, 0x55, 0xFF, 0x55, 0x53, 0xFF, 0x55, 0x02, 0x00, 0x07, 0xF7}));
}

TEST(SyncBytesAdded, KnowAFrameInSeveralWrites) {
  EXPECT_EQ(onTheLine(byteByByte({0x55, 0x03, 0x55, 0xFF, 0x55, 0x54, 0x55, 0x01, 0x55, 0xAA})),
            (Bytes{0xFF, 0x55, 0x03, 0x55, 0xFF, 0x55, 0x54, 0xFF, 0x55, 0x01, 0x55, 0xAA}));
}

TEST(SyncBytesAdded, KnowTheLongForm) {
  Bytes frame = {0x55, 0x00, 0x01, 0x02};
  frame.resize(4 + 0x102, 0x55);  // the payload
  frame.push_back(0x11);          // the checksum
  Bytes expected = {0xFF};
  expected.insert(expected.end(), frame.begin(), frame.end());
  expected.insert(expected.end(), {0xFF, 0x55});
  Bytes written = frame;
  written.push_back(0x55);
  EXPECT_EQ(onTheLine({written}), expected);
  EXPECT_EQ(onTheLine(byteByByte(written)), expected);
}

TEST(SyncBytesAdded, LeaveNoiseAlone) {
  EXPECT_EQ(onTheLine({{0x13, 0xFF, 0x00}, {0x55, 0x01, 0x00, 0xFF}}),
            (Bytes{0x13, 0xFF, 0x00, 0xFF, 0x55, 0x01, 0x00, 0xFF}));
}

TEST(SyncBytesRemoved, PrecedeEachFrame) {
  const Bytes line = {0xFF, 0x55, 0x02, 0x00, 0x07, 0xF7, 0xFF, 0x55, 0x02, 0x00, 0x03, 0xFB};
  const Bytes read = {0x55, 0x02, 0x00, 0x07, 0xF7, 0x55, 0x02, 0x00, 0x03, 0xFB};
  EXPECT_EQ(fromTheLine({line}), read);
  EXPECT_EQ(fromTheLine(byteByByte(line)), read);
}

TEST(SyncBytesRemoved, AreNotTheDataOfAFrame) {
  const Bytes line = {0xFF, 0x55, 0x05, 0xFF, 0x55, 0xFF, 0xFF, 0x55,
                      0x54, 0xFF, 0x55, 0x01, 0x00, 0xFF, 0xFF, 0x55};
  const Bytes read = {0x55, 0x05, 0xFF, 0x55, 0xFF, 0xFF, 0x55, 0x54, 0x55, 0x01, 0x00, 0xFF, 0x55};
  EXPECT_EQ(fromTheLine({line}), read);
  EXPECT_EQ(fromTheLine(byteByByte(line)), read);
}

TEST(SyncBytesRemoved, AreNotTheDataOfALongFrame) {
  Bytes frame = {0x55, 0x00, 0x01, 0x00};
  for (int i = 0; i < 0x80; ++i)
    frame.insert(frame.end(), {0xFF, 0x55});
  frame.push_back(0xFF);  // the checksum
  Bytes line = {0xFF};
  line.insert(line.end(), frame.begin(), frame.end());
  line.insert(line.end(), {0xFF, 0x55});
  Bytes read = frame;
  read.push_back(0x55);
  EXPECT_EQ(fromTheLine({line}), read);
  EXPECT_EQ(fromTheLine(byteByByte(line)), read);
}

TEST(SyncBytesRemoved, LeaveAFrameWithoutOneAndABadChecksumAlone) {
  const Bytes line = {0x55, 0x02, 0xFF, 0x55, 0x00, 0x55, 0x01, 0x00, 0x77};
  EXPECT_EQ(fromTheLine({line}), line);
}

TEST(SyncBytesRemoved, LeaveNoiseAlone) {
  const Bytes line = {0x13, 0xFF, 0x00, 0xFF, 0xFF, 0xFF, 0x55, 0x01, 0x00, 0xFF};
  const Bytes read = {0x13, 0xFF, 0x00, 0xFF, 0xFF, 0x55, 0x01, 0x00, 0xFF};
  EXPECT_EQ(fromTheLine({line}), read);
  EXPECT_EQ(fromTheLine(byteByByte(line)), read);
}

TEST(SyncBytesRemoved, KeepALastByteUntilTheNextArrives) {
  SyncBytesRemoved removed;
  Bytes read;
  const Bytes line = {0x13, 0xFF};
  removed.append(line.data(), line.size(), read);
  EXPECT_EQ(read, Bytes{0x13});
  EXPECT_TRUE(removed.appendKept(read));
  EXPECT_EQ(read, (Bytes{0x13, 0xFF}));
  EXPECT_FALSE(removed.appendKept(read));
}

}  // namespace
}  // namespace sync_bytes
