// A heap that returns null for zero bytes. A C library may do so for malloc(0), and the
// documentation of the device's does not say what it does.

#include <gtest/gtest.h>
#include <ipodctl.h>

#include <cstddef>

#include "support/session_ipod.h"

extern "C" void* __libc_malloc(size_t size);

namespace {

int refusedBlocks = 0;

}  // namespace

/// Replaces malloc of the C library in the whole process; the image imports it, too.
extern "C" void* malloc(size_t size) {
  if (size != 0) return __libc_malloc(size);
  ++refusedBlocks;
  return nullptr;
}

namespace {

TEST(EmptyAllocation, DoesNotLoseMessagesWithoutData) {
  volatile size_t none = 0;
  ASSERT_EQ(malloc(none), nullptr);
  refusedBlocks = 0;
  session::SessionIpod ipod;
  ASSERT_EQ(IpodConnect(), 1) << "GetAccSampleRateCaps has no data";
  EXPECT_EQ(refusedBlocks, 0);
  EXPECT_EQ(IpodDisconnect(), 0);
}

}  // namespace
