#include "iaptrace/capture_file.h"

#include <gtest/gtest.h>

#include "typed_trace.h"

namespace iaptrace::capture_file_test {
namespace {

std::string hexText(const std::string& bytes) {
  std::string text;
  for (const char one : bytes) {
    char digits[4];
    std::snprintf(digits, sizeof digits, "%02X ", static_cast<unsigned char>(one));
    text += digits;
  }
  return text;
}

TEST(CaptureFile, HasAnInterfaceAndAPacketForAFrame) {
  const std::string file =
      captureOf(trace::parseTrace(traceText("1.000002 A: > FF 55 02 00 03 FB\n")));
  EXPECT_EQ(hexText(file),
            // section header: byte order, version 1.0, unknown length
            "0A 0D 0D 0A 1C 00 00 00 4D 3C 2B 1A 01 00 00 00 FF FF FF FF FF FF FF FF 1C 00 00 00 "
            // interface: link type 147, name "A:", microseconds
            "01 00 00 00 28 00 00 00 93 00 00 00 00 00 00 00 02 00 02 00 41 3A 00 00 "
            "09 00 01 00 06 00 00 00 00 00 00 00 28 00 00 00 "
            // packet: interface 0, time, 6 bytes, comment "no answer", outbound
            "06 00 00 00 44 00 00 00 00 00 00 00 00 00 00 00 42 42 0F 00 06 00 00 00 06 00 00 00 "
            "FF 55 02 00 03 FB 00 00 01 00 09 00 6E 6F 20 61 6E 73 77 65 72 00 00 00 "
            "02 00 04 00 02 00 00 00 00 00 00 00 44 00 00 00 ");
}

}  // namespace
}  // namespace iaptrace::capture_file_test
