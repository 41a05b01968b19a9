#include "ipodctl/device_map.h"

#include <cstdlib>
#include <sstream>

namespace tool {
namespace {

constexpr char kVariable[] = "IPODCTL_DEVICES";

/// Where the platform looks for IPD1: when the variable is unset.
constexpr char kUnset[] = "IPD1:=/tmp/ipod";

std::string variable() {
  const char* const value = std::getenv(kVariable);
  return value != nullptr ? value : kUnset;
}

std::string trimmed(const std::string& text) {
  constexpr char kBlanks[] = " \t\n";
  const size_t first = text.find_first_not_of(kBlanks);
  if (first == std::string::npos) return "";
  return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

}  // namespace

std::string mappedDevice(const std::string& name) {
  std::istringstream entries(variable());
  for (std::string entry; std::getline(entries, entry, ',');) {
    const size_t equals = entry.find('=');
    const bool isIt = equals != std::string::npos && trimmed(entry.substr(0, equals)) == name;
    if (isIt) return trimmed(entry.substr(equals + 1));
  }
  return "";
}

void mapDevice(const std::string& name, const std::string& end) {
  // The platform takes the first entry of a name.
  const std::string before = variable();
  setenv(kVariable, (name + "=" + end + (before.empty() ? "" : "," + before)).c_str(), 1);
}

}  // namespace tool
