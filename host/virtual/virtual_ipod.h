// A simulated iPod as a device of a virtual world, in the world's time.
#pragma once

#include <cstddef>
#include <optional>
#include <utility>
#include <vector>

#include "byte_fault.h"
#include "device/simulated_ipod.h"
#include "frame_road.h"
#include "virtual_device.h"

namespace virtual_platform {

/// What a program finds at a device whose iPod is pulled while it is open. Unless a write fails,
/// the bytes that are written are lost.
enum class Loss {
  kEndOfFile,   ///< reads end with no bytes
  kReadError,   ///< reads fail
  kWriteError,  ///< writes fail, reads wait for ever
  kSilence,     ///< reads wait for ever
  kGone         // reads and writes fail
};

enum class Direction { kFromIpod, kToIpod };

/// How a program gets the bytes that the iPod has sent.
struct Delivery {
  std::optional<std::size_t> pauseAt;  ///< a read ends after so many bytes, and the next one waits
  Time pause{0};                       ///< the length of that wait
  std::size_t longestRead = static_cast<std::size_t>(-1);
  Time gathering{0};  ///< this time after the first byte one read returns everything
};

class VirtualIpod final : public VirtualDevice {
 public:
  /// The iPod, which must outlive this, is plugged at the world's start.
  VirtualIpod(simulator::SimulatedIpod& device, simulator::FrameKind frames);

  void plug(Time now);
  void unplug(Time now, Loss how);
  /// Pulls it, once, when so many bytes of a direction have passed since it was plugged in. Those
  /// bytes still arrive.
  void unplugAfter(Direction direction, std::size_t bytes, Loss how);
  /// Pulls it at that time, unless it is plugged in again before.
  void unplugAt(Time moment, Loss how) { pull = Pull{moment, how}; }
  /// Corrupts the bytes of a direction until it is plugged in again.
  void spoil(Direction direction, const ByteFault& fault);
  bool hasSpoiled(Direction direction) const { return lines[indexOf(direction)].hasStruck(); }

  /// Delivers the frame from the iPod with this number, from 0, after the one that follows it,
  /// unless it is plugged in again before.
  void swapFrame(std::size_t number);
  bool hasSwapped() const { return swapped; }
  /// Changes the delivery until it is plugged in again.
  void deliver(const Delivery& wanted) { delivery = wanted; }
  /// Replaces frames until it is plugged in again.
  void rewrite(FrameRewriter wanted) { road.rewrite(std::move(wanted)); }
  bool hasRewritten() const { return road.hasRewritten(); }

  /// Accepts so many bytes of what is written; then writes and flushes wait. It is pulled that long
  /// after the first of them began to wait.
  void stopReading(std::size_t bytes, Time patience, Loss how);
  bool hasStoppedReading() const { return stop && stop->isFelt; }

  bool isPlugged() const { return !loss; }
  /// Returns how many bytes have passed since it was plugged in.
  std::size_t passed(Direction direction) const { return passedBytes[indexOf(direction)]; }
  /// Returns how many bytes had passed after each frame, since it was plugged in; to the iPod,
  /// after each write.
  const std::vector<std::size_t>& frameEnds(Direction direction) const {
    return ends[indexOf(direction)];
  }

  bool canBeOpened() const override { return isPlugged(); }
  void opened(Time now) override;
  void closed(Time now) override;
  Readiness readReadiness(Time now) override;
  Readiness writeReadiness(Time now) override;
  std::size_t read(Time now, BYTE* buffer, std::size_t count) override;
  std::size_t write(Time now, const BYTE* bytes, std::size_t count) override;
  std::optional<Time> nextWake() const override;

 private:
  struct Cut {
    Direction direction;
    std::size_t bytes;
    Loss how;
  };

  struct Pull {
    Time moment;
    Loss how;
  };

  struct Stop {
    std::size_t bytes;
    Time patience;
    Loss how;
    bool isFelt;  // a write has begun to wait
  };

  static std::size_t indexOf(Direction direction) { return static_cast<std::size_t>(direction); }
  std::size_t untilCut(Direction direction, std::size_t count) const;
  void pass(Time now, Direction direction, std::size_t count);
  void fetch(Time now);
  void takeFrame(Time now, const simulator::Bytes& bytes);
  void append(Time now, const simulator::Bytes& bytes);
  std::size_t untilPause(std::size_t count) const;
  std::size_t untilStop(std::size_t count) const;
  void pullWhenDue(Time now);
  bool takesNoMore(Time now);

  simulator::SimulatedIpod& ipod;
  const simulator::FrameKind kind;
  std::optional<Loss> loss;
  std::optional<Cut> cut;
  std::optional<Pull> pull;
  std::optional<Stop> stop;
  std::size_t passedBytes[2] = {0, 0};  ///< by direction
  std::vector<std::size_t> ends[2];     ///< by direction
  SpoiledLine lines[2];                 ///< by direction
  FrameRoad road;
  std::size_t frameCount = 0;  ///< from the iPod, since it was plugged in
  std::optional<std::size_t> swappedFrame;
  simulator::Bytes deferred;  ///< of the swapped frame, until the next one arrives
  bool swapped = false;
  Delivery delivery;
  std::optional<Time> heldUntil;  ///< nothing can be read before this time
  bool isOpen = false;
  std::vector<BYTE> unread;
  std::vector<BYTE> written;  ///< empty; the memory of the last write, for the next one
};

}  // namespace virtual_platform
