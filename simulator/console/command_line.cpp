#include "console/command_line.h"

#include <CLI/CLI.hpp>
#include <iostream>
#include <stdexcept>
#include <string>

namespace simulator {

bool parseCommandLine(CLI::App& app, int argc, const char* const* argv) {
  try {
    app.parse(argc, argv);
  } catch (const CLI::CallForHelp&) {
    std::cout << app.help();
    return false;
  } catch (const CLI::CallForVersion& version) {
    std::cout << version.what() << '\n';
    return false;
  } catch (const CLI::ParseError& error) {
    throw std::invalid_argument(std::string(error.what()) + "\nTry ipodsim --help.");
  }
  return true;
}

}  // namespace simulator
