#include "recorder/lines.h"

#include <cstdlib>

namespace recorder {

bool Lines::begin(uint32_t buffer, uint32_t limit) {
  auto* const memory = static_cast<char*>(malloc(buffer));
  if (memory == nullptr) return false;
  ring.use(memory, buffer);
  room = limit;
  clock.start();
  return true;
}

void Lines::end() {
  free(ring.memory());
  ring.use(nullptr, 0);
}

void Lines::data(const char* device, trace::Direction direction, const uint8_t* bytes,
                 size_t count) {
  const trace::Place place = {clock.micros(), device};
  for (size_t done = 0; done < count; done += trace::kBytesALine) {
    const size_t left = count - done;
    const size_t part = left < trace::kBytesALine ? left : trace::kBytesALine;
    add(line, trace::dataLine(line, place, direction, bytes + done, part));
  }
}

void Lines::event(const char* device, trace::Event event, DWORD code) {
  add(line, trace::eventLine(line, {clock.micros(), device}, event, code));
}

void Lines::add(const char* text, size_t size) {
  const auto count = static_cast<uint32_t>(size);
  if (count > room) {
    room = 0;  // a shorter line must not follow one that is missing
    ++beyondLimit;
    return;
  }
  noteLost();
  // Lines follow each other without a gap, or after the comment about the gap.
  if (lost > 0 || !ring.append(text, count)) {
    lose();
  } else {
    room -= count;
  }
}

// Of the exchanges of the compiler's library, the device has only this one.
void Lines::lose() {
  uint32_t before = lost;
  while (!lost.compare_exchange_strong(before, before + 1)) {
  }
}

bool Lines::noteLost() {
  uint32_t count = lost;
  if (count == 0) return false;
  Text text;
  text.add("# ").add(count).add(" lines were lost: ");
  if (writeError == ERROR_SUCCESS) {
    text.add("the file was too slow\n");
  } else {
    text.add("the file could not be written, error ").add(writeError).add("\n");
  }
  if (!ring.append(text.begin(), text.size())) return false;
  const uint32_t noted = count;
  while (!lost.compare_exchange_strong(count, count - noted)) {
  }
  return true;
}

void Lines::noteLimit() {
  if (beyondLimit == 0) return;
  Text text;
  text.add("# ").add(beyondLimit).add(" lines were lost: the limit of the trace is reached\n");
  if (ring.append(text.begin(), text.size())) beyondLimit = 0;
}

}  // namespace recorder
