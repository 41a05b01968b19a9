#pragma once

#include <stdexcept>

namespace iaptrace {

/// Something that could not be done: the message is one line that says what to do next.
class Failure : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

}  // namespace iaptrace
