#pragma once

#include <cstdint>
#include <functional>
#include <ostream>
#include <string>
#include <vector>

#include "controller/outcome.h"
#include "support/message_bytes.h"

namespace ipodctl {

/// An operation that sends one request and judges the next message.
struct SingleReplyOperation {
  const char* name;
  Operation call;
  std::function<Outputs(bool odd)> untouched;
  std::string request;  ///< the frame's body
  Bytes reply;          ///< lingo, command, data
  Outputs outputs;      ///< the reply, decoded
  std::function<bool(uint32_t)> takesLength;
};

/// An operation that sends one request and waits for its acknowledgement.
struct AcknowledgedOperation {
  const char* name;
  std::function<bool(IpodController&)> call;
  std::string request;
  Bytes acknowledgement;
};

/// An operation that sends one request which nothing answers.
struct UnansweredOperation {
  const char* name;
  std::function<bool(IpodController&)> call;
  std::string request;
  bool result;
};

const std::vector<SingleReplyOperation>& singleReplyOperations();
const std::vector<AcknowledgedOperation>& acknowledgedOperations();
const std::vector<UnansweredOperation>& unansweredOperations();

/// The bytes of lingo and command id in front of a payload's data.
uint32_t dataOffset(const Bytes& payload);

inline void PrintTo(const SingleReplyOperation& operation, std::ostream* stream) {
  *stream << operation.name;
}
inline void PrintTo(const AcknowledgedOperation& operation, std::ostream* stream) {
  *stream << operation.name;
}
inline void PrintTo(const UnansweredOperation& operation, std::ostream* stream) {
  *stream << operation.name;
}

}  // namespace ipodctl
