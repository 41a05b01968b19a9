#pragma once

#include <cstdint>
#include <memory>
#include <new>
#include <utility>

namespace ipodctl {

/// A growable queue for a platform without exceptions. Growth can fail, and append reports it. The
/// items lie in a ring, so that taking the first one costs the same however many follow.
/// T is movable and default-constructible.
template <class T>
class Fifo {
 public:
  uint32_t size() const { return count; }
  bool empty() const { return count == 0; }

  /// Appends an item. Returns false, and leaves the queue unchanged, when there is no memory.
  template <class Item>
  [[nodiscard]] bool append(Item&& item) {
    if (count == capacity && !grow()) return false;
    items[place(count)] = std::forward<Item>(item);
    ++count;
    return true;
  }

  /// Removes and returns the first item; the queue is not empty.
  T takeFirst() {
    const uint32_t first = head;
    head = place(1);
    --count;
    return std::move(items[first]);
  }

  /// Destroys all items, starting with the first one.
  void clear() {
    while (!empty())
      takeFirst();
  }

 private:
  static constexpr uint32_t kFirstCapacity = 8;  ///< a power of two, as all capacities are

  uint32_t place(uint32_t index) const { return (head + index) & (capacity - 1); }

  bool grow() {
    const uint32_t larger = capacity == 0 ? kFirstCapacity : capacity * 2;
    std::unique_ptr<T[]> moved(new (std::nothrow) T[larger]());
    if (!moved) return false;
    for (uint32_t i = 0; i < count; ++i)
      moved[i] = std::move(items[place(i)]);
    items = std::move(moved);
    capacity = larger;
    head = 0;
    return true;
  }

  std::unique_ptr<T[]> items;
  uint32_t head = 0;  ///< the place of the first item
  uint32_t count = 0;
  uint32_t capacity = 0;
};

}  // namespace ipodctl
