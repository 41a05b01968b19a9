#include "ipodctl/serve/wire_monitor.h"

#include <desk.h>

#include <algorithm>
#include <nlohmann/json.hpp>
#include <utility>

#include "iaptrace/check_causes.h"
#include "iaptrace/check_diagnosis.h"
#include "iaptrace/decoded_line.h"
#include "ipodctl/serve/event_log.h"
#include "trace/trace_line.h"
#include "trace/trace_parser.h"
#include "wire/hex_text.h"

namespace tool {
namespace {

using iaptrace::Item;
using nlohmann::json;
using Clock = std::chrono::steady_clock;

constexpr std::chrono::milliseconds kPauseOfEvents{100};
constexpr std::chrono::seconds kPauseOfChecks{1};
constexpr std::chrono::seconds kLastingFinding{2};

constexpr size_t kKeptSize = 4 << 20;
constexpr size_t kMostPending = 1 << 20;
constexpr size_t kWindow = 400;         ///< records that are decoded again
constexpr size_t kFirstRecords = 1500;  ///< of a connection, which have its identification
constexpr size_t kLastRecords = 2500;
constexpr size_t kShownBytes = 64;       ///< of a message
constexpr size_t kMostExplained = 5000;  ///< records of an uploaded trace

/// The mark of a request without an answer, and when it is certain.
constexpr char kNoAnswer[] = "no answer";
constexpr std::chrono::milliseconds kLateAnswer{1200};

/// Lines before the first record: those that every trace begins with.
constexpr size_t kOpeningLines = 3;

std::string textOf(const json& document) {
  return document.dump(-1, ' ', false, json::error_handler_t::replace);
}

bool isUnanswered(const iaptrace::DecodedLine& line) {
  return std::find(line.marks.begin(), line.marks.end(), kNoAnswer) != line.marks.end();
}

/// A request that was just sent has no answer yet.
json messageOf(const iaptrace::DecodedLine& line, bool isLate) {
  constexpr double kMicros = 1e6;
  json notes = json::array();
  for (const std::string& mark : line.marks) {
    if (isLate || mark != kNoAnswer) notes.push_back(mark);
  }
  const bool isEvent = line.item->kind == Item::Kind::kEvent;
  const bool isHosts = line.item->sender == iaptrace::Sender::kHost;
  return {{"time", static_cast<double>(line.at.count()) / kMicros},
          {"line", line.line},
          {"direction", isEvent ? json() : json(isHosts ? ">" : "<")},
          {"text", line.what},
          {"notes", notes},
          {"raw", simulator::hexText(line.item->bytes, kShownBytes)}};
}

json documentOf(const iaptrace::checking::Finding& finding) {
  const iaptrace::checking::Cause& cause = iaptrace::checking::causeOf(finding.cause);
  std::string explanation(cause.meaning);
  if (!finding.detail.empty()) explanation = finding.detail + " " + explanation;
  return {{"cause", finding.cause},
          {"explanation", explanation},
          {"try", std::string(cause.whatToTry)},
          {"lines", finding.lines}};
}

/// The device of the library; the first one of other programs' traces.
std::string deviceOf(const trace::Trace& records) {
  const std::vector<std::string> devices = trace::devicesOf(records);
  return devices.empty() ? "" : devices.front();
}

/// Returns whether all items of the conversation are before the record, or begin with it.
bool isBetweenFrames(const iaptrace::Conversation& items, size_t line) {
  return std::none_of(items.begin(), items.end(), [line](const Item& item) {
    return item.firstLine < line && item.line >= line;
  });
}

}  // namespace

std::string GrowingTrace::add(const trace::Trace& records) {
  window.insert(window.end(), records.begin(), records.end());
  const iaptrace::Conversation items = iaptrace::conversationOf(window, deviceOf(window));
  json messages = json::array();
  size_t latest = published;
  for (const iaptrace::DecodedLine& line : iaptrace::decodedLines(items, false)) {
    const bool isLate = isUnanswered(line) && window.back().at - line.at > kLateAnswer;
    const bool isNew = line.line > published || (isLate && late.insert(line.line).second);
    // The rest of an unfinished frame can still arrive.
    if (!isNew || line.item->kind == Item::Kind::kUnfinished) continue;
    if (isLate) late.insert(line.line);
    messages.push_back(messageOf(line, isLate));
    latest = std::max(latest, line.line);
  }
  published = latest;
  forgetTheOldest();
  return messages.empty() ? "" : textOf({{"messages", messages}});
}

/// Cuts between two frames of both directions, if there is such a place.
void GrowingTrace::forgetTheOldest() {
  if (window.size() <= kWindow) return;
  const iaptrace::Conversation items = iaptrace::conversationOf(window, deviceOf(window));
  size_t first = window.size() - kWindow / 2;
  while (first < window.size() && !isBetweenFrames(items, window[first].line))
    ++first;
  if (first == window.size()) first -= kWindow / 2;
  window.erase(window.begin(), window.begin() + static_cast<ptrdiff_t>(first));
  if (!window.empty()) late.erase(late.begin(), late.lower_bound(window.front().line));
}

void ConnectionCheck::add(const trace::Trace& more) {
  for (const trace::Record& record : more) {
    if (record.kind == trace::Record::Kind::kOpened) {
      records.clear();
      gaps.clear();
      seen.clear();
      reported.clear();
    }
    records.push_back(record);
    isChanged = true;
  }
  if (records.size() <= kFirstRecords + 2 * kLastRecords) return;
  const auto first = records.begin() + static_cast<ptrdiff_t>(kFirstRecords);
  gaps = {records[kFirstRecords - 1].line};
  records.erase(first, records.end() - static_cast<ptrdiff_t>(kLastRecords));
}

std::vector<std::string> ConnectionCheck::newFindings(Clock::time_point now) {
  if (isChanged && now - checked >= kPauseOfChecks) {
    diagnosis = iaptrace::checking::diagnose(records, gaps);
    checked = now;
    isChanged = false;
  }
  std::vector<std::string> documents;
  std::map<std::string, Clock::time_point> still;
  for (const iaptrace::checking::Finding& finding : diagnosis.findings) {
    const std::string key = finding.cause + " " + std::to_string(finding.lines.front());
    const auto before = seen.find(key);
    const Clock::time_point since = before == seen.end() ? now : before->second;
    still.emplace(key, since);
    if (now - since < kLastingFinding || !reported.insert(key).second) continue;
    documents.push_back(textOf(documentOf(finding)));
  }
  seen = std::move(still);
  return documents;
}

WireMonitor::WireMonitor(EventLog& log) : events(log), thread([this] { run(); }) {
  deskSetTraceSink([](void* context, const char* line,
                      unsigned size) { static_cast<WireMonitor*>(context)->take(line, size); },
                   this);
}

WireMonitor::~WireMonitor() {
  deskSetTraceSink(nullptr, nullptr);
  {
    const std::lock_guard lock(mutex);
    isOver = true;
  }
  changed.notify_all();
  thread.join();
}

std::string WireMonitor::trace() const {
  const std::lock_guard lock(mutex);
  std::string text = std::string(trace::kFirstLine) + trace::kWarning;
  if (leftOut > 0) text += "# " + std::to_string(leftOut) + " lines are missing here: too old\n";
  text.reserve(text.size() + keptSize);
  for (const std::string& line : kept)
    text += line;
  return text;
}

/// On the thread of a transfer: only takes the text. Lines that the other thread cannot decode fast
/// enough are in the trace, and are not shown.
void WireMonitor::take(const char* line, size_t size) {
  const std::lock_guard lock(mutex);
  kept.emplace_back(line, size);
  keptSize += size;
  while (keptSize > kKeptSize) {
    keptSize -= kept.front().size();
    kept.pop_front();
    ++leftOut;
  }
  if (pending.size() + size > kMostPending) {
    decodedLines += pendingLines;
    pending.clear();
    pendingLines = 0;
  }
  pending.append(line, size);
  ++pendingLines;
  if (pendingLines == 1) changed.notify_one();
}

void WireMonitor::run() {
  std::unique_lock lock(mutex);
  while (!isOver) {
    changed.wait_for(lock, kPauseOfChecks, [this] { return isOver || !pending.empty(); });
    changed.wait_for(lock, kPauseOfEvents, [this] { return isOver; });
    const std::string lines = std::exchange(pending, "");
    const size_t before = decodedLines;
    decodedLines += std::exchange(pendingLines, 0);
    lock.unlock();
    if (!lines.empty()) decode(lines, before);
    for (std::string& finding : check.newFindings(Clock::now()))
      events.publish(Topic::kFinding, std::move(finding));
    lock.lock();
  }
}

void WireMonitor::decode(const std::string& lines, size_t before) {
  trace::Trace records = trace::parseTrace(std::string(trace::kFirstLine) + lines);
  for (trace::Record& record : records)
    record.line += before + kOpeningLines - 1;
  check.add(records);
  std::string document = growing.add(records);
  if (!document.empty()) events.publish(Topic::kWire, std::move(document));
}

std::string explainedTrace(const std::string& text) {
  trace::Trace records = trace::parseTrace(text);
  const size_t leftOut = records.size() - std::min(records.size(), kMostExplained);
  records.resize(records.size() - leftOut);
  const iaptrace::Conversation items = iaptrace::conversationOf(records, deviceOf(records));
  json messages = json::array();
  for (const iaptrace::DecodedLine& line : iaptrace::decodedLines(items, true))
    messages.push_back(messageOf(line, true));
  const auto diagnosis = iaptrace::checking::diagnose(records, iaptrace::checking::gapsIn(text));
  json findings = json::array();
  for (const iaptrace::checking::Finding& finding : diagnosis.findings)
    findings.push_back(documentOf(finding));
  return textOf({{"messages", messages}, {"findings", findings}, {"left_out", leftOut}});
}

}  // namespace tool
