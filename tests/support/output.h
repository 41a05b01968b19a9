#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace exports {

/// An output of a call.
class Output {
 public:
  virtual ~Output() = default;

  /// Returns whether nothing was written except the beginning of the buffer, without a hole.
  virtual bool isIntact() const = 0;
  /// Returns whether the whole buffer was written.
  virtual bool isFull() const = 0;
  /// Returns what was written, kNothing for nothing.
  virtual std::string words() const = 0;

  static constexpr const char* kNothing = "-";
};

/// A buffer of `size` units between guards.
template <class Unit>
class Room : public Output {
 public:
  explicit Room(std::size_t size) : room(size), units(kGuard + size + kGuard, untouched()) {}

  Unit* data() { return units.data() + kGuard; }

  bool isIntact() const override {
    const auto others =
        std::count_if(units.begin(), units.end(), [](Unit unit) { return unit != untouched(); });
    return static_cast<std::size_t>(others) == written();
  }
  bool isFull() const override { return written() == room; }

 protected:
  /// Returns how many units were written from the start of the buffer.
  std::size_t written() const {
    const auto* const start = units.data() + kGuard;
    return static_cast<std::size_t>(std::find(start, start + room, untouched()) - start);
  }
  const Unit* start() const { return units.data() + kGuard; }

 private:
  static constexpr std::size_t kGuard = 64;
  static constexpr Unit untouched() { return static_cast<Unit>(0xABCDABCDu); }

  const std::size_t room;
  std::vector<Unit> units;
};

class Number final : public Room<int> {
 public:
  Number() : Room(1) {}

  std::string words() const override {
    return written() == 0 ? kNothing : std::to_string(*start());
  }
};

/// A unit beyond ASCII is in hexadecimal: "<FFFF>".
std::string wordsOf(unsigned short unit);

class Text final : public Room<unsigned short> {
 public:
  explicit Text(std::size_t size) : Room(size) {}

  std::string words() const override;
};

}  // namespace exports
