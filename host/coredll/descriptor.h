// Owns a file descriptor.
#ifndef COREDLL_DESCRIPTOR_H
#define COREDLL_DESCRIPTOR_H

#include <unistd.h>

#include <utility>

namespace coredll {

class Descriptor {
 public:
  // Below 0: none.
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

#endif
