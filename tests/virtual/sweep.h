#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <string>

#include "session/host_folder.h"
#include "virtual/virtual_session.h"

/// A short session disturbed at every place, each time from the same start. Whatever happens, calls
/// end in time with results that they promise, nothing stays open, and the next session succeeds.
///
/// A failure names its case; VIRTUAL_CASE=<name> runs that one alone, the same again, and shows what
/// the platform was asked. VIRTUAL_ALL=1 tries every point of the sweeps that else try every 13th.
namespace virtual_session {

enum class Outcome {
  kAnyPromised,  ///< calls may return whatever they promise
  kFullSession   ///< nothing is lost: the calls return what they always do
};

struct Case {
  std::string place;  ///< what is done, and where
  std::uint64_t seed;
  std::function<void(VirtualSession&)> disturb;
  std::function<bool(VirtualSession&)> hasStruck;  ///< asked behind the disturbed session
  Outcome outcome = Outcome::kAnyPromised;

  std::string name() const { return place + ":seed-" + std::to_string(seed); }
};

/// Whether one case is to be run alone.
bool isReplay();

class Sweep : public testing::Test {
 protected:
  Sweep();
  void TearDown() override;

  void tryCase(const Case& each);
  /// As tryCase, unless a slice leaves it out.
  void tryPoint(const Case& each);

  int cases = 0;
  int strikes = 0;

 private:
  const session::HostFolder folder;  // without a logo
  std::uint64_t points = 0;
};

/// How many bytes of a direction an undisturbed session has.
std::size_t bytesOfASession(virtual_platform::Direction direction);

constexpr virtual_platform::Direction kDirections[] = {virtual_platform::Direction::kFromIpod,
                                                       virtual_platform::Direction::kToIpod};

/// "from-ipod"
std::string nameOf(virtual_platform::Direction direction);

}  // namespace virtual_session
