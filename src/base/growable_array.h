#pragma once

#include <cstdint>
#include <memory>
#include <new>
#include <utility>

namespace ipodctl {

/// A growable array for a platform without exceptions. Growth can fail, and append reports it.
/// T is movable and default-constructible.
template <class T>
class GrowableArray {
 public:
  uint32_t size() const { return count; }
  bool empty() const { return count == 0; }

  T& operator[](uint32_t index) { return items[index]; }
  const T& operator[](uint32_t index) const { return items[index]; }

  T* begin() { return items.get(); }
  T* end() { return items.get() + count; }
  const T* begin() const { return items.get(); }
  const T* end() const { return items.get() + count; }

  /// Appends an item. Returns false, and leaves the array unchanged, when there is no memory.
  template <class Item>
  [[nodiscard]] bool append(Item&& item) {
    if (count == capacity && !grow()) return false;
    items[count++] = std::forward<Item>(item);
    return true;
  }

  /// Removes and returns the item at `index` (below size()). The following ones move up.
  T removeAt(uint32_t index) {
    T removed = std::move(items[index]);
    for (uint32_t i = index + 1; i < count; ++i)
      items[i - 1] = std::move(items[i]);
    --count;
    items[count] = T{};
    return removed;
  }

  /// Destroys all items, starting with the first one.
  void clear() {
    for (T& item : *this)
      item = T();
    count = 0;
  }

 private:
  static constexpr uint32_t kFirstCapacity = 8;

  bool grow() {
    const uint32_t larger = capacity == 0 ? kFirstCapacity : capacity * 2;
    std::unique_ptr<T[]> moved(new (std::nothrow) T[larger]());
    if (!moved) return false;
    for (uint32_t i = 0; i < count; ++i)
      moved[i] = std::move(items[i]);
    items = std::move(moved);
    capacity = larger;
    return true;
  }

  std::unique_ptr<T[]> items;
  uint32_t count = 0;
  uint32_t capacity = 0;
};

}  // namespace ipodctl
