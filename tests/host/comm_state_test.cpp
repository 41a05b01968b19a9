#include "coredll/comm_state.h"

#include <gtest/gtest.h>

#include <ostream>

namespace {

/// Returns a DCB of 57600 baud, 8 bits, no parity, one stop bit.
DCB plainState() {
  DCB state = {};
  state.BaudRate = 57600;
  state.ByteSize = 8;
  state.Parity = NOPARITY;
  state.StopBits = ONESTOPBIT;
  return state;
}

struct LineRow {
  const char* name;
  DWORD baudRate;
  BYTE byteSize;
  BYTE parity;
  BYTE stopBits;
  speed_t speed;
  tcflag_t flags;  // of those for size, parity and stop bits
};

void PrintTo(const LineRow& row, std::ostream* out) { *out << row.name; }

class LineSettings : public testing::TestWithParam<LineRow> {
 protected:
  static constexpr tcflag_t kFlags = CSIZE | PARENB | PARODD | CSTOPB;
};

TEST_P(LineSettings, AreTranslatedForTheKernel) {
  DCB state = {};
  state.BaudRate = GetParam().baudRate;
  state.ByteSize = GetParam().byteSize;
  state.Parity = GetParam().parity;
  state.StopBits = GetParam().stopBits;
  termios line = {};
  line.c_cflag = kFlags | CREAD;
  ASSERT_TRUE(coredll::putLineSettings(state, line));
  EXPECT_EQ(cfgetospeed(&line), GetParam().speed);
  EXPECT_EQ(cfgetispeed(&line), GetParam().speed);
  EXPECT_EQ(line.c_cflag & kFlags, GetParam().flags);
  EXPECT_NE(line.c_cflag & CREAD, 0u) << "what is not a setting of the line stays";
}

TEST_P(LineSettings, AreTranslatedForPrograms) {
  termios line = {};
  cfsetspeed(&line, GetParam().speed);
  line.c_cflag |= GetParam().flags;
  DCB state = {};
  coredll::getLineSettings(line, state);
  EXPECT_EQ(state.BaudRate, GetParam().baudRate);
  EXPECT_EQ(state.ByteSize, GetParam().byteSize);
  EXPECT_EQ(state.Parity, GetParam().parity);
  EXPECT_EQ(state.StopBits, GetParam().stopBits);
}

INSTANTIATE_TEST_SUITE_P(
    Line, LineSettings,
    testing::Values(
        LineRow{"PlainWithSlowest", 300, 8, NOPARITY, ONESTOPBIT, B300, CS8},
        LineRow{"Plain9600", 9600, 8, NOPARITY, ONESTOPBIT, B9600, CS8},
        LineRow{"Plain19200", 19200, 8, NOPARITY, ONESTOPBIT, B19200, CS8},
        LineRow{"Plain38400", 38400, 8, NOPARITY, ONESTOPBIT, B38400, CS8},
        LineRow{"Plain57600", 57600, 8, NOPARITY, ONESTOPBIT, B57600, CS8},
        LineRow{"Plain115200", 115200, 8, NOPARITY, ONESTOPBIT, B115200, CS8},
        LineRow{"PlainWithFastest", 921600, 8, NOPARITY, ONESTOPBIT, B921600, CS8},
        LineRow{"FiveBits", 57600, 5, NOPARITY, ONESTOPBIT, B57600, CS5},
        LineRow{"SixBits", 57600, 6, NOPARITY, ONESTOPBIT, B57600, CS6},
        LineRow{"SevenBitsEven", 57600, 7, EVENPARITY, ONESTOPBIT, B57600, CS7 | PARENB},
        LineRow{"OddParity", 57600, 8, ODDPARITY, ONESTOPBIT, B57600, CS8 | PARENB | PARODD},
        LineRow{"TwoStopBits", 57600, 8, NOPARITY, TWOSTOPBITS, B57600, CS8 | CSTOPB}));

TEST(PutLineSettings, RefusesWhatALineCannotHave) {
  termios line = {};
  DCB state = plainState();
  EXPECT_TRUE(coredll::putLineSettings(state, line));
  state.BaudRate = 57601;
  EXPECT_FALSE(coredll::putLineSettings(state, line));
  state = plainState();
  state.ByteSize = 9;
  EXPECT_FALSE(coredll::putLineSettings(state, line));
  state = plainState();
  state.Parity = 3;
  EXPECT_FALSE(coredll::putLineSettings(state, line));
  state = plainState();
  state.StopBits = 1;
  EXPECT_FALSE(coredll::putLineSettings(state, line));
}

TEST(GetLineSettings, ReturnsZeroForAnUnusualSpeed) {
  termios line = {};
  cfsetspeed(&line, B50);
  DCB state = {};
  state.BaudRate = 1;
  coredll::getLineSettings(line, state);
  EXPECT_EQ(state.BaudRate, 0u);
}

}  // namespace
