// Records the bytes and events of the devices to the file that IPODCTL_TRACE names.
#pragma once

#include <sys/types.h>
#include <windows.h>

#include <atomic>
#include <functional>
#include <string>

#include "trace/trace_line.h"

namespace coredll {

/// True also before the first look at IPODCTL_TRACE, which needs a call of a function below.
extern std::atomic<bool> mayBeRecording;

inline bool mayRecord() { return mayBeRecording.load(std::memory_order_relaxed); }

/// Begins, goes on or ends recording, as IPODCTL_TRACE says now. For each open of a device.
void lookForTrace();

/// The rest is for callers that have asked mayRecord().
void recordRead(const std::string& device, const BYTE* bytes, DWORD count);
void recordEvent(const std::string& device, trace::Event event, DWORD code = ERROR_SUCCESS);

/// Calls `write`, which must not block, and records as many of the bytes as it returns. Nothing is
/// recorded in between: what answers the bytes is recorded after them.
ssize_t recordWrite(const std::string& device, const BYTE* bytes,
                    const std::function<ssize_t()>& write);

}  // namespace coredll
