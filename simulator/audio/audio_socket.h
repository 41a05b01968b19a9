#pragma once

#include <poll.h>

#include <deque>
#include <filesystem>
#include <stdexcept>
#include <vector>

#include "audio/packet_clock.h"
#include "link/file_descriptor.h"
#include "wire/bytes.h"

namespace simulator {

/// An error whose message says why there is no socket.
class AudioSocketError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// The socket over which the accessory's audio library receives the samples: SOCK_SEQPACKET, with
/// the mode 0600. One accessory can be connected; another one is closed at once.
///
/// The accessory sends one byte each time it selects a bandwidth: 1 for the full one, 0 for none.
/// It receives a packet in each message: its number, from 0 on for each connection, the sample rate
/// in Hz, both of 32 bits, and stereo samples of 16 bits. All are in the byte order of the machine.
///
/// Nothing here blocks.
class AudioSocket final : public PacketSink {
 public:
  /// So many packets wait for an accessory that is late. Then packets are lost, and their numbers
  /// are left out.
  static constexpr size_t kMostWaiting = 2000;

  /// Makes the socket. One that a dead process left is replaced. Throws AudioSocketError.
  explicit AudioSocket(std::filesystem::path path);
  ~AudioSocket() override;
  AudioSocket(const AudioSocket&) = delete;
  AudioSocket& operator=(const AudioSocket&) = delete;

  /// Returns whether an accessory is connected that has selected the full bandwidth.
  bool isWanted() const { return hasFullBandwidth; }
  /// Adds what a poll must wait for.
  void addWaits(std::vector<pollfd>& waits) const;
  /// Accepts, receives and sends what is possible now.
  void serve();

  void packet(uint32_t rate, const Frame* frames, size_t count) override;
  void missed(uint64_t packets) override { number += static_cast<uint32_t>(packets); }

 private:
  void listenAt();
  void acceptOne();
  void receive();
  void dropWaiting();
  void send();
  void closeConnection();

  const std::filesystem::path file;
  FileDescriptor listener;
  FileDescriptor connection;
  bool hasFullBandwidth = false;
  uint32_t number = 0;  ///< of the next packet
  std::deque<Bytes> waiting;
};

}  // namespace simulator
