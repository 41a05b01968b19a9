#include "iaptrace/stats.h"

#include <iostream>

#include "iaptrace/stats_output.h"
#include "iaptrace/timeline.h"
#include "iaptrace/trace_source.h"

namespace iaptrace {

int runStats(const Arguments& arguments) {
  CLI::App app(
      "For each command its number, minimum, median and maximum latency and failures;\n"
      "the time from open to connected by stage; the bytes by direction.",
      "iaptrace stats");
  std::string file;
  std::string device;
  std::string plot;
  bool json = false;
  app.add_option("FILE", file, "The trace; - is standard input")->required();
  app.add_option("--device", device, "The device, when the trace has several")->type_name("NAME");
  app.add_option("--plot", plot, "Draw a timeline")->type_name("FILE.svg");
  app.add_flag("--json", json, "Print one JSON object");
  if (const auto status = parse(app, arguments)) return *status;
  const Session session = readSession(file, device);
  const Exchanges exchanges = exchangesOf(session.items);
  const Statistics statistics = statisticsOf(session.items, exchanges);
  if (!plot.empty()) {
    writeOutput(plot, timelineOf(session.items, exchanges, statistics, session.device));
    if (plot == "-") return kDone;
  }
  if (json) {
    printJson(statistics, session.device, std::cout);
  } else {
    printText(statistics, session.device, std::cout);
  }
  return kDone;
}

}  // namespace iaptrace
