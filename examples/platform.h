/*
 * What the examples use of the platform: pauses, a clock, a thread and a lock, and a screen. A
 * product has its own. The functions for Windows exist on Windows CE, too; those of C11 do not.
 */
#ifndef PLATFORM_H
#define PLATFORM_H

#include <stdio.h>

#ifdef _WIN32
#include <windows.h>

typedef HANDLE Thread;
typedef CRITICAL_SECTION Lock;
#define THREAD_FUNCTION(name) static DWORD WINAPI name(LPVOID context)

static inline void wait_ms(int milliseconds) { Sleep((DWORD)milliseconds); }

static inline unsigned now_ms(void) { return GetTickCount(); }

static inline void init_lock(Lock* lock) { InitializeCriticalSection(lock); }
static inline void take_lock(Lock* lock) { EnterCriticalSection(lock); }
static inline void release_lock(Lock* lock) { LeaveCriticalSection(lock); }

/* Returns 0 when the platform has no thread left. */
static inline int start_thread(Thread* thread, LPTHREAD_START_ROUTINE run, void* context) {
  *thread = CreateThread(NULL, 0, run, context, 0, NULL);
  return *thread != NULL;
}

static inline void join_thread(Thread thread) {
  WaitForSingleObject(thread, INFINITE);
  CloseHandle(thread);
}
#else
#include <threads.h>
#include <time.h>

typedef thrd_t Thread;
typedef mtx_t Lock;
#define THREAD_FUNCTION(name) static int name(void* context)

static inline void wait_ms(int milliseconds) {
  const struct timespec pause = {milliseconds / 1000, milliseconds % 1000 * 1000000L};
  thrd_sleep(&pause, NULL);
}

/* A clock that nobody sets: a head unit sets the time of day when it knows it. Compilers that allow
 * nothing but C11 have only that one. */
static inline unsigned now_ms(void) {
  struct timespec now;
#ifdef CLOCK_MONOTONIC
  clock_gettime(CLOCK_MONOTONIC, &now);
#else
  timespec_get(&now, TIME_UTC);
#endif
  return (unsigned)now.tv_sec * 1000U + (unsigned)(now.tv_nsec / 1000000);
}

static inline void init_lock(Lock* lock) { mtx_init(lock, mtx_plain); }
static inline void take_lock(Lock* lock) { mtx_lock(lock); }
static inline void release_lock(Lock* lock) { mtx_unlock(lock); }

/* Returns 0 when the platform has no thread left. */
static inline int start_thread(Thread* thread, thrd_start_t run, void* context) {
  return thrd_create(thread, run, context) == thrd_success;
}

static inline void join_thread(Thread thread) { thrd_join(thread, NULL); }
#endif

/* Prints a text of the library, which is Latin-1, as UTF-8. */
static inline void print_text(const unsigned short* text) {
  for (; *text != 0; text++) {
    if (*text < 0x80) {
      putchar(*text);
    } else {
      putchar(0xC0 | (*text >> 6 & 0x1F));
      putchar(0x80 | (*text & 0x3F));
    }
  }
}

#endif
