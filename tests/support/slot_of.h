#pragma once

#include <gtest/gtest.h>

#include <cstddef>
#include <cstring>

/// The slot of a virtual operation in its class's table, from a pointer to the member. The common
/// C++ ABI makes that 1 + the slot's offset in the table; on ARM the 1 is in the adjustment after
/// the offset.
namespace slots {

/// The destructor has two entries in front.
constexpr std::size_t kEntriesBeforeSlot1 = 2;

struct MemberPointer {
  std::size_t offset;
  std::size_t adjustment;
};

#ifdef __arm__
constexpr std::size_t MemberPointer::*kVirtualMark = &MemberPointer::adjustment;
#else
constexpr std::size_t MemberPointer::*kVirtualMark = &MemberPointer::offset;
#endif

template <class Member>
std::size_t slotOf(Member member) {
  MemberPointer parts;
  static_assert(sizeof(member) == sizeof(parts));
  std::memcpy(&parts, &member, sizeof(parts));
  EXPECT_EQ(parts.*kVirtualMark % 2, 1u) << "not virtual";
  parts.*kVirtualMark -= 1;
  return parts.offset / sizeof(void*) + 1 - kEntriesBeforeSlot1;
}

}  // namespace slots

using slots::slotOf;
