// A trace, as text or as records of generated frames, and what iaptrace says about it.

#include <fuzzer/FuzzedDataProvider.h>

#include <algorithm>
#include <chrono>
#include <string>
#include <vector>

#include "iaptrace/check_causes.h"
#include "iaptrace/check_diagnosis.h"
#include "support/require.h"
#include "trace/trace_parser.h"
#include "wire/frame.h"

namespace {

using trace::Record;

constexpr char kTextMark = 't';
constexpr size_t kMostRecords = 400;
constexpr size_t kMostBytes = 40;

/// The content of a message in the order in which sessions have it, so that few bytes make one.
simulator::Bytes payloadFrom(FuzzedDataProvider& input) {
  constexpr uint8_t kUsual[][4] = {
      {0x00, 0x13, 0x00, 0x00}, {0x00, 0x02, 0x00, 0x13}, {0x00, 0x27, 0x00, 0x00},
      {0x00, 0x28, 0x00, 0x00}, {0x0A, 0x02, 0x00, 0x00}, {0x0A, 0x03, 0x00, 0x00},
      {0x0A, 0x04, 0x00, 0x00}, {0x00, 0x0F, 0x0A, 0x00}, {0x00, 0x10, 0x0A, 0x01},
      {0x00, 0x05, 0x00, 0x00}, {0x00, 0x02, 0x00, 0x05}, {0x00, 0x02, 0x06, 0x05},
      {0x04, 0x00, 0x1A, 0x02}, {0x04, 0x00, 0x1B, 0x00}, {0x04, 0x00, 0x1E, 0x00},
      {0x04, 0x00, 0x1F, 0x00}, {0x04, 0x00, 0x39, 0x00}, {0x04, 0x00, 0x3A, 0x00},
      {0x04, 0x00, 0x32, 0x00}, {0x04, 0x00, 0x01, 0x00}};
  const uint8_t(&usual)[4] = kUsual[input.ConsumeIntegralInRange<size_t>(0, 19)];
  simulator::Bytes payload(usual, usual + input.ConsumeIntegralInRange<size_t>(1, 4));
  const std::vector<uint8_t> more =
      input.ConsumeBytes<uint8_t>(input.ConsumeIntegralInRange<size_t>(0, kMostBytes));
  payload.insert(payload.end(), more.begin(), more.end());
  return payload;
}

simulator::Bytes bytesFrom(FuzzedDataProvider& input) {
  const auto choice = input.ConsumeIntegralInRange<int>(0, 7);
  if (choice == 0) {
    return input.ConsumeBytes<uint8_t>(input.ConsumeIntegralInRange<size_t>(0, kMostBytes));
  }
  const auto kind = choice == 1 ? simulator::FrameKind::kSerial : simulator::FrameKind::kUsb;
  const auto form = choice == 2 ? simulator::LengthForm::kLong : simulator::LengthForm::kAsNeeded;
  simulator::Bytes frame = simulator::encodeFrame(kind, payloadFrom(input), form);
  if (choice == 3) frame.back() ^= 1;
  if (choice == 4) frame.resize(input.ConsumeIntegralInRange<size_t>(0, frame.size()));
  return frame;
}

Record recordFrom(FuzzedDataProvider& input, size_t line, trace::Time at) {
  constexpr const char* kCalls[] = {"StartIpodAudioPlay 44100 2 16", "SelectFrequency 48000",
                                    "StopIpodAudioPlay", "SelectFrequency"};
  Record record;
  record.line = line;
  record.at = at;
  record.kind = input.ConsumeBool() ? Record::Kind::kRead : Record::Kind::kWritten;
  record.device = input.ConsumeIntegralInRange<int>(0, 9) == 0 ? "COM2:" : "IPD1:";
  const auto event = input.ConsumeIntegralInRange<int>(0, 31);
  if (event < 6) record.kind = static_cast<Record::Kind>(2 + event);
  if (record.kind == Record::Kind::kAudio) {
    record.device.clear();
    record.call = input.PickValueInArray(kCalls);
  }
  if (record.isData()) record.bytes = bytesFrom(input);
  record.code = input.ConsumeIntegralInRange<uint32_t>(0, 60);
  return record;
}

trace::Trace recordsFrom(FuzzedDataProvider& input) {
  constexpr int kSteps[] = {0, 1, 20, 500, 1100, 4000};
  trace::Trace records;
  trace::Time at{0};
  while (input.remaining_bytes() > 0 && records.size() < kMostRecords) {
    at += std::chrono::milliseconds(input.PickValueInArray(kSteps));
    Record record = recordFrom(input, records.size() + 2, at);
    if (!record.isData() || !record.bytes.empty()) records.push_back(std::move(record));
  }
  return records;
}

/// Lines are missing before every record that is long after the one before.
std::vector<size_t> gapsFrom(const trace::Trace& records) {
  std::vector<size_t> gaps;
  for (size_t i = 1; i < records.size(); ++i) {
    const bool isGap = records[i].at - records[i - 1].at == std::chrono::milliseconds(4000);
    if (isGap) gaps.push_back(records[i - 1].line);
  }
  return gaps;
}

void judge(const trace::Trace& records, const std::vector<size_t>& gaps) {
  using namespace iaptrace::checking;
  const Diagnosis diagnosis = diagnose(records, gaps);
  const size_t last = records.empty() ? 0 : records.back().line;
  for (const Finding& finding : diagnosis.findings) {
    const Cause& cause = causeOf(finding.cause);
    require(finding.cause == "unknown" || cause.id != "unknown", "a cause that is not in the list");
    require(!finding.lines.empty(), "a cause without evidence");
    require(finding.lines.front() >= 1 && finding.lines.back() <= last, "a line that is not there");
  }
  const std::string text = textOf(diagnosis);
  require(std::all_of(text.begin(), text.end(),
                      [](char one) { return one == '\n' || (one >= ' ' && one <= '~'); }),
          "text that a terminal would obey");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size > 0 && data[0] == kTextMark) {
    try {
      const std::string text(data + 1, data + size);
      judge(trace::parseTrace(text), iaptrace::checking::gapsIn(text));
    } catch (const trace::ParseError&) {
      return 0;
    }
    return 0;
  }
  FuzzedDataProvider input(data, size);
  const trace::Trace records = recordsFrom(input);
  judge(records, gapsFrom(records));
  return 0;
}
