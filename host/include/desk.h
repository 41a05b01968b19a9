/*
 * The functions of the Linux host's platform that Windows CE does not have: they receive posted
 * window messages, return the numbers of open handles and running threads, record calls of the
 * audio library, and pass the trace on. Host programs and tests on Linux may use them; the library
 * never does. All functions may be called on any thread.
 */
#pragma once

#include <windows.h>

#ifdef __cplusplus
extern "C" {
#endif

/* Receives one posted message on the posting thread. Must not block and must not call the poster.
 */
typedef void (*DeskMessageSink)(void* context, HWND window, UINT message, WPARAM wParam,
                                LPARAM lParam);

/*
 * Passes every message posted from now on to `sink` (NULL: messages are dropped, as at the start).
 * When it returns, no call of the previous sink is running.
 */
void deskSetMessageSink(DeskMessageSink sink, void* context);

/* Returns the number of handles (semaphores, threads, devices) that are open in this process. */
unsigned deskOpenHandles(void);

/*
 * Returns the number of threads made by CreateThread that have not ended. A thread whose handle is
 * signalled is not included.
 */
unsigned deskRunningThreads(void);

/*
 * Adds a call of the audio library to the trace: the function and its `count` values. Does nothing
 * unless the environment variable IPODCTL_TRACE names a file (see CreateFileW).
 */
void deskTraceAudio(const char* function, const int* values, unsigned count);

/*
 * Receives one line of the trace, `size` characters with the line feed at their end, on the thread
 * whose transfer it describes. Must not block, use a device or call deskSetTraceSink.
 */
typedef void (*DeskTraceSink)(void* context, const char* line, unsigned size);

/*
 * Passes every line that is recorded from now on to `sink` (NULL: none, as at the start), also
 * without IPODCTL_TRACE. The lines that every trace begins with are not passed. When it returns, no
 * call of the previous sink is running.
 */
void deskSetTraceSink(DeskTraceSink sink, void* context);

#ifdef __cplusplus
}
#endif
