#include "iaptrace/stats_output.h"

#include <cstdio>
#include <nlohmann/json.hpp>
#include <ostream>

#include "wire/command_layout.h"
#include "wire/command_names.h"
#include "wire/printable.h"

namespace iaptrace::statistics_text {
namespace {

using Json = nlohmann::ordered_json;

double msOf(trace::Time time) { return static_cast<double>(time.count()) / 1000; }
double secondsOf(trace::Time time) { return static_cast<double>(time.count()) / 1e6; }

std::string lingoText(uint8_t lingo) {
  const char* name = simulator::lingoName(lingo);
  return name != nullptr ? name : "lingo " + std::to_string(lingo);
}

std::string commandText(const CommandStatistics& row) {
  std::string name = simulator::commandName({row.lingo, row.command, {}});
  if (name != simulator::kUnknownCommand) return name;
  char id[32];
  std::snprintf(id, sizeof id, "unknown %04X", row.command);
  return id;
}

std::string failureText(const CommandStatistics& row) {
  if (row.failures() == 0) return "-";
  std::string text;
  if (row.unanswered > 0) text = std::to_string(row.unanswered) + " unanswered";
  if (row.refused > 0)
    text += (text.empty() ? "" : ", ") + std::to_string(row.refused) + " refused";
  return text;
}

void printRow(const CommandStatistics& row, std::ostream& out) {
  char numbers[128];
  if (row.latencies.empty()) {
    std::snprintf(numbers, sizeof numbers, "%6zu %10s %10s %10s", row.count, "-", "-", "-");
  } else {
    std::snprintf(numbers, sizeof numbers, "%6zu %10.2f %10.2f %10.2f", row.count,
                  msOf(row.latencies.front()), msOf(row.median()), msOf(row.latencies.back()));
  }
  const std::string name = lingoText(row.lingo) + " " + commandText(row);
  char line[256];
  std::snprintf(line, sizeof line, "%c %-55s %s  %s", row.sender == Sender::kHost ? '>' : '<',
                name.c_str(), numbers, failureText(row).c_str());
  out << line << '\n';
}

void printConnection(const ConnectionStatistics& connection, std::ostream& out) {
  char line[128];
  std::snprintf(line, sizeof line, "opened at %.3f s (line %zu)%s", secondsOf(connection.opened),
                connection.line, connection.isConnected ? "" : ", not connected");
  out << line << '\n';
  trace::Time before = connection.opened;
  for (const Milestone& each : connection.milestones) {
    std::snprintf(line, sizeof line, "  %-16s %10.2f ms  (+%.2f ms, line %zu)", each.stage.c_str(),
                  msOf(each.at - connection.opened), msOf(each.at - before), each.line);
    out << line << '\n';
    before = each.at;
  }
}

void printDirection(const char* name, const DirectionStatistics& direction, std::ostream& out) {
  char line[256];
  std::snprintf(line, sizeof line,
                "%-16s %8zu bytes, %zu messages, %zu damaged frames, %zu bytes of noise", name,
                direction.bytes, direction.messages, direction.damaged, direction.noise);
  out << line << '\n';
}

Json jsonOf(const CommandStatistics& row) {
  Json json;
  json["direction"] = row.sender == Sender::kHost ? ">" : "<";
  json["lingo"] = lingoText(row.lingo);
  json["id"] = row.command;
  json["command"] = commandText(row);
  json["count"] = row.count;
  json["unanswered"] = row.unanswered;
  json["refused"] = row.refused;
  if (row.latencies.empty()) return json;
  json["minimum_ms"] = msOf(row.latencies.front());
  json["median_ms"] = msOf(row.median());
  json["maximum_ms"] = msOf(row.latencies.back());
  return json;
}

Json jsonOf(const ConnectionStatistics& connection) {
  Json json;
  json["opened"] = secondsOf(connection.opened);
  json["line"] = connection.line;
  json["connected"] = connection.isConnected;
  json["stages"] = Json::array();
  for (const Milestone& each : connection.milestones) {
    json["stages"].push_back({{"stage", each.stage},
                              {"after_ms", msOf(each.at - connection.opened)},
                              {"line", each.line}});
  }
  return json;
}

Json jsonOf(const DirectionStatistics& direction) {
  return {{"bytes", direction.bytes},
          {"messages", direction.messages},
          {"damaged", direction.damaged},
          {"noise", direction.noise}};
}

}  // namespace
}  // namespace iaptrace::statistics_text

namespace iaptrace {

using namespace statistics_text;

void printText(const Statistics& statistics, const std::string& device, std::ostream& out) {
  char seconds[32];
  std::snprintf(seconds, sizeof seconds, "%.3f", secondsOf(statistics.duration));
  out << simulator::printable(device) << " " << seconds << " s\n\n";
  printDirection("host to iPod >", statistics.fromHost, out);
  printDirection("iPod to host <", statistics.fromIpod, out);
  out << statistics.unsolicited << " unsolicited messages, " << statistics.unexpected
      << " answers to no open request\n";
  for (const ConnectionStatistics& each : statistics.connections) {
    out << '\n';
    printConnection(each, out);
  }
  char line[256];
  std::snprintf(line, sizeof line, "\n  %-55s %6s %10s %10s %10s  %s", "requests", "count",
                "minimum ms", "median ms", "maximum ms", "failures");
  out << line << '\n';
  for (const CommandStatistics& each : statistics.commands)
    printRow(each, out);
}

void printJson(const Statistics& statistics, const std::string& device, std::ostream& out) {
  Json json;
  json["device"] = device;
  json["seconds"] = secondsOf(statistics.duration);
  json["host"] = jsonOf(statistics.fromHost);
  json["ipod"] = jsonOf(statistics.fromIpod);
  json["unsolicited"] = statistics.unsolicited;
  json["unexpected"] = statistics.unexpected;
  json["connections"] = Json::array();
  for (const ConnectionStatistics& each : statistics.connections)
    json["connections"].push_back(jsonOf(each));
  json["commands"] = Json::array();
  for (const CommandStatistics& each : statistics.commands)
    json["commands"].push_back(jsonOf(each));
  out << json.dump(2, ' ', true, Json::error_handler_t::replace) << '\n';
}

}  // namespace iaptrace
