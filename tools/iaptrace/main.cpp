// The program iaptrace.
#include <cstdio>
#include <string>
#include <vector>

#include "iaptrace/replay.h"

namespace {

struct Subcommand {
  const char* name;
  int (*run)(const std::vector<std::string>& arguments);
};

constexpr Subcommand kSubcommands[] = {
    {"replay", iaptrace::runReplay},
};

}  // namespace

int main(int argc, char** argv) {
  const std::vector<std::string> arguments(argv + 1, argv + argc);
  for (const Subcommand& subcommand : kSubcommands) {
    if (!arguments.empty() && arguments.front() == subcommand.name) {
      return subcommand.run({arguments.begin() + 1, arguments.end()});
    }
  }
  std::fprintf(stderr, "iaptrace: write one of: replay\n");
  return 2;
}
