#pragma once

#include <windows.h>

#include <stdexcept>
#include <string>

namespace coredll {

/// Why a device cannot be opened. The message continues "IPD1: " and says what to do.
class OpenFailure : public std::runtime_error {
 public:
  OpenFailure(DWORD error, const std::string& why) : std::runtime_error(why), code(error) {}

  const DWORD code;  ///< of GetLastError
};

}  // namespace coredll
