#include "virtual/disturbances.h"

#include <memory>
#include <utility>

#include "virtual/failures.h"
#include "virtual/forged_frame.h"
#include "virtual/sweep.h"

namespace virtual_session {
namespace {

using simulator::FaultKind;
using simulator::FaultTarget;
using std::chrono::milliseconds;
using virtual_platform::ByteFault;
using virtual_platform::ComingFrame;
using virtual_platform::Direction;
using virtual_platform::Failures;
using virtual_platform::failuresOf;
using virtual_platform::FrameRewriter;

/// Returns so many places, spread over `length`.
std::vector<std::size_t> placesIn(std::size_t length, std::size_t count) {
  std::vector<std::size_t> places;
  for (std::size_t i = 0; i < count; ++i)
    places.push_back((2 * i + 1) * length / (2 * count));
  return places;
}

/// The size of an undisturbed session.
struct Extent {
  std::size_t bytes[2];  ///< by direction
  std::size_t frames;    ///< from the iPod

  std::size_t bytesOf(Direction direction) const {
    return bytes[static_cast<std::size_t>(direction)];
  }
};

Extent extentOf(const Script& script) {
  VirtualSession session(1, script);
  session.run([&] { session.play(); });
  return {{session.cable.passed(Direction::kFromIpod), session.cable.passed(Direction::kToIpod)},
          session.cable.frameEnds(Direction::kFromIpod).size()};
}

using List = std::vector<Disturbance>;

void addUnplugs(List& list, const Extent& extent) {
  constexpr std::size_t kPlaces = 10;
  for (const Direction direction : kDirections) {
    std::size_t next = 0;
    for (const std::size_t at : placesIn(extent.bytesOf(direction), kPlaces)) {
      const auto loss = kLosses[next++ % std::size(kLosses)];
      list.push_back(
          {"unplug-" + nameOf(direction) + "-" + std::to_string(at) + "-" + nameOf(loss), "cable",
           [=](VirtualSession& session) { session.cable.unplugAfter(direction, at, loss); },
           [](VirtualSession& session) { return !session.cable.isPlugged(); }});
    }
  }
}

void addByteFaults(List& list, const Extent& extent) {
  constexpr std::size_t kPlaces = 6;
  constexpr ByteFault::Kind kKinds[] = {ByteFault::Kind::kFlipped, ByteFault::Kind::kLost};
  constexpr BYTE kBit = 0x10;
  for (const Direction direction : kDirections) {
    std::size_t next = 0;
    for (const std::size_t at : placesIn(extent.bytesOf(direction), kPlaces)) {
      const ByteFault fault{kKinds[next++ % std::size(kKinds)], at, kBit};
      list.push_back(
          {"byte-" + nameOf(direction) + "-" + std::to_string(at), "byte-" + nameOf(direction),
           [=](VirtualSession& session) { session.cable.spoil(direction, fault); },
           [=](VirtualSession& session) { return session.cable.hasSpoiled(direction); }});
    }
  }
}

Disturbance frameFault(const std::string& name, FaultKind kind, uint32_t value, std::size_t frame) {
  const auto before = std::make_shared<std::size_t>(0);
  return {name + "-" + std::to_string(frame), name,
          [=](VirtualSession& session) {
            *before = session.ipod.faults().injected(kind);
            const auto number = static_cast<uint32_t>(frame + 1);
            session.ipod.faults().add({kind, FaultTarget::everything().nth(number), value});
          },
          [=](VirtualSession& session) { return session.ipod.faults().injected(kind) > *before; }};
}

void addFrameFaults(List& list, const Extent& extent) {
  constexpr std::size_t kPlaces = 5;
  constexpr uint32_t kLateMilliseconds = 1100;
  for (const std::size_t frame : placesIn(extent.frames, kPlaces)) {
    list.push_back(frameFault("lost", FaultKind::kLost, 0, frame));
    list.push_back(frameFault("doubled", FaultKind::kDoubled, 0, frame));
    list.push_back(frameFault("late", FaultKind::kLate, kLateMilliseconds, frame));
  }
}

void addForgeries(List& list, const Extent& extent) {
  constexpr std::size_t kPlaces = 4;
  const auto add = [&list](const std::string& name, const FrameRewriter& rewriter) {
    list.push_back({name, "answers",
                    [=](VirtualSession& session) { session.cable.rewrite(rewriter); },
                    [](VirtualSession& session) { return session.cable.hasRewritten(); }});
  };
  for (const std::size_t frame : placesIn(extent.frames, kPlaces)) {
    add("silence-from-" + std::to_string(frame), [frame](std::size_t at, const Bytes& bytes) {
      return at < frame ? atOnce({bytes}) : atOnce({});
    });
    add("refused-" + std::to_string(frame), [frame](std::size_t at, const Bytes& bytes) {
      const ForgedFrame forged(bytes);
      return atOnce({at == frame ? forged.acknowledgement(4, forged.request()) : bytes});
    });
  }
}

void addStalls(List& list, const Extent& extent) {
  constexpr std::size_t kPlaces = 5;
  std::size_t next = 0;
  for (const std::size_t at : placesIn(extent.bytesOf(Direction::kToIpod), kPlaces)) {
    const auto loss = kLosses[next++];
    list.push_back({"takes-" + std::to_string(at) + "-" + nameOf(loss), "writes",
                    [=](VirtualSession& session) {
                      session.cable.stopReading(at, milliseconds(kStallOfADisturbance), loss);
                    },
                    [](VirtualSession& session) { return session.cable.hasStoppedReading(); }});
  }
}

void addFailures(List& list, const Script& script) {
  for (const char* const function :
       {"CreateThread", "CreateFileW", "ReadFile", "WriteFile", "FlushFileBuffers", "allocation"}) {
    Failures& failures = failuresOf(function);
    VirtualSession session(1, script);
    const std::size_t before = failures.asked();
    session.run([&] { session.play(); });
    std::size_t last = static_cast<std::size_t>(-1);
    for (const std::size_t allowed : placesIn(failures.asked() - before, 4)) {
      if (allowed == last) continue;
      last = allowed;
      const bool andAllLater = allowed % 2 != 0;
      list.push_back({std::string(function) + "-" + std::to_string(allowed) +
                          (andAllLater ? "-always" : "-once"),
                      function,
                      [=, &failures](VirtualSession&) {
                        failures.arm({allowed, andAllLater});
                      },
                      [&failures](VirtualSession&) { return failures.struck() > 0; }});
    }
  }
}

}  // namespace

std::vector<Disturbance> disturbancesOf(const Script& script) {
  const Extent extent = extentOf(script);
  List list;
  addUnplugs(list, extent);
  addByteFaults(list, extent);
  addFrameFaults(list, extent);
  addForgeries(list, extent);
  addStalls(list, extent);
  addFailures(list, script);
  return list;
}

}  // namespace virtual_session
