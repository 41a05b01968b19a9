#include "loader/device_functions.h"

#include <fcntl.h>
#include <unistd.h>
#include <windows.h>

#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <iterator>
#include <map>
#include <mutex>
#include <string>
#include <thread>

namespace loader {
namespace {

using std::chrono::steady_clock;

constexpr DWORD kErrorPathNotFound = 3;
constexpr DWORD kErrorDiskFull = 112;
constexpr DWORD kOpenAlways = 4;
constexpr UINT kUtf8 = 65001;

/// The open files by handle. The handles differ from those of the Linux host.
struct Files {
  std::mutex mutex;
  std::map<HANDLE, int> descriptors;
  uintptr_t next = 0xF1000000;
};

Files& files() {
  static Files& all = *new Files;
  return all;
}

/// Returns -1 for a handle that is not that of a file.
int descriptorOf(HANDLE handle) {
  const std::lock_guard lock(files().mutex);
  const auto found = files().descriptors.find(handle);
  return found != files().descriptors.end() ? found->second : -1;
}

std::string utf8(LPCWSTR text) {
  std::string path = std::filesystem::path(text).string();
  for (char& one : path)
    if (one == '\\') one = '/';
  return path;
}

DWORD errorOfOpen() {
  if (errno == ENOENT) return ERROR_FILE_NOT_FOUND;
  return errno == EACCES ? ERROR_ACCESS_DENIED : kErrorPathNotFound;
}

HANDLE openFile(const std::string& path, DWORD access, DWORD disposition) {
  const int create = disposition == kOpenAlways ? O_CREAT : 0;
  const int mode = (access & GENERIC_WRITE) != 0 ? O_RDWR : O_RDONLY;
  const int descriptor = open(path.c_str(), mode | create | O_CLOEXEC, S_IRUSR | S_IWUSR);
  if (descriptor < 0) {
    SetLastError(errorOfOpen());
    return INVALID_HANDLE_VALUE;
  }
  const std::lock_guard lock(files().mutex);
  auto* const handle = reinterpret_cast<HANDLE>(files().next += 4);
  files().descriptors[handle] = descriptor;
  return handle;
}

/// A device's name ends with a colon.
HANDLE createFile(LPCWSTR name, DWORD access, DWORD share, LPSECURITY_ATTRIBUTES attributes,
                  DWORD disposition, DWORD flags, HANDLE templateFile) {
  const std::string path = utf8(name);
  if (path.empty() || path.back() != ':') return openFile(path, access, disposition);
  return CreateFileW(name, access, share, attributes, disposition, flags, templateFile);
}

BOOL readFile(HANDLE handle, LPVOID buffer, DWORD count, LPDWORD read, LPOVERLAPPED overlapped) {
  const int descriptor = descriptorOf(handle);
  if (descriptor < 0) return ReadFile(handle, buffer, count, read, overlapped);
  const ssize_t size = ::read(descriptor, buffer, count);
  *read = size > 0 ? static_cast<DWORD>(size) : 0;
  return size >= 0;
}

/// Returns a number of the environment, or what is usual.
DWORD settingOf(const char* variable, DWORD usual) {
  const char* const text = std::getenv(variable);
  return text != nullptr ? static_cast<DWORD>(std::strtoul(text, nullptr, 10)) : usual;
}

BOOL writeToCard(int descriptor, LPCVOID buffer, DWORD count, LPDWORD written) {
  const std::chrono::milliseconds delay(settingOf("IPODCTL_CARD_DELAY", 0));
  const DWORD cardSize = settingOf("IPODCTL_CARD_SIZE", MAXDWORD);
  std::this_thread::sleep_for(delay);
  const auto place = static_cast<DWORD>(lseek(descriptor, 0, SEEK_CUR));
  const DWORD room = cardSize > place ? cardSize - place : 0;
  const ssize_t size = ::write(descriptor, buffer, count < room ? count : room);
  *written = size > 0 ? static_cast<DWORD>(size) : 0;
  if (*written == count) return TRUE;
  SetLastError(kErrorDiskFull);
  return FALSE;
}

BOOL writeFile(HANDLE handle, LPCVOID buffer, DWORD count, LPDWORD written,
               LPOVERLAPPED overlapped) {
  const int descriptor = descriptorOf(handle);
  if (descriptor >= 0) return writeToCard(descriptor, buffer, count, written);
  return WriteFile(handle, buffer, count, written, overlapped);
}

BOOL flushFileBuffers(HANDLE handle) {
  return descriptorOf(handle) >= 0 ? TRUE : FlushFileBuffers(handle);
}

BOOL closeHandle(HANDLE handle) {
  const int descriptor = descriptorOf(handle);
  if (descriptor < 0) return CloseHandle(handle);
  const std::lock_guard lock(files().mutex);
  files().descriptors.erase(handle);
  return close(descriptor) == 0;
}

DWORD setFilePointer(HANDLE handle, LONG distance, LONG*, DWORD method) {
  return static_cast<DWORD>(lseek(descriptorOf(handle), distance, static_cast<int>(method)));
}

BOOL setEndOfFile(HANDLE handle) {
  const int descriptor = descriptorOf(handle);
  return ftruncate(descriptor, lseek(descriptor, 0, SEEK_CUR)) == 0;
}

DWORD getTickCount() {
  const auto now = steady_clock::now().time_since_epoch();
  return static_cast<DWORD>(std::chrono::duration_cast<std::chrono::milliseconds>(now).count());
}

BOOL queryPerformanceCounter(int64_t* count) {
  *count = steady_clock::now().time_since_epoch().count();
  return TRUE;
}

BOOL queryPerformanceFrequency(int64_t* frequency) {
  *frequency = steady_clock::period::den / steady_clock::period::num;
  return TRUE;
}

BOOL setThreadPriority(HANDLE, int) { return TRUE; }

int multiByteToWideChar(UINT codePage, DWORD, const char* text, int size, WCHAR* out, int room) {
  if (codePage != kUtf8 || size != -1) return 0;
  try {
    const std::u16string units = std::filesystem::u8path(text).u16string();
    if (static_cast<int>(units.size()) >= room) return 0;
    units.copy(out, units.size());
    out[units.size()] = 0;
    return static_cast<int>(units.size()) + 1;
  } catch (const std::exception&) {
    return 0;
  }
}

void outputDebugString(LPCWSTR text) { std::fputs(utf8(text).c_str(), stderr); }

/// Ends this process; a program of the device ends only itself.
BOOL terminateProcess(HANDLE, DWORD status) {
  std::fflush(nullptr);
  _exit(static_cast<int>(status));
}

struct Function {
  const char* name;
  void* address;
};

const Function kFunctions[] = {
    {"CloseHandle", reinterpret_cast<void*>(closeHandle)},
    {"CreateFileW", reinterpret_cast<void*>(createFile)},
    {"FlushFileBuffers", reinterpret_cast<void*>(flushFileBuffers)},
    {"GetTickCount", reinterpret_cast<void*>(getTickCount)},
    {"MultiByteToWideChar", reinterpret_cast<void*>(multiByteToWideChar)},
    {"OutputDebugStringW", reinterpret_cast<void*>(outputDebugString)},
    {"QueryPerformanceCounter", reinterpret_cast<void*>(queryPerformanceCounter)},
    {"QueryPerformanceFrequency", reinterpret_cast<void*>(queryPerformanceFrequency)},
    {"ReadFile", reinterpret_cast<void*>(readFile)},
    {"SetEndOfFile", reinterpret_cast<void*>(setEndOfFile)},
    {"SetFilePointer", reinterpret_cast<void*>(setFilePointer)},
    {"SetThreadPriority", reinterpret_cast<void*>(setThreadPriority)},
    {"TerminateProcess", reinterpret_cast<void*>(terminateProcess)},
    {"WriteFile", reinterpret_cast<void*>(writeFile)},
};

}  // namespace

void* deviceFunction(const std::string& name) {
  for (const Function& function : kFunctions)
    if (name == function.name) return function.address;
  return nullptr;
}

}  // namespace loader
