#include "screen.h"

#include <cstdio>

void Screen::beginSection(const std::string& title) {
  std::printf("\n---- %d. %s\n", ++sections, title.c_str());
}

void Screen::show(const std::string& text) const { std::printf("   %s\n", text.c_str()); }
