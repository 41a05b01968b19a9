#pragma once

#include <gtest/gtest.h>

#include "race/tally.h"
#include "support/session_ipod.h"

/// Several host threads at once, with an iPod that sends messages and is pulled, on the real
/// platform.
///
/// RACE_ALL=1 tries every pair of exports instead of every 13th, RACE_SECONDS=<n> sets how long the
/// threads of the long races run.
namespace race {

/// The time of this process.
Duration now();

/// Returns whether this point of a race is tried: every one, or one in 13.
bool isInSlice(size_t point);

/// An iPod, and a library that was connected once.
class RaceTest : public testing::Test {
 protected:
  void SetUp() override;
  void TearDown() override;

  /// Connects when there is no connection, and leaves a list open and a track playing.
  void prepare();
  /// Removes the faults, plugs the cable, connects if necessary, and expects a session to succeed.
  void recover();
  /// Expects the results of a short session with a connected iPod.
  void expectASession();
  /// Expects that these calls kept their promises and returned in time. `waits`: for how many
  /// answers the simultaneous calls wait together.
  void check(const Tally& tally, int waits);

  session::SessionIpod ipod;
  int cases = 0;
  int strikes = 0;
  Duration longest{0};

 private:
  void readEverything();

  session::OpenThings atStart;
};

}  // namespace race
