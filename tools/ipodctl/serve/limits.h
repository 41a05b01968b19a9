// What one client may need: the size and the time of a request, and the number of connections.
#pragma once

#include <chrono>
#include <cstddef>

namespace tool::limits {

constexpr size_t kHeadSize = 8 << 10;
constexpr size_t kTargetSize = 1 << 10;  ///< of the path and the query
constexpr size_t kBodySize = 64 << 10;
constexpr size_t kUploadSize = 4 << 20;

constexpr size_t kConnections = 64;
constexpr size_t kEventStreams = 32;

/// For the whole head, from its first byte; also the longest pause between two requests.
constexpr std::chrono::seconds kHeadTime{5};
constexpr std::chrono::seconds kBodyTime{10};
/// For a piece of an answer, while the client does not read.
constexpr std::chrono::seconds kWriteTime{5};
/// How long and how much of a refused request is read, so that its client sees the answer.
constexpr std::chrono::milliseconds kLingerTime{300};
constexpr size_t kLingerSize = 1 << 20;

}  // namespace tool::limits
