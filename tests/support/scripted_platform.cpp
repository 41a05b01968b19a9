#include "support/scripted_platform.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace {

std::string text(const void* pointer) { return pointer == nullptr ? "null" : "pointer"; }

std::string text(LPCWSTR wide) {
  if (wide == nullptr) return "null";
  std::string result = "\"";
  for (; *wide != 0; ++wide)
    result += *wide < 0x80 ? std::string(1, static_cast<char>(*wide))
                           : "<" + std::to_string(uint32_t{*wide}) + ">";
  return result + "\"";
}

std::string text(DWORD number) { return number == INFINITE ? "INFINITE" : std::to_string(number); }

std::string text(LONG number) { return std::to_string(number); }

template <class... Arguments>
void record(const char* name, const Arguments&... arguments) {
  std::string call = std::string(name) + "(";
  const char* separator = "";
  ((call += separator + arguments, separator = ", "), ...);
  ScriptedPlatform::instance().calls.push_back(call + ")");
}

std::string named(HANDLE handle) { return ScriptedPlatform::instance().nameOf(handle); }

template <class Attributes, class Size, class... Others>
Size stackSizeOf(HANDLE(WINAPI*)(Attributes, Size, Others...));

/// 32 bits on the device, a pointer's size on other Windows.
using StackSize = decltype(stackSizeOf(&CreateThread));

BOOL answer(bool succeeded) { return succeeded ? TRUE : FALSE; }

}  // namespace

ScriptedPlatform& ScriptedPlatform::instance() {
  static ScriptedPlatform& platform = *new ScriptedPlatform;
  return platform;
}

void ScriptedPlatform::reset() {
  ScriptedPlatform fresh;
  fresh.names = std::move(names);
  fresh.open = std::move(open);
  fresh.semaphores = std::move(semaphores);
  *this = std::move(fresh);
}

std::vector<std::string> ScriptedPlatform::callsOf(const std::string& name) const {
  std::vector<std::string> found;
  std::copy_if(calls.begin(), calls.end(), std::back_inserter(found),
               [&](const std::string& call) { return call.compare(0, name.size(), name) == 0; });
  return found;
}

std::string ScriptedPlatform::nameOf(HANDLE handle) const {
  if (handle == nullptr) return "null";
  if (handle == INVALID_HANDLE_VALUE) return "INVALID_HANDLE_VALUE";
  const auto found = names.find(handle);
  return found == names.end() ? "unknown" : found->second;
}

HANDLE ScriptedPlatform::addHandle(const char* kind) {
  const auto handle = reinterpret_cast<HANDLE>(uintptr_t{0x1000} + names.size());
  names[handle] = kind + (" " + std::to_string(++counts[kind]));
  open.insert(handle);
  return handle;
}

HANDLE ScriptedPlatform::createSemaphore(LONG initialCount, LONG maximumCount) {
  if (semaphoresFail || semaphoresMissing.count(semaphoresAsked++) != 0) return nullptr;
  const HANDLE handle = addHandle("semaphore");
  semaphores[handle] = {initialCount, maximumCount};
  return handle;
}

BOOL ScriptedPlatform::releaseSemaphore(HANDLE handle, LONG count) {
  if (onRelease) onRelease();
  const auto found = semaphores.find(handle);
  if (found == semaphores.end()) return FALSE;
  Semaphore& semaphore = found->second;
  if (semaphore.count + count > semaphore.maximum) return FALSE;
  semaphore.count += count;
  if (afterRelease && nameOf(handle) == releasedByName) std::exchange(afterRelease, nullptr)();
  return TRUE;
}

DWORD ScriptedPlatform::wait(HANDLE object, DWORD milliseconds) {
  const DWORD result = waitFor(object, milliseconds);
  if (result == WAIT_TIMEOUT) waited += milliseconds;
  return result;
}

