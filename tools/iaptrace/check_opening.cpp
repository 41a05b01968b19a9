// Devices that cannot be opened.

#include <algorithm>
#include <iterator>

#include "iaptrace/check_rules.h"

namespace iaptrace::checking {
namespace {

// The codes of GetLastError, as Windows CE, Windows and the Linux host use them.
constexpr uint32_t kMissingCodes[] = {
    2,     // ERROR_FILE_NOT_FOUND
    3,     // ERROR_PATH_NOT_FOUND
    15,    // ERROR_INVALID_DRIVE
    20,    // ERROR_BAD_UNIT
    53,    // ERROR_BAD_NETPATH
    55,    // ERROR_DEV_NOT_EXIST
    123,   // ERROR_INVALID_NAME
    433,   // ERROR_NO_SUCH_DEVICE
    1167,  // ERROR_DEVICE_NOT_CONNECTED
    1200,  // ERROR_BAD_DEVICE
};
constexpr uint32_t kBusyCodes[] = {
    5,     // ERROR_ACCESS_DENIED
    32,    // ERROR_SHARING_VIOLATION
    33,    // ERROR_LOCK_VIOLATION
    142,   // ERROR_BUSY_DRIVE
    170,   // ERROR_BUSY
    231,   // ERROR_PIPE_BUSY
    2404,  // ERROR_DEVICE_IN_USE
};

template <size_t kCount>
bool isIn(const uint32_t (&codes)[kCount], uint32_t code) {
  return std::find(std::begin(codes), std::end(codes), code) != std::end(codes);
}

bool opensLater(const Case& trace, const FailedOpening& failed) {
  const auto last = trace.lastOpenings.find(failed.device);
  return last != trace.lastOpenings.end() && last->second > failed.line;
}

/// A device that opens later was only not there yet, or still in use.
template <typename IsWanted>
void findOpenings(const Case& trace, Diagnosis& diagnosis, const char* cause, IsWanted isWanted) {
  for (const FailedOpening& opening : trace.failedOpenings) {
    const bool isFault = isWanted(opening.code) && !opensLater(trace, opening);
    const std::string detail = "Opening failed with code " + std::to_string(opening.code) + ".";
    if (isFault) diagnosis.add(cause, {opening.line}, detail);
  }
}

bool isOtherCode(uint32_t code) { return !isIn(kMissingCodes, code) && !isIn(kBusyCodes, code); }

}  // namespace

void findMissingDevice(const Case& trace, Diagnosis& diagnosis) {
  findOpenings(trace, diagnosis, "device-missing",
               [](uint32_t code) { return isIn(kMissingCodes, code); });
}

void findBusyDevice(const Case& trace, Diagnosis& diagnosis) {
  findOpenings(trace, diagnosis, "device-busy",
               [](uint32_t code) { return isIn(kBusyCodes, code); });
}

void findUnknownOpening(const Case& trace, Diagnosis& diagnosis) {
  findOpenings(trace, diagnosis, "unknown", isOtherCode);
}

void noteLateDevice(const Case& trace, Diagnosis& diagnosis) {
  for (const FailedOpening& opening : trace.failedOpenings) {
    if (!opensLater(trace, opening)) continue;
    diagnosis.addNote("the device could not be opened at first, but later", {opening.line});
  }
}

}  // namespace iaptrace::checking
