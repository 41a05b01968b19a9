#include "support/desk_recorder.h"

#include <desk.h>

#include <cstdint>
#include <sstream>

namespace {

constexpr IsochplayFunction kFunctions[] = {
    kSelectZeroBandwithInterface,
    kSelectFullBandwithInterface,
    kStartIpodAudioPlay,
    kStopIpodAudioPlay,
    kSelectFrequency,
};

}  // namespace

DeskRecorder::DeskRecorder(EventLog& eventLog) : log(eventLog) {
  isochplaySetSink(takeAudioCall, this);
  deskSetMessageSink(takeMessage, this);
}

DeskRecorder::~DeskRecorder() {
  deskSetMessageSink(nullptr, nullptr);
  isochplaySetSink(nullptr, nullptr);
  for (const IsochplayFunction function : kFunctions)
    isochplaySetResult(function, 0);
  isochplaySetResult(kIpodAudioPresent, 1);
}

void DeskRecorder::takeAudioCall(void* context, const IsochplayCall* call) {
  auto& recorder = *static_cast<DeskRecorder*>(context);
  if (call->format != nullptr) recorder.lastFormatTag = call->format->wFormatTag;
  if (recorder.onAudioCall) recorder.onAudioCall(*call);
  recorder.log.add(call->text);
}

void DeskRecorder::takeMessage(void* context, HWND window, UINT message, WPARAM wParam,
                               LPARAM lParam) {
  auto& recorder = *static_cast<DeskRecorder*>(context);
  std::ostringstream text;
  text << "PostMessageW(0x" << std::hex << reinterpret_cast<std::uintptr_t>(window) << ", 0x"
       << message << std::dec << ", " << wParam << ", " << lParam << ")";
  recorder.log.add(text.str());
  if (recorder.onMessage) recorder.onMessage();
}
