#pragma once

#include <algorithm>
#include <vector>

/// Outputs that a host passes to an export, with guards around them.
namespace session {

/// A value between two guards.
struct GuardedInt {
  static constexpr int kUntouched = -77777;
  int guards[3] = {kUntouched, kUntouched, kUntouched};

  int* value() { return &guards[1]; }
  bool isUntouched() const { return isGuarded() && guards[1] == kUntouched; }
  bool isGuarded() const { return guards[0] == kUntouched && guards[2] == kUntouched; }
};

/// A text buffer with guards on both sides.
class GuardedUnits {
 public:
  unsigned short* units() { return content.data() + kGuard; }
  /// Returns whether nothing was written outside the first `size` units.
  bool isUntouchedBut(size_t size) const {
    const auto untouched = [](unsigned short unit) { return unit == kUntouched; };
    const auto begin = content.begin() + kGuard;
    return std::all_of(content.begin(), begin, untouched) &&
           std::all_of(begin + static_cast<std::ptrdiff_t>(size), content.end(), untouched);
  }

 private:
  static constexpr size_t kGuard = 64;
  static constexpr unsigned short kUntouched = 0xEEEE;
  std::vector<unsigned short> content = std::vector<unsigned short>(3 * kGuard, kUntouched);
};

}  // namespace session
