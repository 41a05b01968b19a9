// What the subcommands of iaptrace have in common: their command line, and how they end.
#pragma once

#include <CLI/CLI.hpp>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "iaptrace/failure.h"

namespace iaptrace {

using Arguments = std::vector<std::string>;

/// The exit statuses.
enum ExitStatus {
  kDone = 0,
  kFailed = 1,      ///< check: a fault was found; others: it could not be done
  kWrongUsage = 2,  ///< or a file that cannot be read
};

/// A wrong command line or a wrong file. The message is one line that says what to do next.
class UsageError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// Writes to a file, or to standard output when the path is "" or "-". Throws Failure.
void writeOutput(const std::string& path, const std::string& content);

/// Parses the arguments of a subcommand. Returns the exit status when nothing else is to do: the
/// help was printed. Throws UsageError.
std::optional<int> parse(CLI::App& app, const Arguments& arguments);

}  // namespace iaptrace
