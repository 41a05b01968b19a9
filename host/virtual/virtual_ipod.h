// A simulated iPod at the end of a device's name, in the world's time.
#ifndef VIRTUAL_IPOD_H
#define VIRTUAL_IPOD_H

#include <cstddef>
#include <optional>
#include <utility>
#include <vector>

#include "byte_fault.h"
#include "device/simulated_ipod.h"
#include "frame_road.h"
#include "virtual_device.h"

namespace virtual_platform {

// What a program finds at a device whose iPod is pulled while it is open. Except where a write
// fails, nobody takes what is written.
enum class Loss {
  kEndOfFile,   // reads end with no bytes
  kReadError,   // reads fail
  kWriteError,  // writes fail, reads wait for ever
  kSilence,     // reads wait for ever
  kGone         // reads and writes fail
};

enum class Direction { kFromIpod, kToIpod };

// How a program gets the bytes that the iPod has sent.
struct Delivery {
  std::optional<std::size_t> pauseAt;  // a read ends behind so many bytes, and the next one waits
  Time pause{0};                       // for so long
  std::size_t longestRead = static_cast<std::size_t>(-1);
  Time gathering{0};  // so long after the first byte that is there, everything comes in one read
};

class VirtualIpod final : public VirtualDevice {
 public:
  // The iPod, which must outlive this, is plugged at the world's start.
  VirtualIpod(simulator::SimulatedIpod& device, simulator::FrameKind frames);

  void plug(Time now);
  void unplug(Time now, Loss how);
  // Pulls it, once, as soon as so many bytes of a direction have passed since it was plugged. Those
  // still arrive.
  void unplugAfter(Direction direction, std::size_t bytes, Loss how);
  // Pulls it then, unless it is plugged again before.
  void unplugAt(Time moment, Loss how) { pull = Pull{moment, how}; }
  // Spoils the bytes of a direction until it is plugged again.
  void spoil(Direction direction, const ByteFault& fault);
  bool hasSpoiled(Direction direction) const { return lines[indexOf(direction)].hasStruck(); }

  // The frame from the iPod with this number, from 0, comes behind the one that follows it, if it
  // is not plugged again before.
  void swapFrame(std::size_t number);
  bool hasSwapped() const { return swapped; }
  // Until it is plugged again.
  void deliver(const Delivery& wanted) { delivery = wanted; }
  // Until it is plugged again.
  void rewrite(FrameRewriter wanted) { road.rewrite(std::move(wanted)); }
  bool hasRewritten() const { return road.hasRewritten(); }

  // It takes so many bytes of what is written and no more: writes and flushes wait. So long after
  // the first of them has begun to wait, it is pulled.
  void stopReading(std::size_t bytes, Time patience, Loss how);
  bool hasStoppedReading() const { return stop && stop->isFelt; }

  bool isPlugged() const { return !loss; }
  // Since it was plugged.
  std::size_t passed(Direction direction) const { return passedBytes[indexOf(direction)]; }
  // Since it was plugged, what had passed behind each frame; to the iPod, behind each write.
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
  std::size_t passedBytes[2] = {0, 0};  // by direction
  std::vector<std::size_t> ends[2];     // by direction
  SpoiledLine lines[2];                 // by direction
  FrameRoad road;
  std::size_t frameCount = 0;  // from the iPod, since it was plugged
  std::optional<std::size_t> swappedFrame;
  simulator::Bytes deferred;  // of the swapped frame, until the next one comes
  bool swapped = false;
  Delivery delivery;
  std::optional<Time> heldUntil;  // nothing can be read before
  bool isOpen = false;
  std::vector<BYTE> unread;
};

}  // namespace virtual_platform

#endif
