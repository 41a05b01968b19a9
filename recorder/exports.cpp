// The four functions that ipodctl.dll of the folder traced/ takes from this DLL instead of the
// platform. Each one calls the platform's, and returns what that returns.
#include "recorder/recorder.h"

namespace {

recorder::Recorder recording;

/// The thread's last error is that of the platform's function.
class KeptError {
 public:
  KeptError() : error(GetLastError()) {}
  ~KeptError() { SetLastError(error); }
  KeptError(const KeptError&) = delete;
  KeptError& operator=(const KeptError&) = delete;

  DWORD code() const { return error; }

 private:
  const DWORD error;
};

recorder::OpenDevice deviceOf(HANDLE handle) {
  const KeptError kept;
  return recording.find(handle);
}

recorder::OpenDevice closingDevice(HANDLE handle) {
  const KeptError kept;
  return recording.closing(handle);
}

DWORD smaller(DWORD left, DWORD right) { return left < right ? left : right; }

}  // namespace

extern "C" {

HANDLE WINAPI recordedCreateFileW(LPCWSTR name, DWORD access, DWORD share,
                                  LPSECURITY_ATTRIBUTES attributes, DWORD disposition, DWORD flags,
                                  HANDLE templateFile) {
  const bool isDevice = recorder::isDeviceName(name);
  if (isDevice) {
    const KeptError kept;
    recording.start();
  }
  HANDLE handle = CreateFileW(name, access, share, attributes, disposition, flags, templateFile);
  if (!isDevice) return handle;
  const KeptError kept;
  if (handle == INVALID_HANDLE_VALUE) {
    recording.openFailed(name, kept.code());
  } else {
    recording.opened(handle, name);
  }
  return handle;
}

BOOL WINAPI recordedReadFile(HANDLE file, LPVOID buffer, DWORD count, LPDWORD read,
                             LPOVERLAPPED overlapped) {
  const recorder::OpenDevice device = deviceOf(file);
  const BOOL isDone = ReadFile(file, buffer, count, read, overlapped);
  if (device.number == 0) return isDone;
  const KeptError kept;
  if (!isDone) {
    recording.failed(device, trace::Event::kReadFailed, kept.code());
  } else if (read != nullptr && *read > 0) {
    recording.data(device, trace::Direction::kRead, buffer, smaller(*read, count));
  }
  return isDone;
}

/// Records the bytes before they are written: another thread may read the answer before the write
/// returns.
BOOL WINAPI recordedWriteFile(HANDLE file, LPCVOID buffer, DWORD count, LPDWORD written,
                              LPOVERLAPPED overlapped) {
  const recorder::OpenDevice device = deviceOf(file);
  if (device.number != 0 && buffer != nullptr) {
    const KeptError kept;
    recording.data(device, trace::Direction::kWritten, buffer, count);
  }
  const BOOL isDone = WriteFile(file, buffer, count, written, overlapped);
  if (device.number == 0) return isDone;
  const KeptError kept;
  const bool isCut = isDone && written != nullptr && *written < count;
  if (!isDone || isCut) {
    recording.failed(device, trace::Event::kWriteFailed,
                     isDone ? DWORD{ERROR_SUCCESS} : kept.code());
  }
  return isDone;
}

BOOL WINAPI recordedCloseHandle(HANDLE object) {
  const recorder::OpenDevice device = closingDevice(object);
  const BOOL isDone = CloseHandle(object);
  if (device.number == 0) return isDone;
  const KeptError kept;
  recording.closed(device, isDone != FALSE);
  return isDone;
}

BOOL WINAPI DllMain(HINSTANCE module, DWORD reason, LPVOID) {
  if (reason == DLL_PROCESS_ATTACH) {
    DisableThreadLibraryCalls(module);
    return recording.attach(module);
  }
  if (reason == DLL_PROCESS_DETACH) recording.detach();
  return TRUE;
}

}  // extern "C"
