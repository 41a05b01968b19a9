#include "pause.h"

#include <chrono>
#include <thread>

void waitMilliseconds(int milliseconds) {
  std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
}
