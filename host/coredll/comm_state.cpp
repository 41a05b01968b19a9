#include "comm_state.h"

#include <cstring>

namespace coredll {
namespace {

/// A setting of the platform and the kernel's bits for it.
struct Setting {
  DWORD value;
  tcflag_t bits;
};

constexpr Setting kSpeeds[] = {
    {300, B300},       {600, B600},       {1200, B1200},     {2400, B2400},     {4800, B4800},
    {9600, B9600},     {19200, B19200},   {38400, B38400},   {57600, B57600},   {115200, B115200},
    {230400, B230400}, {460800, B460800}, {500000, B500000}, {921600, B921600},
};
constexpr Setting kByteSizes[] = {{5, CS5}, {6, CS6}, {7, CS7}, {8, CS8}};
constexpr Setting kParities[] = {{NOPARITY, 0}, {ODDPARITY, PARENB | PARODD}, {EVENPARITY, PARENB}};
constexpr Setting kStopBits[] = {{ONESTOPBIT, 0}, {TWOSTOPBITS, CSTOPB}};

template <typename Table>
const Setting* findValue(const Table& table, DWORD value) {
  for (const Setting& setting : table) {
    if (setting.value == value) return &setting;
  }
  return nullptr;
}

template <typename Table>
DWORD valueOf(const Table& table, tcflag_t bits) {
  for (const Setting& setting : table) {
    if (setting.bits == bits) return setting.value;
  }
  return 0;
}

constexpr tcflag_t kParityBits = PARENB | PARODD;

}  // namespace

bool putLineSettings(const DCB& state, termios& line) {
  const Setting* const speed = findValue(kSpeeds, state.BaudRate);
  const Setting* const byteSize = findValue(kByteSizes, state.ByteSize);
  const Setting* const parity = findValue(kParities, state.Parity);
  const Setting* const stopBits = findValue(kStopBits, state.StopBits);
  if (!speed || !byteSize || !parity || !stopBits) return false;
  line.c_cflag &= ~(tcflag_t{CSIZE} | kParityBits | tcflag_t{CSTOPB});
  line.c_cflag |= byteSize->bits | parity->bits | stopBits->bits;
  return cfsetspeed(&line, speed->bits) == 0;
}

bool isUsualSpeed(DWORD speed) { return findValue(kSpeeds, speed) != nullptr; }

std::string usualSpeeds() {
  std::string all;
  for (const Setting& speed : kSpeeds)
    all += (all.empty() ? "" : " ") + std::to_string(speed.value);
  return all;
}

void putSpeed(DWORD speed, termios& line) {
  DCB state = {};
  state.BaudRate = speed;
  state.ByteSize = 8;
  state.Parity = NOPARITY;
  state.StopBits = ONESTOPBIT;
  putLineSettings(state, line);
}

void getLineSettings(const termios& line, DCB& state) {
  state.BaudRate = valueOf(kSpeeds, cfgetospeed(&line));
  state.ByteSize = static_cast<BYTE>(valueOf(kByteSizes, line.c_cflag & CSIZE));
  state.Parity = static_cast<BYTE>(valueOf(kParities, line.c_cflag & kParityBits));
  state.StopBits = static_cast<BYTE>(valueOf(kStopBits, line.c_cflag & CSTOPB));
}

bool differInSettingsOnly(const DCB& wanted, const DCB& current) {
  DCB same = wanted;
  same.DCBlength = current.DCBlength;
  same.BaudRate = current.BaudRate;
  same.fRtsControl = current.fRtsControl;
  same.ByteSize = current.ByteSize;
  same.Parity = current.Parity;
  same.StopBits = current.StopBits;
  return std::memcmp(&same, &current, sizeof same) == 0;
}

}  // namespace coredll