DWORD ScriptedPlatform::waitFor(HANDLE object, DWORD milliseconds) {
  if (!waitResults.empty()) {
    const DWORD result = waitResults.front();
    waitResults.pop_front();
    return result;
  }
  if (object == thread && thread != nullptr) return waitForThread();
  const auto found = semaphores.find(object);
  if (found == semaphores.end()) return WAIT_FAILED;
  return waitForSemaphore(found->second, milliseconds);
}

DWORD ScriptedPlatform::waitForThread() {
  if (threadState == ThreadState::kWaiting) runThread();
  return threadState == ThreadState::kEnded ? WAIT_OBJECT_0 : WAIT_TIMEOUT;
}

DWORD ScriptedPlatform::waitForSemaphore(Semaphore& semaphore, DWORD milliseconds) {
  if (semaphore.count == 0 && milliseconds == INFINITE && whileBlocked)
    std::exchange(whileBlocked, nullptr)();
  if (semaphore.count > 0) {
    --semaphore.count;
    return WAIT_OBJECT_0;
  }
  if (milliseconds != INFINITE) return WAIT_TIMEOUT;
  ADD_FAILURE() << "a wait that never ends";
  return WAIT_FAILED;
}

BOOL ScriptedPlatform::close(HANDLE object) {
  if (object == nullptr) return FALSE;
  if (open.erase(object) == 0) {
    ++wrongCloses;
    return FALSE;
  }
  semaphores.erase(object);
  if (onClose && names[object].rfind("device", 0) == 0) std::exchange(onClose, nullptr)();
  if (object == thread) thread = nullptr;
  return TRUE;
}

HANDLE ScriptedPlatform::createThread(LPTHREAD_START_ROUTINE start, void* argument) {
  threadStart = start;
  threadArgument = argument;
  if (threadsFail) return nullptr;
  threadState = ThreadState::kWaiting;
  const HANDLE made = addHandle("thread");
  thread = made;
  if (threadsRunAtOnce) runThread();
  return made;
}

void ScriptedPlatform::runThread() {
  threadState = ThreadState::kRunning;
  threadStart(threadArgument);
  threadState = ThreadState::kEnded;
}

HANDLE ScriptedPlatform::createDevice() {
  if (onCreateFile) onCreateFile();
  return devicesFail ? INVALID_HANDLE_VALUE : addHandle("device");
}

BOOL ScriptedPlatform::read(HANDLE device, uint8_t* buffer, DWORD count, DWORD& read) {
  readSizes.push_back(count);
  read = 0;
  if (arrivals.empty() || !isOpen(device)) return FALSE;
  if (arrivals.front().meanwhile) std::exchange(arrivals.front().meanwhile, nullptr)();
  if (arrivals.empty() || arrivals.front().fails || !isOpen(device)) return FALSE;
  Bytes& bytes = arrivals.front().bytes;
  read = std::min(count, static_cast<DWORD>(bytes.size()));
  std::copy_n(bytes.begin(), read, buffer);
  bytes.erase(bytes.begin(), bytes.begin() + read);
  if (bytes.empty()) arrivals.pop_front();
  read += surplusOfRead;
  return TRUE;
}

BOOL ScriptedPlatform::write(HANDLE device, const uint8_t* bytes, DWORD count, DWORD& written) {
  if (writesFail || !isOpen(device)) {
    written = countOfFailedWrite;
    return FALSE;
  }
  written = std::min(count, writeLimit);
  writes.emplace_back(bytes, bytes + written);
  return TRUE;
}

BOOL ScriptedPlatform::getCommState(DCB& state) {
  if (commCallsFail) return FALSE;
  state = callsOf("SetCommState").empty() ? driverState : stateReadBack;
  return TRUE;
}

BOOL ScriptedPlatform::setCommState(const DCB& state) {
  stateSet = state;
  return answer(!commCallsFail);
}

