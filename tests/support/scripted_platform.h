#pragma once

#include <windows.h>

#include <gtest/gtest.h>

#include <deque>
#include <functional>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "support/bytes.h"

/// The result of a read of the scripted device: some bytes (perhaps none) or a failure, and what
/// happens before it.
struct Arrival {
  Bytes bytes;
  bool fails = false;
  std::function<void()> meanwhile = nullptr;
};

/// The platform's calls, answered by a script on the test's own thread. In programs that link
/// scripted_platform.cpp these replace the platform's calls.
///
/// Semaphores count as real ones do, but nothing ever waits: a wait that would block ends at once.
/// A thread does not run until the test or a wait for its end runs it.
class ScriptedPlatform {
 public:
  static ScriptedPlatform& instance();

  /// Forgets scripts and records. Semaphores stay: the code under test keeps some for the process.
  void reset();

  /// Every call in order with its arguments, handles by their names. Calls that tests provoke while
  /// they set up are dropped by clearing this.
  std::vector<std::string> calls;

  /// The calls that begin with `name`.
  std::vector<std::string> callsOf(const std::string& name) const;

  /// The milliseconds that sleeps, and waits without a result, have taken.
  uint64_t waited = 0;

  /// Closes of handles that were not open (any more).
  int wrongCloses = 0;

  // Results that a test sets.
  DWORD lastError = ERROR_SUCCESS;
  bool semaphoresFail = false;      ///< to be created, as the next two
  std::set<int> semaphoresMissing;  ///< the first is 0: only these fail to be created
  bool threadsFail = false;
  bool threadsRunAtOnce = false;  ///< to their end, before CreateThread returns
  bool devicesFail = false;
  std::deque<DWORD> waitResults;       ///< taken before the semaphores are looked at
  std::function<void()> whileBlocked;  ///< runs once when a wait without limit cannot end
  std::function<void()> onRelease;
  std::string releasedByName;          ///< the semaphore of the next one
  std::function<void()> afterRelease;  ///< runs once, when that semaphore has been released
  std::function<void()> onClose;       ///< of a device
  std::function<void()> onCreateFile;

  // The device.
  std::deque<Arrival> arrivals;  ///< when they are used up, reads fail
  std::vector<DWORD> readSizes;  ///< what each read had room for
  std::vector<Bytes> writes;
  bool writesFail = false;
  DWORD writeLimit = MAXDWORD;   ///< of one write
  DWORD countOfFailedWrite = 0;  ///< what a failed write leaves as the number of bytes written
  DWORD surplusOfRead = 0;       ///< what a read reports beyond the bytes that it delivered
  DCB driverState{};             ///< what GetCommState returns before a SetCommState
  DCB stateReadBack{};           ///< what it returns after one
  DCB stateSet{};
  COMMTIMEOUTS driverTimeouts{};
  COMMTIMEOUTS timeoutsSet{};
  bool commCallsFail = false;

  /// Makes bytes arrive, each argument at a separate read.
  template <class... Reads>
  void arrive(const Reads&... reads) {
    (arrivals.push_back({Bytes(reads)}), ...);
  }

  /// Runs the thread that was made last, here and now.
  void runThread();

  /// Assumes that the system has killed the running thread, wherever it is.
  void endThread() { threadState = ThreadState::kEnded; }

  /// The name of a handle as `calls` has it: "semaphore 3", "thread 1", "device 2".
  std::string nameOf(HANDLE handle) const;

  // The calls themselves.
  HANDLE createSemaphore(LONG initialCount, LONG maximumCount);
  BOOL releaseSemaphore(HANDLE semaphore, LONG count);
  DWORD wait(HANDLE object, DWORD milliseconds);
  void sleep(DWORD milliseconds) { waited += milliseconds; }
  BOOL close(HANDLE object);
  HANDLE createThread(LPTHREAD_START_ROUTINE start, void* argument);
  HANDLE createDevice();
  BOOL read(HANDLE device, uint8_t* buffer, DWORD count, DWORD& read);
  BOOL write(HANDLE device, const uint8_t* bytes, DWORD count, DWORD& written);
  BOOL getCommState(DCB& state);
  BOOL setCommState(const DCB& state);

  LPTHREAD_START_ROUTINE threadStart = nullptr;
  void* threadArgument = nullptr;

 private:
  enum class ThreadState { kNone, kWaiting, kRunning, kEnded };

  struct Semaphore {
    LONG count;
    LONG maximum;
  };

  HANDLE addHandle(const char* kind);
  DWORD waitFor(HANDLE object, DWORD milliseconds);
  DWORD waitForThread();
  DWORD waitForSemaphore(Semaphore& semaphore, DWORD milliseconds);

  bool isOpen(HANDLE handle) const { return open.count(handle) != 0; }

  std::map<HANDLE, std::string> names;  ///< of all handles that ever were
  std::set<HANDLE> open;
  std::map<HANDLE, Semaphore> semaphores;
  int semaphoresAsked = 0;
  std::map<std::string, int> counts;
  HANDLE thread = nullptr;
  ThreadState threadState = ThreadState::kNone;
};

/// A test over the scripted platform.
class ScriptedPlatformTest : public testing::Test {
 protected:
  ScriptedPlatformTest() { platform.reset(); }
  ~ScriptedPlatformTest() override {
    EXPECT_EQ(platform.wrongCloses, 0);
    platform.reset();
  }

  ScriptedPlatform& platform = ScriptedPlatform::instance();
};
