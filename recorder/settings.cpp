#include "recorder/settings.h"

#include <cstring>

namespace recorder {
namespace {

/// A part of the text.
struct Words {
  const char* begin;
  size_t size;

  bool is(const char* text) const {
    return std::strlen(text) == size && std::memcmp(begin, text, size) == 0;
  }
};

bool isBlank(char one) { return one == ' ' || one == '\t' || one == '\r'; }

Words trimmed(Words words) {
  while (words.size > 0 && isBlank(words.begin[0]))
    words = {words.begin + 1, words.size - 1};
  while (words.size > 0 && isBlank(words.begin[words.size - 1]))
    --words.size;
  return words;
}

/// Returns the length of the text before the character; the whole length when it is not there.
size_t lengthBefore(Words text, char end) {
  size_t length = 0;
  while (length < text.size && text.begin[length] != end)
    ++length;
  return length;
}

bool setNumber(Words value, uint32_t largest, uint32_t& out) {
  uint64_t number = 0;
  for (size_t i = 0; i < value.size; ++i) {
    if (value.begin[i] < '0' || value.begin[i] > '9') return false;
    number = number * 10 + static_cast<uint64_t>(value.begin[i] - '0');
    if (number > largest) return false;
  }
  if (number < kSmallestBuffer) return false;
  out = static_cast<uint32_t>(number);
  return true;
}

bool setFile(Words value, Settings& settings) {
  if (value.size == 0 || value.size >= kPathSize) return false;
  if (lengthBefore(value, 0) < value.size) return false;
  std::memcpy(settings.file, value.begin, value.size);
  settings.file[value.size] = 0;
  return true;
}

bool setValue(Words line, Settings& settings) {
  const size_t nameSize = lengthBefore(line, '=');
  if (nameSize == line.size) return false;
  const Words name = trimmed({line.begin, nameSize});
  const Words value = trimmed({line.begin + nameSize + 1, line.size - nameSize - 1});
  if (name.is("file")) return setFile(value, settings);
  if (name.is("buffer")) return setNumber(value, kLargestBuffer, settings.buffer);
  if (name.is("limit")) return setNumber(value, kLargestLimit, settings.limit);
  return false;
}

void noteWrongLine(uint32_t number, Settings& settings) {
  if (settings.wrongCount < kWrongLines) settings.wrongLines[settings.wrongCount++] = number;
}

/// Some editors begin a UTF-8 text with these bytes.
Words withoutMark(Words text) {
  constexpr char kMark[] = "\xEF\xBB\xBF";
  constexpr size_t kSize = sizeof kMark - 1;
  const bool hasMark = text.size >= kSize && std::memcmp(text.begin, kMark, kSize) == 0;
  return hasMark ? Words{text.begin + kSize, text.size - kSize} : text;
}

}  // namespace

void readSettings(const char* text, size_t size, Settings& settings) {
  Words rest = withoutMark({text, size});
  for (uint32_t number = 1; rest.size > 0; ++number) {
    const size_t length = lengthBefore(rest, '\n');
    const Words line = trimmed({rest.begin, length});
    if (line.size > 0 && line.begin[0] != '#' && !setValue(line, settings))
      noteWrongLine(number, settings);
    const size_t step = length < rest.size ? length + 1 : length;
    rest = {rest.begin + step, rest.size - step};
  }
}

}  // namespace recorder
