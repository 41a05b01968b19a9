#pragma once

#include <isochplay_desk.h>

#include <functional>

#include "support/event_log.h"

/// While a DeskRecorder lives, calls of the audio library and posted window messages are events:
/// "SelectFrequency(48000 Hz)", "PostMessageW(0xffff, 0x2400, 0, 0)". One at a time.
class DeskRecorder {
 public:
  explicit DeskRecorder(EventLog& log);
  ~DeskRecorder();
  DeskRecorder(const DeskRecorder&) = delete;
  DeskRecorder& operator=(const DeskRecorder&) = delete;

  /// Called for each call of the audio library before it becomes an event, on the calling thread.
  /// Set it while the library makes no such call.
  std::function<void(const IsochplayCall&)> onAudioCall;

  /// Also called for each posted message, on the posting thread. Set it while nothing is posted.
  std::function<void()> onMessage;

  /// The format tag of the stream started last.
  int formatTag() const { return lastFormatTag; }

 private:
  static void takeAudioCall(void* context, const IsochplayCall* call);
  static void takeMessage(void* context, HWND window, UINT message, WPARAM wParam, LPARAM lParam);

  EventLog& log;
  int lastFormatTag = -1;
};
