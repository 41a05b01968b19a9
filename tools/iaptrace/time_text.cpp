#include "iaptrace/time_text.h"

#include <cstdio>

namespace iaptrace {

std::string millisecondsText(trace::Time time) {
  constexpr double kFine = 10;
  constexpr double kCoarse = 1000;
  const double ms = static_cast<double>(time.count()) / 1000;
  const int decimals = ms < kFine ? 2 : ms < kCoarse ? 1 : 0;
  char text[32];
  std::snprintf(text, sizeof text, "%.*f ms", decimals, ms);
  return text;
}

}  // namespace iaptrace
