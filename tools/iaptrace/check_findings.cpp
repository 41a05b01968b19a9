#include "iaptrace/check_findings.h"

#include <algorithm>

namespace iaptrace::checking {
namespace {

void append(std::vector<size_t>& lines, const std::vector<size_t>& more) {
  lines.insert(lines.end(), more.begin(), more.end());
}

void tidy(std::vector<size_t>& lines) {
  std::sort(lines.begin(), lines.end());
  lines.erase(std::unique(lines.begin(), lines.end()), lines.end());
}

}  // namespace

void Diagnosis::add(const std::string& cause, const std::vector<size_t>& lines,
                    const std::string& detail) {
  const auto same = std::find_if(findings.begin(), findings.end(),
                                 [&](const Finding& each) { return each.cause == cause; });
  if (same != findings.end()) return append(same->lines, lines);
  findings.push_back({cause, detail, lines});
}

void Diagnosis::addNote(const std::string& text, const std::vector<size_t>& lines) {
  const auto same =
      std::find_if(notes.begin(), notes.end(), [&](const Note& each) { return each.text == text; });
  if (same != notes.end()) return append(same->lines, lines);
  notes.push_back({text, lines});
}

void Diagnosis::tidyLines() {
  for (Finding& finding : findings)
    tidy(finding.lines);
  for (Note& note : notes)
    tidy(note.lines);
}

}  // namespace iaptrace::checking
