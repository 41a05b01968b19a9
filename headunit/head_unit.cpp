#include "head_unit.h"

void HeadUnit::showGap(const std::string& text) {
  if (ipod.isLost()) return;
  hasGaps = true;
  screen.show(text);
}
