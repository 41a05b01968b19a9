#include "iaptrace/trace_source.h"

#include <algorithm>

#include "iaptrace/command_line.h"
#include "trace/trace_parser.h"
#include "wire/printable.h"

namespace iaptrace {
namespace {

bool hasBytes(const trace::Trace& records, const std::string& device) {
  return std::any_of(records.begin(), records.end(), [&](const trace::Record& record) {
    return record.isData() && record.device == device;
  });
}

std::string listOf(const std::vector<std::string>& devices) {
  std::string list;
  for (const std::string& device : devices)
    list += (list.empty() ? "" : ", ") + simulator::printable(device);
  return list.empty() ? "none" : list;
}

}  // namespace

std::string deviceOf(const trace::Trace& records, const std::string& wanted,
                     const std::string& path) {
  const std::vector<std::string> all = trace::devicesOf(records);
  const std::string file = simulator::printable(path);
  if (!wanted.empty()) {
    if (std::find(all.begin(), all.end(), wanted) != all.end()) return wanted;
    throw UsageError(file + " has no device " + simulator::printable(wanted) +
                     ". Name one of its devices with --device: " + listOf(all) + ".");
  }
  std::vector<std::string> active;
  std::copy_if(all.begin(), all.end(), std::back_inserter(active),
               [&](const std::string& device) { return hasBytes(records, device); });
  if (active.empty()) active = all;
  if (active.size() > 1) {
    throw UsageError(file + " has several devices. Choose one with --device: " + listOf(active) +
                     ".");
  }
  return active.empty() ? "" : active.front();
}

Session readSession(const std::string& path, const std::string& wantedDevice) {
  const trace::Trace records = trace::readTrace(path);
  const std::string device = deviceOf(records, wantedDevice, path);
  return {device, conversationOf(records, device)};
}

}  // namespace iaptrace
