#include <windows.h>

LONG WINAPI InterlockedCompareExchange(LONG volatile* target, LONG value, LONG comparand) {
  __atomic_compare_exchange_n(target, &comparand, value, false, __ATOMIC_SEQ_CST, __ATOMIC_SEQ_CST);
  return comparand;
}
