#pragma once

#include <windows.h>

#include <atomic>

#include "recorder/clock.h"
#include "recorder/text.h"
#include "recorder/text_ring.h"
#include "trace/trace_line.h"

namespace recorder {

/// The lines of the trace on their way to the file. One thread at a time adds them.
class Lines {
 public:
  /// Starts the time. Returns false without memory.
  bool begin(uint32_t buffer, uint32_t limit);
  void end();

  void data(const char* device, trace::Direction direction, const uint8_t* bytes, size_t count);
  void event(const char* device, trace::Event event, DWORD code);
  void comment(const Text& text) { add(text.begin(), text.size()); }

  /// Counts a line that could not be added. Any thread may call it.
  void lose();
  /// Adds a comment if lines were lost and there is room for it. Returns whether it added one.
  bool noteLost();
  /// Adds a comment if lines were lost because the trace would be longer than the limit.
  void noteLimit();

  /// Says why the file accepts nothing; ERROR_SUCCESS: it does. Any thread may call it.
  void setWriteError(DWORD error) { writeError = error; }

  bool isHalfFull() const { return ring.used() > ring.capacity() / 2; }
  /// Returns the lines for the thread that writes them.
  TextRing& text() { return ring; }

 private:
  void add(const char* text, size_t size);

  Clock clock;
  TextRing ring;
  uint32_t room = 0;  ///< the bytes until the limit
  uint32_t beyondLimit = 0;
  std::atomic<uint32_t> lost{0};
  std::atomic<DWORD> writeError{ERROR_SUCCESS};
  char line[trace::kLongestLine] = {};
};

}  // namespace recorder
