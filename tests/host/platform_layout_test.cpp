#include "host/platform_layout.h"

#include <gtest/gtest.h>

#include <cstring>

namespace {

DWORD flagsOf(const DCB& state) {
  DWORD flags = 0;
  std::memcpy(&flags, reinterpret_cast<const BYTE*>(&state) + 8, sizeof flags);
  return flags;
}

TEST(Dcb, HasItsFlagsAtTheBitsThatDriversUse) {
  DCB state = {};
  state.fBinary = 1;
  EXPECT_EQ(flagsOf(state), 0x00000001u);
  state = {};
  state.fDtrControl = 3;
  EXPECT_EQ(flagsOf(state), 0x00000030u);
  state = {};
  state.fRtsControl = 3;
  EXPECT_EQ(flagsOf(state), 0x00003000u);
  state = {};
  state.fAbortOnError = 1;
  EXPECT_EQ(flagsOf(state), 0x00004000u);
}

TEST(SpecialHandles, HaveTheValuesThatProgramsCompareWith) {
  EXPECT_EQ(reinterpret_cast<intptr_t>(INVALID_HANDLE_VALUE), -1);
  EXPECT_EQ(reinterpret_cast<uintptr_t>(HWND_BROADCAST), 0xffffu);
}

}  // namespace
