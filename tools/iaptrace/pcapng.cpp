#include "iaptrace/pcapng.h"

#include <unistd.h>

#include "iaptrace/capture_file.h"
#include "trace/trace_parser.h"

namespace iaptrace {

int runPcapng(const Arguments& arguments) {
  CLI::App app(
      "Converts a trace to a capture file for Wireshark: a packet for each frame.\n"
      "The dissector that comes with iaptrace shows the commands by name:\n"
      "  tshark -X lua_script:ipod_iap.lua -r FILE.pcapng",
      "iaptrace pcapng");
  std::string file;
  std::string output;
  app.add_option("FILE", file, "The trace; - is standard input")->required();
  app.add_option("-o,--output", output, "Write there instead of to standard output")
      ->type_name("FILE.pcapng");
  if (const auto status = parse(app, arguments)) return *status;
  if (output.empty() && isatty(STDOUT_FILENO) == 1) {
    throw UsageError("a capture file is not for a terminal. Name a file with -o.");
  }
  writeOutput(output, captureOf(trace::readTrace(file)));
  return kDone;
}

}  // namespace iaptrace
