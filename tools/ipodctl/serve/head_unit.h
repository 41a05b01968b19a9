#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>

namespace tool {

class EventLog;

/// Why a request was not carried out; the number is the HTTP status.
enum class Refusal {
  kBadRequest = 400,
  kNoSuchList = 404,
  kStaleGeneration = 409,
  kNoIpod = 503,
  kNoAnswer = 504,
};

/// What became of a request.
struct Outcome {
  nlohmann::json result;           ///< the document for the client; an object
  std::optional<Refusal> refusal;  ///< when it was not carried out
  std::string code;                ///< of the refusal: "stale-generation"
  std::string message;             ///< of the refusal: what to do
};

/// Says whether somebody still waits for the request. It is asked before each request to the iPod.
using Wanted = std::function<bool()>;

struct ListRequest {
  std::string path;  ///< "artists/3/albums"
  uint64_t generation;
  int offset = 0;
  int count = 20;
};

struct PlayRequest {
  std::string path;
  uint64_t generation;
  int index;  ///< -1: the play-all entry
};

/// The head unit behind `ipodctl serve`: one thread owns the library and carries out the requests
/// of all clients, one after the other. Its state and what happens go to the event log.
///
/// All functions may be called on any thread. They return when the request is carried out, is
/// refused, or nobody wants it any more.
class HeadUnit {
 public:
  virtual ~HeadUnit() = default;

  virtual nlohmann::json state() const = 0;
  virtual Outcome list(const ListRequest& request, const Wanted& isWanted) = 0;
  virtual Outcome tabs(const ListRequest& request, const Wanted& isWanted) = 0;
  virtual Outcome play(const PlayRequest& request, const Wanted& isWanted) = 0;
  virtual Outcome command(const std::string& name, const Wanted& isWanted) = 0;
  /// Either may be empty: it stays as it is.
  virtual Outcome setModes(const std::string& shuffle, const std::string& repeat,
                           const Wanted& isWanted) = 0;
  /// Uses the bitmap as the logo and connects again, because the iPod shows a logo only then. An
  /// empty bitmap removes it.
  virtual Outcome setLogo(const std::string& bitmap, const Wanted& isWanted) = 0;
  virtual Outcome reconnect(const Wanted& isWanted) = 0;
};

struct HeadUnitOptions {
  std::string folder;  ///< where the logo is kept; the library reads it from the current folder
};

/// Starts the thread. It ends with the object, after the library's call that is under way.
std::unique_ptr<HeadUnit> makeHeadUnit(EventLog& events, const HeadUnitOptions& options);

}  // namespace tool
