#include "recorder/recorder.h"

namespace recorder {
namespace {

constexpr DWORD kLockMilliseconds = 100;
/// A line is at most this old when it is written.
constexpr DWORD kDelayMilliseconds = 1000;

constexpr char kSettingsName[] = "ipodtrace.txt";

/// Prints on the debugger's console. The program's console is the program's.
void complain(const char* words) {
  constexpr size_t kSize = 128;
  WCHAR units[kSize] = {};
  for (size_t i = 0; words[i] != 0 && i + 1 < kSize; ++i)
    units[i] = static_cast<uint8_t>(words[i]);
  OutputDebugStringW(units);
}

constexpr char kForeign[] =
    "ipodtrace: the file is not a trace, and stays as it is; set another file in ipodtrace.txt\r\n";

}  // namespace

Hold::Hold(HANDLE lock)
    : semaphore(lock), held(WaitForSingleObject(lock, kLockMilliseconds) == WAIT_OBJECT_0) {}

Hold::~Hold() {
  if (held) ReleaseSemaphore(semaphore, 1, nullptr);
}

bool Recorder::attach(HINSTANCE ownModule) {
  module = ownModule;
  modulePath.useModule(module);
  lock = CreateSemaphoreW(nullptr, 1, 1, nullptr);
  wake = CreateSemaphoreW(nullptr, 0, 1, nullptr);
  return lock != nullptr && wake != nullptr;
}

/// If the thread has work, then the process ends, and the system has usually ended the thread: its
/// lines are written here.
void Recorder::detach() {
  if (hasThread && WaitForSingleObject(thread, 0) != WAIT_OBJECT_0) {
    ReleaseSemaphore(wake, 1, nullptr);
    return;
  }
  if (hasThread) writeLines();
  if (file.isOpen()) file.close();
  lines.end();
  if (thread != nullptr) CloseHandle(thread);
  CloseHandle(wake);
  CloseHandle(lock);
}

void Recorder::start() {
  bool mustLaunch = false;
  {
    const Hold hold(lock);
    if (!hold.isHeld()) return;
    if (!isBegun) begin();
    mustLaunch = !isOff && !hasThread;
    hasThread = hasThread || mustLaunch;
  }
  if (!mustLaunch || launch()) return;
  const Hold hold(lock);
  hasThread = false;
}

void Recorder::begin() {
  isBegun = true;
  Settings settings;
  char text[kSettingsSize];
  path.use(kSettingsName, modulePath);
  readSettings(text, readFile(path, text, sizeof text), settings);
  path.use(settings.file, modulePath);
  isOff = !lines.begin(settings.buffer, settings.limit);
  if (!isOff) noteWrongLines(settings);
}

void Recorder::noteWrongLines(const Settings& settings) {
  for (size_t i = 0; i < settings.wrongCount; ++i) {
    Text text;
    text.add("# line ").add(settings.wrongLines[i]).add(" of ").add(kSettingsName);
    lines.comment(text.add(" is not a setting, and is ignored\n"));
  }
}

/// The DLL must stay loaded while the thread runs, and no thread can unload its own code: once a
/// device was opened, it stays until the process ends.
bool Recorder::launch() {
  isPinned = isPinned || LoadLibraryW(modulePath.text()) != nullptr;
  if (!isPinned) return false;
  if (thread != nullptr) CloseHandle(thread);
  thread = CreateThread(nullptr, 0, writeInThread, this, 0, nullptr);
  if (thread != nullptr) SetThreadPriority(thread, THREAD_PRIORITY_BELOW_NORMAL);
  return thread != nullptr;
}

template <class Add>
void Recorder::record(Add add) {
  const Hold hold(lock);
  if (!hold.isHeld()) {
    lines.lose();
  } else if (isBegun && !isOff) {
    add();
    if (lines.isHalfFull()) ReleaseSemaphore(wake, 1, nullptr);
  }
}

void Recorder::opened(HANDLE handle, LPCWSTR name) {
  record([&] {
    // The system uses the value again before the thread that closed it has reported that.
    if (OpenDevice* const before = devices.find(handle)) noteClosed(*before);
    OpenDevice device;
    copyDeviceName(name, device.name);
    if (devices.add(handle, device.name)) lines.event(device.name, trace::Event::kOpened, 0);
  });
}

void Recorder::openFailed(LPCWSTR name, DWORD error) {
  record([&] {
    OpenDevice device;
    copyDeviceName(name, device.name);
    lines.event(device.name, trace::Event::kOpenFailed, error);
    ReleaseSemaphore(wake, 1, nullptr);
  });
}

OpenDevice Recorder::find(HANDLE handle) {
  const Hold hold(lock);
  if (!hold.isHeld() || handle == nullptr) return {};
  const OpenDevice* const device = devices.find(handle);
  return device != nullptr ? *device : OpenDevice{};
}

/// After the line of a device's close there is none of a read that had ended before.
void Recorder::data(const OpenDevice& device, trace::Direction direction, LPCVOID bytes,
                    DWORD count) {
  record([&] {
    if (devices.find(device) == nullptr) return;
    lines.data(device.name, direction, static_cast<const uint8_t*>(bytes), count);
  });
}

void Recorder::failed(const OpenDevice& device, trace::Event event, DWORD error) {
  record([&] {
    const OpenDevice* const open = devices.find(device);
    if (open != nullptr && !open->isClosing) lines.event(device.name, event, error);
  });
}

OpenDevice Recorder::closing(HANDLE handle) {
  OpenDevice result;
  record([&] {
    OpenDevice* const device = handle != nullptr ? devices.find(handle) : nullptr;
    if (device == nullptr) return;
    device->isClosing = true;
    result = *device;
  });
  return result;
}

void Recorder::closed(const OpenDevice& device, bool isDone) {
  record([&] {
    OpenDevice* const open = devices.find(device);
    if (open == nullptr) return;
    open->isClosing = isDone;
    if (isDone) noteClosed(*open);
  });
}

void Recorder::noteClosed(OpenDevice& device) {
  device.handle = nullptr;
  lines.event(device.name, trace::Event::kClosed, 0);
  lines.noteLimit();
  ReleaseSemaphore(wake, 1, nullptr);
}

DWORD WINAPI Recorder::writeInThread(LPVOID recorder) {
  static_cast<Recorder*>(recorder)->writeUntilIdle();
  return 0;
}

void Recorder::writeUntilIdle() {
  bool isWritten = true;
  do {
    // A signal for each new line must not start an attempt that fails again.
    if (!isWritten) Sleep(kDelayMilliseconds);
    WaitForSingleObject(wake, kDelayMilliseconds);
    isWritten = writeLines();
    if (file.isOpen() && (!isWritten || isIdle())) file.close();
  } while (!retire(isWritten));
}

/// Returns false when there are lines that could not be written.
bool Recorder::writeLines() {
  if (!file.isOpen() && !openFile()) return false;
  bool isWritten = true;
  while (isWritten && hasMore()) {
    isWritten = writePieces();
    file.flush();
  }
  return isWritten;
}

/// Returns whether there is text for the file. Lines that were lost since the last text are noted.
bool Recorder::hasMore() {
  const Hold hold(lock);
  if (hold.isHeld()) lines.noteLost();
  return lines.text().used() > 0;
}

bool Recorder::writePieces() {
  TextRing& text = lines.text();
  for (auto piece = text.first(); piece.size > 0; piece = text.first()) {
    const DWORD count = file.write(piece.text, piece.size);
    text.remove(count);
    lines.setWriteError(file.error());
    if (count < piece.size) return false;
  }
  return true;
}

bool Recorder::openFile() {
  const TraceFile::Opening result = file.open(path);
  if (result == TraceFile::Opening::kDone) return true;
  lines.setWriteError(file.error());
  if (result == TraceFile::Opening::kForeign) {
    complain(kForeign);
    const Hold hold(lock);
    isOff = true;
  }
  return false;
}

bool Recorder::isIdle() {
  const Hold hold(lock);
  return hold.isHeld() && devices.count() == 0;
}

/// Ends the thread's work if there is none left, or none that it can do. Returns whether it ended.
bool Recorder::retire(bool isWritten) {
  const Hold hold(lock);
  if (!hold.isHeld()) return false;
  const bool isDone = lines.text().used() == 0 || !isWritten;
  if (isOff || (isDone && devices.count() == 0)) hasThread = false;
  return !hasThread;
}

}  // namespace recorder
