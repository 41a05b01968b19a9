#include <desk.h>
#include <windows.h>

#include "common/guarded_sink.h"

namespace {

/// Never destroyed: threads may still post while the process ends.
GuardedSink<DeskMessageSink>& sink() {
  static auto& messageSink = *new GuardedSink<DeskMessageSink>;
  return messageSink;
}

}  // namespace

BOOL WINAPI PostMessageW(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
  sink().call(window, message, wParam, lParam);
  return TRUE;
}

void deskSetMessageSink(DeskMessageSink newSink, void* context) { sink().set(newSink, context); }
