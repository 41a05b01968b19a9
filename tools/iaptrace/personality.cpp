#include "iaptrace/personality.h"

#include <iostream>

#include "iaptrace/command_line.h"
#include "iaptrace/shown_personality.h"
#include "iaptrace/trace_source.h"

namespace iaptrace {
namespace {

struct PersonalityOptions {
  std::string file;
  std::string device;
};

void describe(CLI::App& app, PersonalityOptions& options) {
  app.add_option("FILE", options.file, "The trace; - is standard input")->required();
  app.add_option("--device", options.device, "The device, when the trace has several")
      ->type_name("NAME");
  app.footer(
      "What the trace does not show is left out, and is then as in ipodsim's default\n"
      "model. The file has the iPod's name and serial number, if the trace has them.\n"
      "\n"
      "Example:\n"
      "  iaptrace personality car.trace > mine.json\n"
      "  ipodsim --personality mine.json\n");
}

}  // namespace

int runPersonality(const std::vector<std::string>& arguments) {
  CLI::App app("Prints the model of a trace's iPod as a file for ipodsim --personality.",
               "iaptrace personality");
  PersonalityOptions options;
  describe(app, options);
  if (const auto status = parse(app, arguments)) return *status;
  std::cout << personalityJson(shownPersonality(readSession(options.file, options.device).items));
  return kDone;
}

}  // namespace iaptrace
