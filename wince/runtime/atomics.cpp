// The functions that the compiler calls where ARMv4T has no instruction. Devices with this system
// have one processor: a thread sees memory in the order in which another wrote it, and only an
// exchange must be atomic.
#include <windows.h>

#include <cstdint>

extern "C" {

void synchronize() __asm__("__sync_synchronize");
bool compareExchange4(volatile void* value, void* expected, uint32_t desired, int successOrder,
                      int failureOrder) __asm__("__atomic_compare_exchange_4");

void synchronize() { __asm__ volatile("" ::: "memory"); }

bool compareExchange4(volatile void* value, void* expected, uint32_t desired, int, int) {
  auto* const wanted = static_cast<LONG*>(expected);
  const LONG found = InterlockedCompareExchange(static_cast<volatile LONG*>(value),
                                                static_cast<LONG>(desired), *wanted);
  if (found == *wanted) return true;
  *wanted = found;
  return false;
}

}  // extern "C"
