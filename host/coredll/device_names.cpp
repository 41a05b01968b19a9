#include "device_names.h"

#include <strings.h>

#include <cstdlib>
#include <string_view>

namespace coredll {
namespace {

constexpr std::string_view kSerialPortPrefix = "COM";

std::string_view trimmed(std::string_view text) {
  constexpr std::string_view kBlanks = " \t\n";
  const auto first = text.find_first_not_of(kBlanks);
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

/// Removes the first entry from `entries` and returns it.
std::string_view takeEntry(std::string_view& entries) {
  const auto length = entries.find(',');
  const auto entry = entries.substr(0, length);
  entries.remove_prefix(length == std::string_view::npos ? entries.size() : length + 1);
  return entry;
}

}  // namespace

bool isSameName(std::string_view first, std::string_view second) {
  return first.size() == second.size() &&
         strncasecmp(first.data(), second.data(), first.size()) == 0;
}

std::string narrowed(LPCWSTR name) {
  constexpr WCHAR kFirstVisible = 0x20;
  constexpr WCHAR kLastVisible = 0x7e;
  std::string narrow;
  for (; *name != 0; ++name) {
    const bool isVisible = *name >= kFirstVisible && *name <= kLastVisible;
    narrow.push_back(isVisible ? static_cast<char>(*name) : '?');
  }
  return narrow;
}

std::string deviceMap() {
  const char* const variable = std::getenv("IPODCTL_DEVICES");
  if (variable == nullptr) return "IPODCTL_DEVICES is not set";
  return "IPODCTL_DEVICES=\"" + std::string(variable) + '"';
}

std::optional<DeviceEntry> findDevice(const std::string& wanted) {
  const char* const variable = std::getenv("IPODCTL_DEVICES");
  if (wanted.empty() || variable == nullptr) return std::nullopt;
  for (std::string_view entries = variable; !entries.empty();) {
    const std::string_view entry = takeEntry(entries);
    const auto equals = entry.find('=');
    if (equals == std::string_view::npos) continue;
    if (!isSameName(trimmed(entry.substr(0, equals)), wanted)) continue;
    const bool isSerialPort =
        isSameName(wanted.substr(0, kSerialPortPrefix.size()), kSerialPortPrefix);
    return DeviceEntry{std::string(trimmed(entry.substr(equals + 1))), isSerialPort};
  }
  return std::nullopt;
}

}  // namespace coredll