HANDLE WINAPI CreateSemaphoreW(LPSECURITY_ATTRIBUTES attributes, LONG initialCount,
                               LONG maximumCount, LPCWSTR name) {
  record("CreateSemaphoreW", text(attributes), text(initialCount), text(maximumCount), text(name));
  return ScriptedPlatform::instance().createSemaphore(initialCount, maximumCount);
}

BOOL WINAPI ReleaseSemaphore(HANDLE semaphore, LONG releaseCount, LPLONG) {
  record("ReleaseSemaphore", named(semaphore), text(releaseCount));
  return ScriptedPlatform::instance().releaseSemaphore(semaphore, releaseCount);
}

DWORD WINAPI WaitForSingleObject(HANDLE object, DWORD milliseconds) {
  record("WaitForSingleObject", named(object), text(milliseconds));
  return ScriptedPlatform::instance().wait(object, milliseconds);
}

BOOL WINAPI CloseHandle(HANDLE object) {
  record("CloseHandle", named(object));
  return ScriptedPlatform::instance().close(object);
}

HANDLE WINAPI CreateThread(LPSECURITY_ATTRIBUTES attributes, StackSize stackSize,
                           LPTHREAD_START_ROUTINE start, LPVOID parameter, DWORD creationFlags,
                           LPDWORD) {
  record("CreateThread", text(attributes), std::to_string(stackSize), text(parameter),
         text(creationFlags));
  return ScriptedPlatform::instance().createThread(start, parameter);
}

void WINAPI Sleep(DWORD milliseconds) {
  record("Sleep", text(milliseconds));
  ScriptedPlatform::instance().sleep(milliseconds);
}

DWORD WINAPI GetLastError() { return ScriptedPlatform::instance().lastError; }

HANDLE WINAPI CreateFileW(LPCWSTR name, DWORD access, DWORD share, LPSECURITY_ATTRIBUTES attributes,
                          DWORD disposition, DWORD flags, HANDLE templateFile) {
  record("CreateFileW", text(name), text(access), text(share), text(attributes), text(disposition),
         text(flags), text(templateFile));
  return ScriptedPlatform::instance().createDevice();
}

BOOL WINAPI ReadFile(HANDLE file, LPVOID buffer, DWORD count, LPDWORD read,
                     LPOVERLAPPED overlapped) {
  record("ReadFile", named(file), text(count), text(overlapped));
  return ScriptedPlatform::instance().read(file, static_cast<uint8_t*>(buffer), count, *read);
}

BOOL WINAPI WriteFile(HANDLE file, LPCVOID buffer, DWORD count, LPDWORD written,
                      LPOVERLAPPED overlapped) {
  record("WriteFile", named(file), text(count), text(overlapped));
  return ScriptedPlatform::instance().write(file, static_cast<const uint8_t*>(buffer), count,
                                            *written);
}

BOOL WINAPI FlushFileBuffers(HANDLE file) {
  record("FlushFileBuffers", named(file));
  return answer(!ScriptedPlatform::instance().writesFail);
}

BOOL WINAPI GetCommState(HANDLE port, LPDCB state) {
  record("GetCommState", named(port));
  return ScriptedPlatform::instance().getCommState(*state);
}

BOOL WINAPI SetCommState(HANDLE port, LPDCB state) {
  record("SetCommState", named(port));
  return ScriptedPlatform::instance().setCommState(*state);
}

BOOL WINAPI GetCommTimeouts(HANDLE port, LPCOMMTIMEOUTS timeouts) {
  record("GetCommTimeouts", named(port));
  *timeouts = ScriptedPlatform::instance().driverTimeouts;
  return answer(!ScriptedPlatform::instance().commCallsFail);
}

BOOL WINAPI SetCommTimeouts(HANDLE port, LPCOMMTIMEOUTS timeouts) {
  record("SetCommTimeouts", named(port));
  ScriptedPlatform::instance().timeoutsSet = *timeouts;
  return answer(!ScriptedPlatform::instance().commCallsFail);
}
