#include "recorder/trace_file.h"

#include <cstring>

#include "trace/trace_line.h"

namespace recorder {
namespace {

constexpr DWORD kFirstLineSize = sizeof trace::kFirstLine - 1;
constexpr DWORD kWarningSize = sizeof trace::kWarning - 1;

/// Returns whether the text begins with the first line of a trace. Its end can be that of another
/// system, or that of the file.
bool isTrace(const char* text, DWORD size) {
  constexpr DWORD kWordsSize = kFirstLineSize - 1;
  if (size < kWordsSize || std::memcmp(text, trace::kFirstLine, kWordsSize) != 0) return false;
  return size == kWordsSize || text[kWordsSize] == '\n' || text[kWordsSize] == '\r';
}

}  // namespace

TraceFile::Opening TraceFile::open(const Path& path) {
  HANDLE file = CreateFileW(path.text(), GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ, nullptr,
                            OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
  if (file == INVALID_HANDLE_VALUE) {
    lastError = GetLastError();
    return Opening::kFailed;
  }
  handle = file;
  if (isForeign()) return refuse(Opening::kForeign);
  if (!goToEnd()) return refuse(Opening::kFailed);
  isBegun = true;
  return Opening::kDone;
}

TraceFile::Opening TraceFile::refuse(Opening why) {
  close();
  return why;
}

/// Returns whether the file has content that is not a trace.
bool TraceFile::isForeign() {
  char text[kFirstLineSize] = {};
  DWORD count = 0;
  if (!ReadFile(handle, text, kFirstLineSize, &count, nullptr)) return true;
  return count > 0 && !isTrace(text, count);
}

/// Makes the next text follow what this recording has written; the first time, the first lines.
bool TraceFile::goToEnd() {
  constexpr DWORD kNowhere = 0xFFFFFFFF;
  size = isBegun ? SetFilePointer(handle, 0, nullptr, FILE_END) : 0;
  if (size != kNowhere) return size > 0 || begin();
  lastError = GetLastError();
  return false;
}

/// Empties the file and writes the first lines. The file stays empty when it does not accept them.
bool TraceFile::begin() {
  size = 0;
  SetFilePointer(handle, 0, nullptr, FILE_BEGIN);
  SetEndOfFile(handle);
  if (write(trace::kFirstLine, kFirstLineSize) == kFirstLineSize &&
      write(trace::kWarning, kWarningSize) == kWarningSize)
    return true;
  SetFilePointer(handle, 0, nullptr, FILE_BEGIN);
  SetEndOfFile(handle);
  return false;
}

DWORD TraceFile::write(const char* text, DWORD count) {
  DWORD written = 0;
  SetFilePointer(handle, static_cast<LONG>(size), nullptr, FILE_BEGIN);
  const BOOL isDone = WriteFile(handle, text, count, &written, nullptr);
  lastError = isDone && written == count ? ERROR_SUCCESS : GetLastError();
  size += written;
  return written;
}

void TraceFile::flush() { FlushFileBuffers(handle); }

void TraceFile::close() {
  CloseHandle(handle);
  handle = nullptr;
}

DWORD readFile(const Path& path, char* text, DWORD size) {
  HANDLE file = CreateFileW(path.text(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING,
                            FILE_ATTRIBUTE_NORMAL, nullptr);
  if (file == INVALID_HANDLE_VALUE) return 0;
  DWORD count = 0;
  if (!ReadFile(file, text, size, &count, nullptr)) count = 0;
  CloseHandle(file);
  return count;
}

}  // namespace recorder
