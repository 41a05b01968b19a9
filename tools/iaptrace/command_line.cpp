#include "iaptrace/command_line.h"

#include <fstream>
#include <iostream>

namespace iaptrace {

std::optional<int> parse(CLI::App& app, const Arguments& arguments) {
  try {
    app.parse(Arguments(arguments.rbegin(), arguments.rend()));
  } catch (const CLI::CallForHelp&) {
    std::cout << app.help();
    return kDone;
  } catch (const CLI::CallForVersion& version) {
    std::cout << version.what() << '\n';
    return kDone;
  } catch (const CLI::ParseError& error) {
    throw UsageError(std::string(error.what()) + ". Try " + app.get_name() + " --help.");
  }
  return std::nullopt;
}

void writeOutput(const std::string& path, const std::string& content) {
  if (path.empty() || path == "-") {
    std::cout << content;
    return;
  }
  std::ofstream file(path, std::ios::binary | std::ios::trunc);
  file << content;
  file.close();
  if (!file) throw Failure(path + " cannot be written. Name another file.");
}

}  // namespace iaptrace
