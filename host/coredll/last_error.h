// How a function of the platform says that it failed.
#ifndef COREDLL_LAST_ERROR_H
#define COREDLL_LAST_ERROR_H

#include <windows.h>

namespace coredll {

// Sets the last error and is the failure result to return.
template <typename Result>
Result fail(DWORD error, Result result) {
  SetLastError(error);
  return result;
}

// TRUE for ERROR_SUCCESS; otherwise FALSE, with the last error set.
inline BOOL report(DWORD error) { return error == ERROR_SUCCESS ? TRUE : fail(error, FALSE); }

}  // namespace coredll

#endif
