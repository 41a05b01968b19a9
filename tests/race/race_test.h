#pragma once

#include <gtest/gtest.h>

#include "race/tally.h"
#include "support/session_ipod.h"

/// Host threads beside one another and beside an iPod that talks and is pulled, on the real
/// platform.
///
/// RACE_ALL=1 tries every pair of exports instead of every 13th, RACE_SECONDS=<n> lets the threads
/// of the long races run so long.
namespace race {

/// The time of this process.
Duration now();

/// Whole or a slice of a race with this many points.
bool isInSlice(size_t point);

/// An iPod, and a library that was connected once.
class RaceTest : public testing::Test {
 protected:
  void SetUp() override;
  void TearDown() override;

  /// Connects when there is no connection, and leaves a list open and a track playing.
  void prepare();
  /// Ends what went wrong, connects when there is no connection, and expects a session to succeed.
  void recover();
  /// What a short session with a connected iPod reads.
  void expectASession();
  /// Expects that these calls kept their promises, and came back in time where the calls under way
  /// wait for so many answers together.
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
