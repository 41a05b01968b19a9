/*
 * What the desk's platform offers beyond Windows CE: a place where posted window messages arrive,
 * and counts of open handles and running threads. Host programs and tests on Linux may use it; the
 * library never does. All functions may be called on any thread.
 */
#ifndef HOST_DESK_H
#define HOST_DESK_H

#include <windows.h>

#ifdef __cplusplus
extern "C" {
#endif

/* Receives one posted message on the posting thread. Must not block and must not call the poster.
 */
typedef void (*DeskMessageSink)(void* context, HWND window, UINT message, WPARAM wParam,
                                LPARAM lParam);

/*
 * Hands every message posted from now on to `sink` (NULL: messages are dropped, as at the start).
 * When it returns, no call of the sink before is running any more.
 */
void deskSetMessageSink(DeskMessageSink sink, void* context);

/* The number of handles (semaphores, threads, devices) open in this process. */
unsigned deskOpenHandles(void);

/*
 * The number of threads made by CreateThread that have not ended: whoever has waited for a thread's
 * handle does not find the thread counted any more.
 */
unsigned deskRunningThreads(void);

#ifdef __cplusplus
}
#endif

#endif
