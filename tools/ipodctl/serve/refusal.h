#pragma once

#include <string>

namespace tool {

/// Why a request was not carried out; the number is the HTTP status.
enum class Refusal {
  kBadRequest = 400,
  kNoSuchList = 404,
  kStaleGeneration = 409,
  kNoIpod = 503,
  kNoAnswer = 504,
};

/// Thrown when a request cannot be carried out.
struct Refused {
  Refusal refusal;
  std::string code;     ///< "stale-generation"
  std::string message;  ///< what to do
};

/// Thrown when nobody waits for a request any more.
struct NotWanted {};

/// Thrown when the iPod did not answer, or its answers may belong to other requests.
struct OddAnswer {};

}  // namespace tool
