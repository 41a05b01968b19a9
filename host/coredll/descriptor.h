// Owns a file descriptor.
#pragma once

#include <unistd.h>

#include <utility>

namespace coredll {

class Descriptor {
 public:
  /// A number below 0: no descriptor.
  explicit Descriptor(int owned = -1) : number(owned) {}
  Descriptor(Descriptor&& other) noexcept : number(std::exchange(other.number, -1)) {}
  Descriptor& operator=(Descriptor&& other) noexcept {
    std::swap(number, other.number);
    return *this;
  }
  ~Descriptor() {
    if (isOpen()) ::close(number);
  }

  bool isOpen() const { return number >= 0; }
  int get() const { return number; }

 private:
  int number;
};

}  // namespace coredll
