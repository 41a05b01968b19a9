// What the sweeps find wrong with a call.
#include "virtual/promises.h"

#include <gtest/gtest.h>

namespace virtual_session {
namespace {

Call callThat(const std::string& name, int result, const std::vector<std::string>& written,
              Time took = Time(0)) {
  Call call;
  call.name = name;
  call.result = result;
  call.written = written;
  call.took = took;
  return call;
}

std::string faultOf(const Call& call) { return findFault({call}, exportPromises()); }

TEST(FindFault, ReportsACallThatTakesTooLong) {
  const Time second = std::chrono::seconds(1);
  EXPECT_EQ(faultOf(callThat("IpodGetName", 0, {"Pod"}, second)), "");
  EXPECT_EQ(faultOf(callThat("IpodGetName", 0, {"Pod"}, 2 * second)),
            "IpodGetName 0 Pod after 2000 ms");
}

TEST(FindFault, AllowsForSimultaneousCallsOfOtherThreads) {
  const Time second = std::chrono::seconds(1);
  Call other = callThat("IpodGetSerialNumber", 0, {"-"}, second);
  other.thread = 1;
  const Call late = callThat("IpodGetName", 0, {"Pod"}, 2 * second);
  EXPECT_EQ(findFault({other, late}, exportPromises()), "");
  other.start = 3 * second;
  EXPECT_NE(findFault({other, late}, exportPromises()), "");
}

TEST(FindFault, ReportsACallThatWaitsForOthersAlthoughItTakesNoLock) {
  Call other = callThat("IpodGetSerialNumber", 0, {"-"}, std::chrono::seconds(1));
  other.thread = 1;
  const Time late = std::chrono::milliseconds(900);
  EXPECT_NE(findFault({other, callThat("IpodIsConnect", 1, {}, late)}, exportPromises()), "");
}

TEST(FindFault, ReportsACallThatReturnsOrWritesAnIllegalValue) {
  EXPECT_NE(faultOf(callThat("IpodConnect", 2, {})), "");
  EXPECT_NE(faultOf(callThat("IpodGetShuffleMode", 0, {"4"})), "");
  EXPECT_NE(faultOf(callThat("IpodGetTrackIndex", 0, {"3"})), "");
  EXPECT_NE(faultOf(callThat("IpodGetTrackInfo", -1, {"-", "-", "x", "-", "-", "-"})), "");
  EXPECT_NE(faultOf(callThat("IpodGetNextItem", 0, {"5"})), "");
  EXPECT_NE(faultOf(callThat("IpodGetItemName", 0, {"Ab", "c"})), "");
  EXPECT_NE(faultOf(callThat("Nobody", 0, {})), "");
}

TEST(FindFault, ReportsACallThatWritesOutsideItsBuffer) {
  Text text(2);
  EXPECT_TRUE(text.isIntact());
  text.data()[0] = 'A';
  text.data()[1] = 0xFFFF;
  EXPECT_TRUE(text.isIntact());
  EXPECT_EQ(text.words(), "A<FFFF>");
  text.data()[2] = 0;
  EXPECT_FALSE(text.isIntact());
  Call call = callThat("IpodGetName", 0, {"A"});
  call.isIntact = false;
  EXPECT_EQ(faultOf(call), "IpodGetName 0 A after 0 ms, and wrote where it may not");
}

TEST(FindFault, ReportsAContradictionAboutTheConnection) {
  const Call yes = callThat("IpodIsConnect", 1, {});
  const Call no = callThat("IpodIsConnect", 0, {});
  const auto fault = [](const Calls& calls) { return findFault(calls, exportPromises()); };
  EXPECT_EQ(fault({callThat("IpodConnect", 1, {}), yes, callThat("IpodDisconnect", 0, {}), no}),
            "");
  EXPECT_EQ(fault({callThat("IpodConnect", 1, {}), no}),
            "IpodIsConnect 0 after 0 ms, against the calls before");
  EXPECT_NE(fault({callThat("IpodDisconnect", 0, {}), yes}), "");
  EXPECT_NE(fault({no, callThat("IpodConnect", 0, {}), yes}), "");
}

TEST(Output, IsNotIntactWithAHole) {
  Text text(3);
  text.data()[0] = 'A';
  text.data()[2] = 'C';
  EXPECT_FALSE(text.isIntact());
}

}  // namespace
}  // namespace virtual_session
