// A session of a simulated iPod with a host that a test writes by hand, and its trace.
#pragma once

#include <string>

#include "iaptrace/shown_personality.h"
#include "music/built_in_library.h"
#include "support/hex.h"
#include "support/ipod_bench.h"
#include "trace/trace.h"

namespace iaptrace {

using simulator::hex;
using simulator::milliseconds;
using simulator::Personality;
using simulator::seconds;
using simulator::SimulatedIpod;

constexpr char kAnnounce[] = "00 13 00 00 04 11 00 00 00 00 00 00 00 00";

/// The host answers the iPod's questions as the library does, unless a test says otherwise.
class RecordedSession {
 public:
  explicit RecordedSession(Personality model, bool answersQuestions = true)
      : ipod(std::move(model), simulator::builtInLibrary(), 1), answers(answersQuestions) {
    ipod.plugIn(now, simulator::FrameKind::kUsb);
    add(trace::Record::Kind::kOpened, {});
  }

  /// Sends a payload. The iPod's answers of the next millisecond are in the trace, too.
  void ask(const std::string& payload) {
    tell(payload);
    wait(milliseconds(1));
  }

  /// Lets the time pass, at each moment at which the iPod has something to do.
  void wait(simulator::Time span) {
    const simulator::Time end = now + span;
    hear();
    for (auto wake = ipod.nextWake(); wake && *wake <= end; wake = ipod.nextWake()) {
      now = std::max(now, *wake);
      hear();
    }
    now = end;
  }

  ShownPersonality shown() const { return shownPersonality(conversationOf(records, "IPD1:")); }

 private:
  void tell(const std::string& payload) {
    const Bytes frame = simulator::usbFrame(hex(payload));
    add(trace::Record::Kind::kWritten, frame);
    ipod.receive(now, frame);
  }

  void hear() {
    for (auto writes = ipod.takeOutput(now); !writes.empty(); writes = ipod.takeOutput(now)) {
      for (const Bytes& bytes : writes) {
        add(trace::Record::Kind::kRead, bytes);
        for (const std::string& payload : simulator::usbPayloads(bytes))
          answer(payload);
      }
    }
  }

  void answer(const std::string& question) {
    if (!answers) return;
    if (question == "00 27 00") tell("00 28 00 00 00 00 01");
    if (question.rfind("00 27 02", 0) == 0) tell("00 28 02" + question.substr(8));
    if (question == "0A 02") tell("0A 03 00 00 1F 40 00 00 7D 00 00 00 AC 44 00 00 BB 80");
    if (question.rfind("0A 04", 0) == 0) tell("0A 00 00 04");
  }

  void add(trace::Record::Kind kind, const Bytes& bytes) {
    trace::Record record;
    record.line = records.size() + 2;
    record.at = std::chrono::duration_cast<trace::Time>(now);
    record.kind = kind;
    record.device = "IPD1:";
    record.bytes = bytes;
    records.push_back(record);
  }

  SimulatedIpod ipod;
  const bool answers;
  simulator::Time now{0};
  trace::Trace records;
};

}  // namespace iaptrace
