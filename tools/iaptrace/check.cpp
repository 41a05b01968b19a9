#include "iaptrace/check.h"

#include <iostream>

#include "iaptrace/check_causes.h"
#include "iaptrace/check_diagnosis.h"
#include "trace/trace_parser.h"

namespace iaptrace {

int runCheck(const Arguments& arguments) {
  CLI::App app("Says what went wrong in a trace: the cause, the lines that show it, what to try.",
               "iaptrace check");
  std::string file;
  bool helpCauses = false;
  app.add_option("FILE", file, "The trace; - is standard input");
  app.add_flag("--help-causes", helpCauses, "Print all causes, and the stages of a connection");
  app.footer(
      "The numbers of lines are those of the file. A note is not a fault.\n"
      "\n"
      "Exit status: 0 no fault, 1 a fault or unknown, 2 wrong usage or an unreadable file.\n");
  if (const auto status = parse(app, arguments)) return *status;
  if (helpCauses) {
    std::cout << checking::causesHelp();
    return kDone;
  }
  if (file.empty()) throw UsageError("FILE is missing. Try iaptrace check --help.");
  std::string text = trace::readTraceText(file);
  const trace::Trace records = trace::parseTraceOf(file, text);
  const std::vector<size_t> gaps = checking::gapsIn(text);
  text = std::string();  // it can be large
  const checking::Diagnosis diagnosis = checking::diagnose(records, gaps);
  std::cout << checking::textOf(diagnosis);
  return diagnosis.findings.empty() ? kDone : kFailed;
}

}  // namespace iaptrace
