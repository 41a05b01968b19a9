#include "iaptrace/decode.h"

#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <iostream>

#include "iaptrace/decode_output.h"
#include "iaptrace/trace_source.h"

namespace iaptrace {
namespace {

struct DecodeOptions {
  std::string file;
  std::string device;
  double from = 0;
  double to = 1e9;
  bool noFold = false;
  bool json = false;
};

void describe(CLI::App& app, DecodeOptions& options) {
  app.add_option("FILE", options.file, "The trace; - is standard input")->required();
  app.add_option("--device", options.device, "The device, when the trace has several")
      ->type_name("NAME");
  app.add_option("--from", options.from, "Leave out what was before")
      ->type_name("SECONDS")
      ->check(CLI::Range(0.0, 1e9));
  app.add_option("--to", options.to, "Leave out what was after")
      ->type_name("SECONDS")
      ->check(CLI::Range(0.0, 1e9));
  app.add_flag("--no-fold", options.noFold, "A line for each packet of an image, too");
  app.add_flag("--json", options.json, "Print one JSON object");
  app.footer(
      "> is from the host to the iPod, < from the iPod to the host, # is an event of the\n"
      "device or of the audio library. An answer has the time since its request. What is\n"
      "wrong has an exclamation mark; words in brackets say what.\n");
}

bool inColour() {
  const char* refused = std::getenv("NO_COLOR");
  return isatty(STDOUT_FILENO) == 1 && (refused == nullptr || *refused == 0);
}

void keepTimes(const DecodeOptions& options, std::vector<DecodedLine>& lines) {
  const auto isOutside = [&](const DecodedLine& line) {
    const double at = static_cast<double>(line.at.count()) / 1e6;
    return at < options.from || at > options.to;
  };
  lines.erase(std::remove_if(lines.begin(), lines.end(), isOutside), lines.end());
}

}  // namespace

int runDecode(const Arguments& arguments) {
  CLI::App app("One line a message: time, direction, lingo, command and fields.",
               "iaptrace decode");
  DecodeOptions options;
  describe(app, options);
  if (const auto status = parse(app, arguments)) return *status;
  const Session session = readSession(options.file, options.device);
  std::vector<DecodedLine> lines = decodedLines(session.items, !options.noFold);
  keepTimes(options, lines);
  if (options.json) {
    printJson(session.device, lines, std::cout);
  } else {
    printText(lines, inColour(), std::cout);
  }
  return kDone;
}

}  // namespace iaptrace
