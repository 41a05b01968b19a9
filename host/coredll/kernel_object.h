// What stands behind a handle.
#ifndef COREDLL_KERNEL_OBJECT_H
#define COREDLL_KERNEL_OBJECT_H

namespace coredll {

class KernelObject {
 public:
  KernelObject() = default;
  KernelObject(const KernelObject&) = delete;
  KernelObject& operator=(const KernelObject&) = delete;
  virtual ~KernelObject() = default;

  // The object's handle is closed: makes the calls that wait in the object fail. Called once at
  // most.
  virtual void close() = 0;
};

}  // namespace coredll

#endif
