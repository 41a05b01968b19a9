#include "recorder/text.h"

namespace recorder {

Text& Text::add(const char* words) {
  for (; *words != 0; ++words)
    put(*words);
  return *this;
}

Text& Text::add(uint32_t number) {
  char reversed[10];
  int count = 0;
  do {
    reversed[count++] = static_cast<char>('0' + number % 10);
    number /= 10;
  } while (number > 0);
  while (count > 0)
    put(reversed[--count]);
  return *this;
}

}  // namespace recorder
