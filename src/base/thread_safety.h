#pragma once

// Says which semaphore guards what. Clang checks it when it compiles. Other compilers ignore it.

#define IPODCTL_CAPABILITY(kind) __attribute__((capability(kind)))
#define IPODCTL_SCOPED_CAPABILITY __attribute__((scoped_lockable))

/// A variable that is read and written only while `semaphore` is held.
#define IPODCTL_GUARDED_BY(semaphore) __attribute__((guarded_by(semaphore)))

/// A function that is called only while `semaphore` is held.
#define IPODCTL_REQUIRES(semaphore) __attribute__((requires_capability(semaphore)))

/// A function that takes the semaphore, takes it if it returns true, or releases it.
#define IPODCTL_ACQUIRE(...) __attribute__((acquire_capability(__VA_ARGS__)))
#define IPODCTL_TRY_ACQUIRE(...) __attribute__((try_acquire_capability(__VA_ARGS__)))
#define IPODCTL_RELEASE(...) __attribute__((release_capability(__VA_ARGS__)))

/// A function that is not checked. Its comment says why.
#define IPODCTL_NOT_CHECKED __attribute__((no_thread_safety_analysis))
