// A request of a client and its answer, without HTTP's bytes.
#pragma once

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace tool {

/// Why a request is refused.
struct Failure {
  int status;           ///< of HTTP
  std::string code;     ///< "no-token"
  std::string message;  ///< what to do
};

struct Request {
  std::string method;  ///< GET or POST
  std::string path;    ///< as it was sent, without the query: nothing is decoded
  std::map<std::string, std::string> query;
  std::string body;
  /// Returns false when the client has gone or the server stops.
  std::function<bool()> isWanted = [] { return true; };
};

/// Writes a piece of an answer without an end. Returns false when the client does not take it.
using Write = std::function<bool(const std::string&)>;

struct Answer {
  int status = 200;
  std::string type = "application/json";
  std::string body;
  std::vector<std::pair<std::string, std::string>> headers = {};
  /// For an answer without an end: writes the next piece, after at most half a second. Returns
  /// false at the end. `body` is empty then.
  std::function<bool(const Write&)> more = nullptr;
};

/// Returns the answer of a failure: a document with the code and the message.
Answer answerOf(const Failure& failure);

}  // namespace tool
