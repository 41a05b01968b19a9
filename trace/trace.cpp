#include "trace/trace.h"

#include <algorithm>

namespace trace {

std::vector<std::string> devicesOf(const Trace& records) {
  std::vector<std::string> devices;
  for (const Record& record : records) {
    const bool isKnown = std::find(devices.begin(), devices.end(), record.device) != devices.end();
    if (!record.device.empty() && !isKnown) devices.push_back(record.device);
  }
  return devices;
}

}  // namespace trace
