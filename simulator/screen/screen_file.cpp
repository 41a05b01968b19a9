#include "screen/screen_file.h"

#include <stdexcept>

#include "screen/png_file.h"

namespace simulator {

void ScreenFile::keepAsItIs() {
  const std::lock_guard<std::mutex> lock(mutex);
  written = live.shown().revision;
}

bool ScreenFile::write() {
  const std::lock_guard<std::mutex> lock(mutex);
  return write(live.shown());
}

void ScreenFile::writeChange() {
  const std::lock_guard<std::mutex> lock(mutex);
  const LiveScreen::Shown shown = live.shown();
  if (shown.revision != written) write(shown);
}

bool ScreenFile::write(const LiveScreen::Shown& shown) {
  try {
    writePng(*shown.picture, file);
    written = shown.revision;
    lastFailure.clear();
    return true;
  } catch (const std::runtime_error& failure) {
    if (lastFailure != failure.what()) complain(failure.what());
    lastFailure = failure.what();
    return false;
  }
}

}  // namespace simulator
