// The text of one line of a trace. It allocates nothing and calls no library, so that a recorder on
// Windows CE can use it, too.
#pragma once

#include <cstddef>
#include <cstdint>

namespace trace {

/// The line that every trace begins with.
constexpr char kFirstLine[] = "# ipodctl-trace 1\n";

/// What a person who opens the file must know; recorders write it after the first line.
constexpr char kWarning[] =
    "# It contains the iPod's name and serial number, and the titles of its music.\n"
    "# iaptrace redact FILE replaces them.\n";

/// Who sent the bytes.
enum class Direction : char {
  kRead = '<',     ///< the host read them
  kWritten = '>',  ///< the host wrote them
};

/// What happened to a device. The last four have a code: of GetLastError, in decimal.
enum class Event { kOpened, kClosed, kOpenFailed, kReadFailed, kWriteFailed };

/// The number of bytes in one data line, and of characters in a device's name, at most. A recorder
/// writes more bytes as several lines with the same time.
constexpr size_t kBytesALine = 1024;
constexpr size_t kDeviceSize = 64;

/// The length of the longest line, its line feed included.
constexpr size_t kLongestLine = 3 * kBytesALine + kDeviceSize + 64;

/// Where and when: microseconds since the recording began, and the name as the host opened it.
struct Place {
  uint64_t micros;
  const char* device;
};

/// Each writes one line, with its line feed and without a NUL, and returns its length. `out` has
/// room for kLongestLine characters. A character of a device's name that is not visible ASCII
/// becomes '?'; what is too long is cut.
size_t dataLine(char* out, Place place, Direction direction, const uint8_t* bytes, size_t count);
size_t eventLine(char* out, Place place, Event event, uint32_t code = 0);
/// "# SECONDS.MICROS audio CALL VALUES"; `call` is the call and its values, at most kBytesALine.
size_t audioLine(char* out, uint64_t micros, const char* call);
/// "# SECONDS.MICROS DEVICE TEXT", a comment for a person; at most kBytesALine of `text`.
size_t commentLine(char* out, Place place, const char* text);

}  // namespace trace
