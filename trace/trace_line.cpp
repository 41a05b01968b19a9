#include "trace/trace_line.h"

namespace trace {
namespace {

constexpr uint64_t kMicrosASecond = 1000000;

/// Appends to a line.
class Line {
 public:
  explicit Line(char* out) : begin(out), end(out) {}

  void character(char one) { *end++ = one; }

  void text(const char* words, size_t most) {
    for (; *words != 0 && most > 0; ++words, --most)
      character(isVisible(*words) || *words == ' ' ? *words : '?');
  }

  void name(const char* device) {
    size_t left = kDeviceSize;
    for (; *device != 0 && left > 0; ++device, --left)
      character(isVisible(*device) ? *device : '?');
  }

  void number(uint64_t value, int digits = 1) {
    char reversed[20];
    int count = 0;
    for (; value > 0 || count < digits; value /= 10)
      reversed[count++] = static_cast<char>('0' + value % 10);
    while (count > 0)
      character(reversed[--count]);
  }

  void time(uint64_t micros) {
    number(micros / kMicrosASecond);
    character('.');
    number(micros % kMicrosASecond, 6);
  }

  void hex(uint8_t byte) {
    constexpr char kDigits[] = "0123456789ABCDEF";
    character(kDigits[byte >> 4]);
    character(kDigits[byte & 0xF]);
  }

  size_t finish() {
    character('\n');
    return static_cast<size_t>(end - begin);
  }

 private:
  static bool isVisible(char one) { return one > ' ' && one <= '~'; }

  char* begin;
  char* end;
};

const char* textOf(Event event) {
  switch (event) {
    case Event::kOpened:
      return "open ok";
    case Event::kClosed:
      return "close";
    case Event::kOpenFailed:
      return "open failed ";
    case Event::kReadFailed:
      return "read-failed ";
    case Event::kWriteFailed:
      return "write-failed ";
  }
  return "";
}

bool hasCode(Event event) { return event != Event::kOpened && event != Event::kClosed; }

}  // namespace

size_t dataLine(char* out, Place place, Direction direction, const uint8_t* bytes, size_t count) {
  Line line(out);
  line.time(place.micros);
  line.character(' ');
  line.name(place.device);
  line.character(' ');
  line.character(static_cast<char>(direction));
  for (size_t i = 0; i < count && i < kBytesALine; ++i) {
    line.character(' ');
    line.hex(bytes[i]);
  }
  return line.finish();
}

size_t eventLine(char* out, Place place, Event event, uint32_t code) {
  Line line(out);
  line.text("# ", 2);
  line.time(place.micros);
  line.character(' ');
  line.name(place.device);
  line.character(' ');
  line.text(textOf(event), kBytesALine);
  if (hasCode(event)) line.number(code);
  return line.finish();
}

size_t commentLine(char* out, Place place, const char* text) {
  Line line(out);
  line.text("# ", 2);
  line.time(place.micros);
  line.character(' ');
  line.name(place.device);
  line.character(' ');
  line.text(text, kBytesALine);
  return line.finish();
}

size_t audioLine(char* out, uint64_t micros, const char* call) {
  Line line(out);
  line.text("# ", 2);
  line.time(micros);
  line.text(" audio ", kBytesALine);
  line.text(call, kBytesALine);
  return line.finish();
}

}  // namespace trace
