// Objects that WaitForSingleObject can wait for.
#pragma once

#include <windows.h>

#include "named_object.h"

namespace virtual_platform {

class Waitable : public NamedObject {
 public:
  static constexpr unsigned kKinds = coredll::kSemaphoreKind | coredll::kThreadKind;

  using NamedObject::NamedObject;

  /// Returns WaitForSingleObject's result; with WAIT_FAILED the last error is set.
  DWORD wait(DWORD milliseconds);

 protected:
  virtual bool isSignalled() const = 0;
  /// Consumes the signal, as a wait does.
  virtual void take() {}
};

}  // namespace virtual_platform
