#pragma once

#include <map>
#include <optional>
#include <string>
#include <utility>

namespace tool {

/// The names that cost the connection. A name of more than 247 bytes arrives in a long frame, the
/// library takes it for a damaged one, and closes the link. A head unit that asks again after each
/// connection would never come to rest.
///
/// A cable can be pulled during any name. So the second loss at the same name decides. Of the
/// worker's thread.
class LostNames {
 public:
  /// Shown instead of such a name.
  static constexpr char kPlaceholder[] = "(name too long)";

  /// The link was closed while the iPod was asked for this name, or its answer was odd.
  void suspect(const std::string& path, int index) { suspected = {path, index}; }

  /// The iPod is still there: the name is not to blame.
  void acquit() { suspected.reset(); }

  /// The connection is lost.
  void noteLoss() {
    if (suspected) ++losses[*suspected];
    suspected.reset();
  }

  /// Returns whether the name is not asked for any more.
  bool contains(const std::string& path, int index) const {
    const auto found = losses.find({path, index});
    return found != losses.end() && found->second >= kLossesOfALongName;
  }

  /// Another iPod has other names.
  void clear() { losses.clear(); }

 private:
  using Place = std::pair<std::string, int>;
  static constexpr int kLossesOfALongName = 2;

  std::optional<Place> suspected;
  std::map<Place, int> losses;
};

}  // namespace tool
