#include "console/listen_place.h"

#include <charconv>
#include <stdexcept>

namespace simulator {

namespace {

[[noreturn]] void refuse(const std::string& text) {
  throw std::invalid_argument("--listen " + text +
                              ": write a port like 5000, or an address and a port like "
                              "192.168.1.5:5000");
}

/// Returns the text without the brackets that an IPv6 address has.
std::string withoutBrackets(const std::string& text) {
  const bool has = text.size() > 2 && text.front() == '[' && text.back() == ']';
  return has ? text.substr(1, text.size() - 2) : text;
}

}  // namespace

ListenPlace parseListenPlace(const std::string& text) {
  ListenPlace place;
  const size_t colon = text.rfind(':');
  const std::string port = colon == std::string::npos ? text : text.substr(colon + 1);
  const auto [end, error] = std::from_chars(port.data(), port.data() + port.size(), place.port);
  if (error != std::errc() || end != port.data() + port.size()) refuse(text);
  place.address = "127.0.0.1";
  if (colon != std::string::npos) place.address = withoutBrackets(text.substr(0, colon));
  if (place.address.empty()) refuse(text);
  return place;
}

}  // namespace simulator
