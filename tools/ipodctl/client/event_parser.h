#pragma once

#include <string>
#include <vector>

namespace tool {

/// Cuts a stream of server-sent events, which arrives in any pieces.
class EventParser {
 public:
  /// Returns the data of the events that are complete now.
  std::vector<std::string> take(const std::string& piece);

 private:
  void takeLine(std::vector<std::string>& complete);

  std::string line;
  std::string data;
};

}  // namespace tool
