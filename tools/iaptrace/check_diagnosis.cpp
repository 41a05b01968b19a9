#include "iaptrace/check_diagnosis.h"

#include <algorithm>

#include "iaptrace/check_causes.h"
#include "iaptrace/check_rules.h"

namespace iaptrace::checking {
namespace {

using Rule = void (*)(const Case&, Diagnosis&);

constexpr Rule kRules[] = {
    findMissingDevice,
    findBusyDevice,
    findSilence,
    findWrongSpeed,
    findMissingSync,
    findExtraSync,
    findBadChecksum,
    findRefusedIdentification,
    findNoDigitalAudio,
    findStoppedConnection,
    findPendingMode,
    findShiftedAnswers,
    findLongText,
    findUnacknowledgedRate,
    findUnfollowedRate,
    findLoss,
    findShortList,
    findUnexplained,
    noteLogo,
    noteSlowAnswers,
    noteModeAcknowledgedTwice,
    noteLateDevice,
    noteNothing,
};

std::string quantity(size_t count, const std::string& what) {
  return std::to_string(count) + " " + what + (count == 1 ? "" : "s");
}

/// Writes "line 7", or "lines 7, 9, 12" with at most as many numbers as a person reads.
std::string linesText(const std::vector<size_t>& lines) {
  constexpr size_t kMost = 12;
  std::string text = lines.size() == 1 ? "line " : "lines ";
  for (size_t i = 0; i < std::min(lines.size(), kMost); ++i)
    text += (i == 0 ? "" : ", ") + std::to_string(lines[i]);
  if (lines.size() > kMost) text += " and " + std::to_string(lines.size() - kMost) + " more";
  return text;
}

std::string textOf(const Finding& finding) {
  std::string text = "cause: " + finding.cause + "\n";
  text += "  evidence: " + linesText(finding.lines) + "\n";
  return text + wrapped(finding.detail) + explanationOf(causeOf(finding.cause));
}

std::string textOf(const Note& note) {
  const std::string evidence = note.lines.empty() ? "" : " (" + linesText(note.lines) + ")";
  return "note: " + note.text + evidence + "\n";
}

size_t connectionsOf(const Case& trace) {
  return static_cast<size_t>(
      std::count_if(trace.sessions.begin(), trace.sessions.end(),
                    [](const Session& session) { return session.connected.has_value(); }));
}

}  // namespace

Diagnosis diagnose(const trace::Trace& records) {
  const Case found = caseOf(records);
  Diagnosis diagnosis;
  diagnosis.connections = connectionsOf(found);
  for (const Rule rule : kRules)
    rule(found, diagnosis);
  diagnosis.tidyLines();
  return diagnosis;
}

std::string textOf(const Diagnosis& diagnosis) {
  std::string text;
  for (const Finding& finding : diagnosis.findings)
    text += textOf(finding);
  if (diagnosis.findings.empty()) {
    text += "no fault found, " + quantity(diagnosis.connections, "connection") + "\n";
  }
  for (const Note& note : diagnosis.notes)
    text += textOf(note);
  return text;
}

}  // namespace iaptrace::checking
