// The numbers of the system calls in which a thread waits, as /proc/self/task/*/syscall shows them.
#pragma once

#include <sys/syscall.h>

#include <initializer_list>

namespace host_test {

#if defined(TEST_EMULATOR)
/// The kernel sees the system calls of the emulator, which are those of x86-64.
constexpr std::initializer_list<long> kPollCalls = {7, 271};
constexpr std::initializer_list<long> kFutexCalls = {202};
#elif defined(SYS_poll)
constexpr std::initializer_list<long> kPollCalls = {SYS_poll, SYS_ppoll};
constexpr std::initializer_list<long> kFutexCalls = {SYS_futex};
#else
constexpr std::initializer_list<long> kPollCalls = {SYS_ppoll};
constexpr std::initializer_list<long> kFutexCalls = {SYS_futex};
#endif

}  // namespace host_test
