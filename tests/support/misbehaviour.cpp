#include "support/misbehaviour.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <iterator>
#include <map>
#include <set>

#include "faults/fault_table.h"
#include "faults/fault_text.h"

namespace program_run {
namespace {

using simulator::FaultRow;
using simulator::FaultStage;
using simulator::SimulatedIpod;
using virtual_platform::Direction;
using virtual_platform::Loss;
using virtual_platform::VirtualIpod;

using Words = std::vector<std::string>;

constexpr std::size_t kPlaces = 6;

/// Returns the commands in which a kind of fault can happen, such as "04:0018": all commands of the
/// program's requests, or the command of its stage.
std::set<std::string> commandsOf(const FaultRow& row, const Outcome& whole) {
  if (row.stage == FaultStage::kListing) return {"04:001A"};
  if (row.stage == FaultStage::kCount) return {"04:0018"};
  std::set<std::string> commands;
  for (const simulator::Traffic& each : whole.traffic) {
    if (each.kind != simulator::Traffic::Kind::kReceived) continue;
    char command[16];
    std::snprintf(command, sizeof command, "%02X:%04X", each.message.lingo, each.message.command);
    commands.insert(command);
  }
  return commands;
}

/// Returns the numbers to try, by the name of the number in the fault table.
Words valuesOf(const FaultRow& row) {
  static const std::map<std::string, Words> kValues = {{"", {""}},
                                                       {"MS", {"=1500", "=300"}},
                                                       {"ID", {"=0x7F"}},
                                                       {"STATUS", {"=2", "=6"}},
                                                       {"N[/MS]", {"=4/200"}}};
  const auto found = kValues.find(row.values);
  return found != kValues.end() ? found->second : Words{"=3", "=0", "=200"};
}

Misbehaviour fault(const FaultRow& row, const std::string& text, bool happensOnce) {
  return {text, row.name, happensOnce, happensOnce && row.survivable,
          [text](SimulatedIpod& ipod, VirtualIpod&) { simulator::addFault(ipod.faults(), text); }};
}

/// Returns some places, spread over `length`.
std::vector<std::size_t> placesIn(std::size_t length) {
  std::vector<std::size_t> places;
  for (std::size_t i = 0; i < kPlaces; ++i)
    places.push_back((2 * i + 1) * length / (2 * kPlaces));
  return places;
}

/// Returns the faults in which the simulator pulls its cable.
Group cableFaults(const FaultRow& row, const Outcome& whole) {
  Group group;
  for (const std::size_t place : placesIn(whole.bytesFrom(Direction::kFromIpod)))
    group.push_back(fault(row, row.name + ("=" + std::to_string(place)), false));
  return group;
}

void addKind(std::vector<Group>& groups, const FaultRow& row, const Outcome& whole) {
  if (row.stage == FaultStage::kCable) {
    groups.push_back(cableFaults(row, whole));
    return;
  }
  Group once;
  Group eachTime;
  for (const std::string& command : commandsOf(row, whole)) {
    for (const std::string& value : valuesOf(row)) {
      const std::string text = row.name + value + "@" + command;
      once.push_back(fault(row, text + "#1", true));
      eachTime.push_back(fault(row, text, false));
    }
  }
  groups.push_back(once);
  groups.push_back(eachTime);
}

void addRandomFaults(std::vector<Group>& groups) {
  Group group;
  for (const char* const text : {"random=5", "random=1", "random=20", "random=100"}) {
    group.push_back({text, "random", false, false, [text](SimulatedIpod& ipod, VirtualIpod&) {
                       simulator::addFault(ipod.faults(), text);
                     }});
  }
  groups.push_back(group);
}

struct NamedLoss {
  const char* name;
  Loss how;
};

constexpr NamedLoss kLosses[] = {{"gone", Loss::kGone},
                                 {"silence", Loss::kSilence},
                                 {"end-of-file", Loss::kEndOfFile},
                                 {"read-error", Loss::kReadError},
                                 {"write-error", Loss::kWriteError}};

Misbehaviour pullAfterBytes(const NamedLoss& loss, std::size_t bytes) {
  return {std::string("pull-") + loss.name + "-after-" + std::to_string(bytes) + "-bytes", "pull",
          false, false, [=](SimulatedIpod&, VirtualIpod& cable) {
            cable.unplugAfter(Direction::kFromIpod, bytes, loss.how);
          }};
}

Misbehaviour pullAtTime(const NamedLoss& loss, std::chrono::milliseconds moment) {
  return {std::string("pull-") + loss.name + "-at-" + std::to_string(moment.count()) + "-ms",
          "pull", false, false,
          [=](SimulatedIpod&, VirtualIpod& cable) { cable.unplugAt(moment, loss.how); }};
}

/// Adds places by time and by bytes: lists are read in a short time, and few bytes pass while
/// something plays.
void addPulledCables(std::vector<Group>& groups, const Outcome& whole) {
  const auto took = std::chrono::duration_cast<std::chrono::milliseconds>(whole.took);
  for (const std::size_t bytes : placesIn(whole.bytesFrom(Direction::kFromIpod))) {
    Group group;
    for (const NamedLoss& loss : kLosses)
      group.push_back(pullAfterBytes(loss, bytes));
    groups.push_back(group);
  }
  for (const std::size_t moment : placesIn(static_cast<std::size_t>(took.count()))) {
    Group group;
    for (const NamedLoss& loss : kLosses)
      group.push_back(pullAtTime(loss, std::chrono::milliseconds(moment)));
    groups.push_back(group);
  }
}

}  // namespace

std::vector<Group> misbehavioursOf(const Outcome& whole) {
  std::vector<Group> groups;
  std::for_each(simulator::faultRowsBegin(), simulator::faultRowsEnd(),
                [&](const FaultRow& row) { addKind(groups, row, whole); });
  addRandomFaults(groups);
  addPulledCables(groups, whole);
  return groups;
}

}  // namespace program_run
