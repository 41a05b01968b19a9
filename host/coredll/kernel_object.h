// The base of what a handle refers to.
#pragma once

namespace coredll {

/// The kinds of objects, as bits of a set.
enum ObjectKind : unsigned {
  kSemaphoreKind = 1,
  kThreadKind = 2,
  kStreamDeviceKind = 4,
  kSerialPortKind = 8,
};

class KernelObject {
 public:
  /// The kinds of objects that this class is the base of. Each class that objectOf() looks for
  /// defines its own set.
  static constexpr unsigned kKinds = ~0u;

  explicit KernelObject(ObjectKind ownKind) : kind(ownKind) {}
  KernelObject(const KernelObject&) = delete;
  KernelObject& operator=(const KernelObject&) = delete;
  virtual ~KernelObject() = default;

  bool isOneOf(unsigned kinds) const { return (kind & kinds) != 0; }

  /// Makes the calls that wait in the object fail. Called at most once, when the handle is closed.
  virtual void close() = 0;

 private:
  const ObjectKind kind;
};

}  // namespace coredll
