#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "support/host_folder.h"
#include "virtual/virtual_session.h"

/// Sessions disturbed at every place, each time from the same start. Whatever happens, calls return
/// in time with promised results and write only where they may, nothing stays open, and the next
/// session succeeds.
///
/// A failure prints the command that runs its case again. VIRTUAL_ALL=1 tries every point of the
/// sweeps that otherwise try a slice.
namespace virtual_session {

enum class Outcome {
  kAnyPromised,  ///< calls may return whatever they promise
  kFullSession,  ///< nothing is lost: the calls return the usual results
  kConnection    ///< as kAnyPromised; in undisturbed sessions only the connection is certain
};

struct Case {
  const Script& script;
  std::string place;  ///< what is done, and where
  std::uint64_t seed;
  std::function<void(VirtualSession&)> disturb;
  std::function<bool(VirtualSession&)> hasStruck;  ///< called after the disturbed session
  Outcome outcome = Outcome::kAnyPromised;
  Time stall{0};  ///< how long the device can keep each call waiting

  // Of a session between the disturbed one and the last one; null: there is none.
  std::function<void(VirtualSession&)> disturbNext = nullptr;
  std::function<bool(VirtualSession&)> hasStruckNext = nullptr;

  std::string name() const {
    return std::string(script.name) + ":" + place + ":seed-" + std::to_string(seed);
  }
};

/// How many orders of the threads a sweep tries at each place: in the short session and in the long
/// ones.
std::uint64_t ordersOf(const Script& script, std::uint64_t ofTheShort, std::uint64_t ofTheLong = 2);

/// Records in the test's report how many cases there were, in how many the disturbance occurred,
/// and how long each export took at most.
class Sweep : public testing::Test {
 protected:
  Sweep();
  void SetUp() override;
  void TearDown() override;

  void tryCase(const Case& each);
  /// As tryCase, unless a slice leaves it out.
  void tryPoint(const Case& each);

  int cases = 0;
  int strikes = 0;
  std::uint64_t thinning = 1;  ///< by which a slice has fewer points than usual

 private:
  void prepare(const Script& script);

  const session::HostFolder folder;
  const Script* prepared = nullptr;
  std::uint64_t points = 0;
  LongestTimes longestTimes;
};

/// Returns how many bytes an undisturbed session has in a direction.
std::size_t bytesOfASession(const Script& script, virtual_platform::Direction direction);

constexpr virtual_platform::Direction kDirections[] = {virtual_platform::Direction::kFromIpod,
                                                       virtual_platform::Direction::kToIpod};

/// "from-ipod"
std::string nameOf(virtual_platform::Direction direction);

constexpr virtual_platform::Loss kLosses[] = {
    virtual_platform::Loss::kEndOfFile, virtual_platform::Loss::kReadError,
    virtual_platform::Loss::kWriteError, virtual_platform::Loss::kSilence,
    virtual_platform::Loss::kGone};

/// "end-of-file"
std::string nameOf(virtual_platform::Loss loss);

/// A test's name of these words: "short_from_ipod".
std::string identifierOf(const std::vector<std::string>& words);

}  // namespace virtual_session
