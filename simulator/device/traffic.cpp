#include "device/traffic.h"

#include <cinttypes>
#include <cstdio>

#include "wire/command_names.h"
#include "wire/fields.h"

namespace simulator {

namespace {

std::string seconds3(Time time, int width) {
  const int64_t ms = std::chrono::duration_cast<milliseconds>(time).count();
  char text[32];
  std::snprintf(text, sizeof text, "%*" PRId64 ".%03" PRId64, width, ms / 1000, ms % 1000);
  return text;
}

const char* arrow(Traffic::Kind kind) {
  switch (kind) {
    case Traffic::Kind::kReceived:
      return " <- ";
    case Traffic::Kind::kSent:
      return " -> ";
    case Traffic::Kind::kLost:
      return " x- ";
    case Traffic::Kind::kEvent:
    case Traffic::Kind::kNoise:
    case Traffic::Kind::kFault:
      break;
  }
  return " -- ";
}

std::string describeMessage(const Message& message) {
  const int digits = static_cast<int>(2 * commandWidth(message.lingo));
  char ids[16];
  std::snprintf(ids, sizeof ids, "%02X %0*X ", message.lingo, digits, message.command);
  std::string text = ids;
  text += commandName(message);
  const std::string fields = fieldsText(message);
  if (!fields.empty()) text += " " + fields;
  return text;
}

std::string describeFault(const Traffic& traffic) {
  const std::string request = commandName(traffic.message);
  return "fault: " + traffic.note + " struck at " + seconds3(traffic.at, 1) + " s" +
         (request == kUnknownCommand ? "" : " (" + request + ")");
}

}  // namespace

std::string describe(const Traffic& traffic) {
  if (traffic.kind == Traffic::Kind::kFault) return describeFault(traffic);
  constexpr int kWidth = 6;
  std::string line = seconds3(traffic.at, kWidth) + arrow(traffic.kind);
  const bool isNote =
      traffic.kind == Traffic::Kind::kEvent || traffic.kind == Traffic::Kind::kNoise;
  if (isNote) return line + traffic.note;
  line += describeMessage(traffic.message);
  if (!traffic.note.empty()) line += "  [" + traffic.note + "]";
  return line;
}

}  // namespace simulator
