#pragma once

#include <atomic>

namespace ipodctl {

/// A value that one thread writes while another reads it. Each access is atomic. Accesses to
/// several values are not ordered; where the order matters, a semaphore is between them.
///
/// Each function is a single load or store. Where size matters, the compiler takes an access for as
/// large as a call and makes it one. The attribute saves 888 bytes of the image for Windows CE.
template <class T>
class SharedValue {
 public:
  constexpr SharedValue() = default;
  constexpr SharedValue(T initial) : value(initial) {}
  [[gnu::always_inline]] SharedValue(const SharedValue& other) : value(other.get()) {}

  [[gnu::always_inline]] SharedValue& operator=(const SharedValue& other) {
    value.store(other.get(), std::memory_order_relaxed);
    return *this;
  }

  [[gnu::always_inline]] SharedValue& operator=(T newValue) {
    value.store(newValue, std::memory_order_relaxed);
    return *this;
  }

  [[gnu::always_inline]] T get() const { return value.load(std::memory_order_relaxed); }
  [[gnu::always_inline]] operator T() const { return get(); }

  /// Returns the address where the host may read the value.
  const T* address() const {
    static_assert(sizeof(value) == sizeof(T), "the host reads the value itself");
    return reinterpret_cast<const T*>(&value);
  }

 private:
  std::atomic<T> value{};
};

}  // namespace ipodctl
