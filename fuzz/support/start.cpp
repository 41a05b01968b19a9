#include <cstdio>
#include <cstdlib>

/// Drops standard output: the library's console messages would hide the fuzzer's messages on
/// stderr.
extern "C" int LLVMFuzzerInitialize(int*, char***) {
  if (std::freopen("/dev/null", "w", stdout) == nullptr) std::abort();
  return 0;
}
