#pragma once

#include <windows.h>

#include "handle_table.h"
#include "last_error.h"

namespace coredll {

/// Runs `call` on the handle's device, an Opened, with `moved` at 0, for a transfer of `count`
/// bytes.
template <typename Opened, typename Call>
BOOL transferOn(HANDLE file, LPCVOID buffer, DWORD count, LPDWORD moved, LPOVERLAPPED overlapped,
                Call call) {
  if (moved == nullptr) return fail(ERROR_INVALID_PARAMETER, FALSE);
  *moved = 0;
  const auto device = objectOf<Opened>(file);
  if (!device) return FALSE;
  const bool isBufferMissing = buffer == nullptr && count > 0;
  if (isBufferMissing || overlapped != nullptr) return fail(ERROR_INVALID_PARAMETER, FALSE);
  return count == 0 ? TRUE : report(call(*device));
}

}  // namespace coredll
