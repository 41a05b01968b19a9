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

/// Whether the line is a comment such as "# 12 lines are missing" or "# 12 lines were lost".
bool saysThatLinesAreMissing(std::string_view line) {
  if (line.substr(0, 2) != "# ") return false;
  line.remove_prefix(2);
  const size_t digits = line.find_first_not_of("0123456789");
  if (digits == 0 || digits == std::string_view::npos) return false;
  line.remove_prefix(digits);
  const std::string_view rest = line.substr(0, line.find(':'));
  return rest.rfind(" line", 0) == 0 && (rest.find("missing") != std::string_view::npos ||
                                         rest.find("lost") != std::string_view::npos);
}

}  // namespace

std::vector<size_t> gapsIn(std::string_view text) {
  std::vector<size_t> gaps;
  for (size_t line = 1; !text.empty(); ++line) {
    const size_t end = std::min(text.find('\n'), text.size());
    if (saysThatLinesAreMissing(text.substr(0, end))) gaps.push_back(line);
    text.remove_prefix(std::min(end + 1, text.size()));
  }
  return gaps;
}

Diagnosis diagnose(const trace::Trace& records, const std::vector<size_t>& gaps) {
  const Case found = caseOf(records, gaps);
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
