#pragma once

#include <unistd.h>

#include <utility>

namespace simulator {

/// Owns a file descriptor and closes it.
class FileDescriptor {
 public:
  FileDescriptor() = default;
  explicit FileDescriptor(int owned) : number(owned) {}
  FileDescriptor(FileDescriptor&& other) noexcept : number(std::exchange(other.number, -1)) {}
  FileDescriptor& operator=(FileDescriptor&& other) noexcept {
    std::swap(number, other.number);
    return *this;
  }
  ~FileDescriptor() {
    if (number >= 0) close(number);
  }

  int get() const { return number; }
  explicit operator bool() const { return number >= 0; }

 private:
  int number = -1;
};

}  // namespace simulator
