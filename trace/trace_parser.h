#pragma once

#include <stdexcept>
#include <string>
#include <string_view>

#include "trace/trace.h"

namespace trace {

/// The largest file that is read, in bytes.
constexpr size_t kLargestFile = size_t{256} << 20;

/// A file that is not a trace, or a line that cannot be read. The message says which and why.
class ParseError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// Reads a trace. Lines may end in CR LF. A last line without an end counts as far as it is whole.
/// A time that goes back counts as the time before. Throws ParseError.
Trace parseTrace(std::string_view text);

/// Reads a trace from a file, or from standard input when the path is "-". Throws ParseError, also
/// when the file cannot be read.
Trace readTrace(const std::string& path);

/// Returns the text of the same. Throws ParseError when it cannot be read.
std::string readTraceText(const std::string& path);

/// Parses the text of the file. The message of a ParseError begins with the file's name.
Trace parseTraceOf(const std::string& path, std::string_view text);

}  // namespace trace
