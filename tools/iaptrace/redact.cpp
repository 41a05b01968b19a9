#include "iaptrace/redact.h"

#include "iaptrace/redaction.h"
#include "trace/trace_parser.h"

namespace iaptrace {

int runRedact(const Arguments& arguments) {
  CLI::App app(
      "Replaces the names, titles and serial numbers in a trace by texts of the same\n"
      "length, and corrects the checksums. Times, events and comments stay.",
      "iaptrace redact");
  std::string file;
  std::string output;
  app.add_option("FILE", file, "The trace; - is standard input")->required();
  app.add_option("-o,--output", output, "Write there instead of to standard output")
      ->type_name("FILE");
  if (const auto status = parse(app, arguments)) return *status;
  const std::string text = trace::readTraceText(file);
  trace::parseTraceOf(file, text);
  writeOutput(output, redacted(text));
  return kDone;
}

}  // namespace iaptrace
