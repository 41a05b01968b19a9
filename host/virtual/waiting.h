// Objects that WaitForSingleObject can wait for.
#ifndef VIRTUAL_WAITING_H
#define VIRTUAL_WAITING_H

#include <windows.h>

#include "named_object.h"

namespace virtual_platform {

class Waitable : public NamedObject {
 public:
  using NamedObject::NamedObject;

  // WaitForSingleObject's result; WAIT_FAILED comes with the last error set.
  DWORD wait(DWORD milliseconds);

 protected:
  virtual bool isSignalled() const = 0;
  // What a wait takes of a signalled object.
  virtual void take() {}
};

}  // namespace virtual_platform

#endif
