#include "recorder/open_devices.h"

#include <gtest/gtest.h>

namespace recorder::devices {
namespace {

HANDLE handleOf(uintptr_t number) { return reinterpret_cast<HANDLE>(number); }

TEST(DeviceName, IsThatOfAnIpodOrASerialPort) {
  for (const WCHAR* const name : {u"IPD1:", u"ipd1:", u"COM1:", u"Com12", u"IPD9"})
    EXPECT_TRUE(isDeviceName(name));
  for (const WCHAR* const name : {u"", u"IPD", u"IPD:", u"COM1:x", u"COMA:", u"\\COM1:", u"IPE1:",
                                  u"CO1:", u"COM1::", u"\\Storage Card\\ipod.trace"})
    EXPECT_FALSE(isDeviceName(name));
  EXPECT_FALSE(isDeviceName(nullptr));
}

TEST(DeviceName, IsCopiedWithQuestionMarksForOtherCharacters) {
  char name[trace::kDeviceSize + 1];
  copyDeviceName(u"IPD1:\u00e9\u65e5", name);
  EXPECT_STREQ(name, "IPD1:??");
}

TEST(OpenDevices, AreFoundUntilTheirHandleIsFree) {
  OpenDevices devices;
  ASSERT_TRUE(devices.add(handleOf(4), "IPD1:"));
  ASSERT_TRUE(devices.add(handleOf(8), "COM1:"));
  EXPECT_EQ(devices.count(), 2u);
  EXPECT_STREQ(devices.find(handleOf(8))->name, "COM1:");
  devices.find(handleOf(4))->handle = nullptr;
  EXPECT_EQ(devices.find(handleOf(4)), nullptr);
  EXPECT_EQ(devices.count(), 1u);
}

TEST(OpenDevices, DistinguishTwoOpeningsWithOneHandle) {
  OpenDevices devices;
  ASSERT_TRUE(devices.add(handleOf(4), "IPD1:"));
  const OpenDevice before = *devices.find(handleOf(4));
  EXPECT_NE(devices.find(before), nullptr);
  devices.find(handleOf(4))->handle = nullptr;
  ASSERT_TRUE(devices.add(handleOf(4), "IPD1:"));
  EXPECT_EQ(devices.find(before), nullptr);
}

TEST(OpenDevices, RefuseTheNinth) {
  OpenDevices devices;
  for (uintptr_t i = 1; i <= 8; ++i)
    EXPECT_TRUE(devices.add(handleOf(i), "IPD1:"));
  EXPECT_FALSE(devices.add(handleOf(9), "IPD1:"));
  EXPECT_EQ(devices.find(handleOf(9)), nullptr);
}

}  // namespace
}  // namespace recorder::devices
