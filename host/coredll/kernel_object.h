// The base of what a handle refers to.
#pragma once

namespace coredll {

class KernelObject {
 public:
  KernelObject() = default;
  KernelObject(const KernelObject&) = delete;
  KernelObject& operator=(const KernelObject&) = delete;
  virtual ~KernelObject() = default;

  /// Makes the calls that wait in the object fail. Called at most once, when the handle is closed.
  virtual void close() = 0;
};

}  // namespace coredll
