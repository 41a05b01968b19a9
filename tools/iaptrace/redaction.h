// Replaces what is private in a trace.
#pragma once

#include <string>
#include <string_view>

namespace iaptrace {

/// Returns the text of a trace with the names, titles and serial numbers replaced, each byte by
/// one of its kind: a text stays as long, and as well-formed, as it was, and Latin-1 stays Latin-1.
/// Checksums follow; a wrong one stays wrong by the same amount. All else is as it was. What is
/// redacted already does not change. Throws trace::ParseError, and Failure when no replacement
/// keeps the messages apart as they are.
std::string redacted(std::string_view trace);

}  // namespace iaptrace
