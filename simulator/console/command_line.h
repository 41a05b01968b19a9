#pragma once

namespace CLI {
class App;
}

namespace simulator {

/// Parses the command line of ipodsim. Returns false when it asked for the help text or the
/// version, which are then printed. Throws std::invalid_argument with a message for the user.
bool parseCommandLine(CLI::App& app, int argc, const char* const* argv);

}  // namespace simulator
