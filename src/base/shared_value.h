#pragma once

#include <atomic>

namespace ipodctl {

/// A global value that exports read and write without the library lock while another thread works
/// on it under the lock. Each access is atomic. Accesses to several values are not ordered.
template <class T>
class SharedValue {
 public:
  constexpr SharedValue() = default;
  constexpr SharedValue(T initial) : value(initial) {}
  SharedValue(const SharedValue& other) : value(other.get()) {}

  SharedValue& operator=(const SharedValue& other) {
    value.store(other.get(), std::memory_order_relaxed);
    return *this;
  }

  SharedValue& operator=(T newValue) {
    value.store(newValue, std::memory_order_relaxed);
    return *this;
  }

  T get() const { return value.load(std::memory_order_relaxed); }
  operator T() const { return get(); }

  /// Returns the address where the host may read the value.
  const T* address() const {
    static_assert(sizeof(value) == sizeof(T), "the host reads the value itself");
    return reinterpret_cast<const T*>(&value);
  }

 private:
  std::atomic<T> value{};
};

}  // namespace ipodctl
