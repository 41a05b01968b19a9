// A trace file: parsed, decoded, counted, drawn, redacted and converted.

#include <algorithm>
#include <nlohmann/json.hpp>
#include <sstream>
#include <string>
#include <string_view>

#include "iaptrace/capture_file.h"
#include "iaptrace/decode_output.h"
#include "iaptrace/failure.h"
#include "iaptrace/redaction.h"
#include "iaptrace/stats_output.h"
#include "iaptrace/timeline.h"
#include "support/require.h"
#include "trace/trace_parser.h"

namespace {

using namespace iaptrace;

bool isForTerminals(const std::string& text) {
  const auto isControl = [](unsigned char one) {
    return (one < ' ' && one != '\n') || one == 0x7F;
  };
  return std::none_of(text.begin(), text.end(), isControl);
}

size_t bytesIn(const trace::Trace& records, const std::string& device) {
  size_t count = 0;
  for (const trace::Record& record : records)
    count += record.device == device ? record.bytes.size() : 0;
  return count;
}

void tryDevice(const trace::Trace& records, const std::string& device) {
  const Conversation items = conversationOf(records, device);
  size_t cut = 0;
  for (const Item& item : items)
    cut += item.bytes.size() + (item.hasSync ? 1 : 0);
  require(cut == bytesIn(records, device), "bytes that are in no item");
  const Exchanges exchanges = exchangesOf(items);
  const Statistics statistics = statisticsOf(items, exchanges);
  std::ostringstream text;
  printText(decodedLines(items, true), false, text);
  printText(statistics, device, text);
  require(isForTerminals(text.str()), "a control character in the output");
  std::ostringstream json;
  printJson(device, decodedLines(items, true), json);
  require(nlohmann::json::accept(json.str()), "JSON that is not valid");
  require(isForTerminals(timelineOf(items, exchanges, statistics, device)), "a control in the SVG");
}

void tryRedaction(const std::string& text, const trace::Trace& records) {
  try {
    const std::string once = redacted(text);
    require(once.size() == text.size(), "a redacted trace of another length");
    require(redacted(once) == once, "a redacted trace that changes again");
    require(trace::parseTrace(once).size() == records.size(), "a redacted trace of other records");
  } catch (const Failure&) {
    // No letter keeps the frames apart: the message says so.
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::string text(data, data + size);
  try {
    const trace::Trace records = trace::parseTrace(text);
    for (const std::string& device : trace::devicesOf(records))
      tryDevice(records, device);
    captureOf(records);
    tryRedaction(text, records);
  } catch (const trace::ParseError& error) {
    require(isForTerminals(error.what()), "a control character in a message");
  }
  return 0;
}
