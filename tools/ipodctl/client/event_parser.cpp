#include "ipodctl/client/event_parser.h"

#include <utility>

namespace tool {
namespace {

constexpr char kData[] = "data:";
constexpr size_t kDataSize = sizeof kData - 1;
/// A server that never ends a line must not fill the memory.
constexpr size_t kLongestEvent = 1u << 20;

}  // namespace

std::vector<std::string> EventParser::take(const std::string& piece) {
  std::vector<std::string> complete;
  for (const char each : piece) {
    if (each == '\n') {
      takeLine(complete);
    } else if (each != '\r' && line.size() < kLongestEvent) {
      line += each;
    }
  }
  return complete;
}

/// An empty line ends an event. Its data can have several lines.
void EventParser::takeLine(std::vector<std::string>& complete) {
  if (line.empty() && !data.empty()) complete.push_back(std::exchange(data, ""));
  if (line.compare(0, kDataSize, kData) == 0 && data.size() < kLongestEvent) {
    const size_t start = line.size() > kDataSize && line[kDataSize] == ' ' ? 1 : 0;
    data += (data.empty() ? "" : "\n") + line.substr(kDataSize + start);
  }
  line.clear();
}

}  // namespace tool
