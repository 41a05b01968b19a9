#pragma once

#include <windows.h>

#include "recorder/lines.h"
#include "recorder/open_devices.h"
#include "recorder/path.h"
#include "recorder/settings.h"
#include "recorder/trace_file.h"

namespace recorder {

/// Keeps a lock while it lives. It does not wait long, because a thread that the system has killed
/// keeps the lock for ever: see isHeld().
class Hold {
 public:
  explicit Hold(HANDLE lock);
  ~Hold();
  Hold(const Hold&) = delete;
  Hold& operator=(const Hold&) = delete;

  bool isHeld() const { return held; }

 private:
  const HANDLE semaphore;
  const bool held;
};

/// Records what the program reads from devices and writes to them. A thread writes the lines to the
/// file. It runs while a device is open, and until everything is written.
class Recorder {
 public:
  /// `module` is this DLL.
  bool attach(HINSTANCE module);
  /// Under the loader's lock, so it waits for no thread.
  void detach();

  /// Before a device is opened.
  void start();
  void opened(HANDLE handle, LPCWSTR name);
  void openFailed(LPCWSTR name, DWORD error);
  /// Returns the device; number 0 when the handle is not that of a recorded device.
  OpenDevice find(HANDLE handle);
  void data(const OpenDevice& device, trace::Direction direction, LPCVOID bytes, DWORD count);
  void failed(const OpenDevice& device, trace::Event event, DWORD error);
  /// Before a handle is closed. Returns the device as find() does.
  OpenDevice closing(HANDLE handle);
  /// After that.
  void closed(const OpenDevice& device, bool isDone);

 private:
  void begin();
  bool launch();
  void noteClosed(OpenDevice& device);
  void noteWrongLines(const Settings& settings);
  template <class Add>
  void record(Add add);

  static DWORD WINAPI writeInThread(LPVOID recorder);
  void writeUntilIdle();
  bool writeLines();
  bool hasMore();
  bool writePieces();
  bool openFile();
  bool isIdle();
  bool retire(bool isWritten);

  HINSTANCE module = nullptr;
  Path modulePath;
  HANDLE lock = nullptr;  ///< guards what follows, up to `wake`
  OpenDevices devices;
  Lines lines;  ///< only one thread takes its text
  bool isBegun = false;
  bool isOff = false;      ///< nothing is recorded any more
  bool hasThread = false;  ///< a thread writes, or is started
  bool isPinned = false;   ///< this DLL stays loaded
  HANDLE wake = nullptr;   ///< wakes the thread before its time
  HANDLE thread = nullptr;
  Path path;  ///< of the trace; the rest is the thread's
  TraceFile file;
};

}  // namespace recorder
