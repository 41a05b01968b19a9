// Reports the failure of a platform function.
#pragma once

#include <windows.h>

namespace coredll {

/// Sets the last error and returns the failure result.
template <typename Result>
Result fail(DWORD error, Result result) {
  SetLastError(error);
  return result;
}

/// Returns TRUE for ERROR_SUCCESS; otherwise sets the last error and returns FALSE.
inline BOOL report(DWORD error) { return error == ERROR_SUCCESS ? TRUE : fail(error, FALSE); }

}  // namespace coredll
