#include "controller/call_log.h"

#include <algorithm>
#include <cstddef>
#include <iterator>

namespace ipodctl {

Calls& callLog() {
  static Calls log;
  return log;
}

std::string hexText(const uint8_t* bytes, uint32_t count) {
  constexpr char kDigits[] = "0123456789ABCDEF";
  std::string text;
  for (uint32_t i = 0; i < count; ++i) {
    if (i > 0) text += ' ';
    text += kDigits[bytes[i] >> 4];
    text += kDigits[bytes[i] & 0x0F];
  }
  return text;
}

Calls operator+(Calls first, const Calls& second) {
  first.insert(first.end(), second.begin(), second.end());
  return first;
}

Calls repeated(uint32_t times, const Calls& calls) {
  Calls all;
  for (uint32_t i = 0; i < times; ++i)
    all.insert(all.end(), calls.begin(), calls.end());
  return all;
}

Calls behindFirst(uint32_t count, const Calls& calls) {
  return {calls.begin() + std::min<std::ptrdiff_t>(count, calls.end() - calls.begin()),
          calls.end()};
}

Calls linesOf(const Calls& calls, const std::string& start) {
  Calls lines;
  std::copy_if(calls.begin(), calls.end(), std::back_inserter(lines),
               [&](const std::string& line) { return line.compare(0, start.size(), start) == 0; });
  return lines;
}

}  // namespace ipodctl
