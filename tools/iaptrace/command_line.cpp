#include "iaptrace/command_line.h"

#include <iostream>

namespace iaptrace {

std::optional<int> parse(CLI::App& app, const Arguments& arguments) {
  try {
    app.parse(Arguments(arguments.rbegin(), arguments.rend()));
  } catch (const CLI::CallForHelp&) {
    std::cout << app.help();
    return kDone;
  } catch (const CLI::ParseError& error) {
    throw UsageError(std::string(error.what()) + ". Try " + app.get_name() + " --help.");
  }
  return std::nullopt;
}

}  // namespace iaptrace
