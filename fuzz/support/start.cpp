#include <cstdio>
#include <cstdlib>

/// The console messages of what is tried would hide the fuzzer's own, which go to stderr.
extern "C" int LLVMFuzzerInitialize(int*, char***) {
  if (std::freopen("/dev/null", "w", stdout) == nullptr) std::abort();
  return 0;
}
