#include "headunit/verdict.h"

#include <algorithm>
#include <chrono>
#include <regex>
#include <set>
#include <vector>

namespace headunit_test {
namespace {

using std::chrono::seconds;
using Lines = std::vector<std::string>;

/// An iPod that does not answer one kind of question costs a few seconds each time. A lost iPod
/// costs them once.
constexpr int kLonger = 2;
constexpr seconds kBesides(40);
constexpr seconds kUntilLost(15);

constexpr char kNoIpod[] =
    "No iPod could be connected on \"IPD1:\". Check the cable, then start headunit again.";
constexpr char kLost[] =
    "The iPod is lost: no usable answer comes any more. Plug it in again, then start headunit "
    "again.";
constexpr char kGaps[] =
    "The iPod did not answer everything. Plug it in again, then start headunit again.";

constexpr char kExamplePlays[] = "Aalto Varispeed plays";
constexpr char kExampleHasNoIpod[] =
    "No iPod could be connected. Check the cable, then start again.";
constexpr char kExampleLost[] =
    "The iPod gives no usable answer. Plug it in again, then start again.";
constexpr char kExampleHearsNoMusic[] =
    "The iPod does not say that an artist plays. Put music on it, then start again.";

bool beginsWith(const std::string& text, const std::string& start) {
  return text.rfind(start, 0) == 0;
}

bool endsWith(const std::string& text, const std::string& end) {
  return text.size() >= end.size() && text.compare(text.size() - end.size(), end.size(), end) == 0;
}

bool isOfHeadUnit(const std::string& line) {
  return beginsWith(line, "   ") || beginsWith(line, "---- ");
}

bool isOfExample(const std::string& line) {
  return endsWith(line, " plays") || endsWith(line, "then start again.");
}

/// Returns a line without the number of its section and without positions.
std::string withoutMoment(const std::string& line) {
  static const std::regex kMoment("^---- [0-9]+\\.|[0-9]+:[0-9][0-9]");
  return std::regex_replace(line, kMoment, "#");
}

/// Returns the lines that the head unit showed.
Lines shownLines(const Outcome& outcome) {
  Lines shown;
  for (const std::string& line : outcome.lines) {
    if (isOfHeadUnit(line)) shown.push_back(withoutMoment(line));
  }
  return shown;
}

int statusOf(const std::string& sentence) {
  if (sentence == kNoIpod || sentence == kLost) return 1;
  return sentence == kGaps ? 3 : 0;
}

/// Returns whether the line replaces what the iPod did not answer.
bool isGap(const std::string& line) {
  static const std::regex kGap(
      "   (The iPod (did|does) not .*|The iPod is lost: .*|No iPod could .*)"
      "|.*\\((no name|not answered|not known)\\)");
  return std::regex_match(line, kGap);
}

/// Returns the first line that the whole run does not have at this place; an empty text when there
/// is none.
std::string findWrongLine(const Lines& lines, const Lines& whole) {
  auto next = whole.begin();
  for (const std::string& line : lines) {
    if (isGap(line)) continue;
    const auto found = std::find(next, whole.end(), line);
    if (found == whole.end()) return line;
    next = found + 1;
  }
  return "";
}

/// Returns whether the fault changes texts and counts, which the head unit then shows correctly. A
/// second copy of each answer can arrive after the library has discarded what was waiting: then it
/// is the answer to the next question.
bool changesContent(const Misbehaviour& misbehaviour) {
  if (misbehaviour.kind == "doubled" && !misbehaviour.happensOnce) return true;
  static const std::set<std::string> kKinds = {"text-length", "text-broken", "text-unterminated",
                                               "drift", "random"};
  return kKinds.count(misbehaviour.kind) > 0;
}

bool isHeading(const std::string& line) { return beginsWith(line, "#"); }

/// Returns whether lines follow the report of a lost iPod. There must be no more questions and no
/// more reports.
bool goesOnAfterTheLoss(const Lines& lines) {
  const auto lost = std::find(lines.begin(), lines.end(), std::string("   ") + kLost);
  if (lost - lines.begin() < 2 || lost == lines.end()) return false;
  return isGap(lost[-1]) || (isHeading(lost[-1]) && isHeading(lost[-2]));
}

/// Returns whether the head unit reported a lost iPod that answers. An iPod with random faults may
/// answer a repeated question.
bool isWronglyGivenUp(const Outcome& outcome, const Misbehaviour& misbehaviour) {
  return outcome.answersAtTheEnd && misbehaviour.kind != "random";
}

std::string findWrongContent(const Outcome& outcome, const Misbehaviour& misbehaviour,
                             const Outcome& whole) {
  const Lines lines = shownLines(outcome);
  const Lines usual = shownLines(whole);
  if (misbehaviour.isSurvivable && lines != usual) return "this is not the usual session";
  if (outcome.status == 0 && lines.size() != usual.size()) return "this is not the whole session";
  if (goesOnAfterTheLoss(lines)) return "it goes on after the loss";
  const std::string wrong = findWrongLine(lines, usual);
  return wrong.empty() ? "" : "a wrong line: " + wrong;
}

}  // namespace

std::string lastSentence(const Outcome& outcome) {
  std::string last;
  for (const std::string& line : outcome.lines) {
    if (isOfExample(line)) last = line;
    if (beginsWith(line, "   ") && line != "   disconnected") last = line.substr(3);
  }
  return last;
}

std::string faultOfHeadUnit(const Outcome& outcome, const Misbehaviour& misbehaviour,
                            const Outcome& whole) {
  if (!outcome.failure.empty()) return outcome.failure;
  const std::string sentence = lastSentence(outcome);
  if (outcome.took > kLonger * whole.took + kBesides) return "it took too long";
  if (sentence == kLost && outcome.took > whole.took + kUntilLost) return "it noticed too late";
  if (sentence == kLost && isWronglyGivenUp(outcome, misbehaviour)) return "the iPod is not lost";
  if (outcome.status != statusOf(sentence)) return "the exit status does not fit";
  if (misbehaviour.isSurvivable && outcome.status != 0) return "it did not recover";
  if (misbehaviour.happensOnce && sentence == kNoIpod) return "it did not try again";
  return changesContent(misbehaviour) ? "" : findWrongContent(outcome, misbehaviour, whole);
}

std::string faultOfExample(const Outcome& outcome, const Misbehaviour& misbehaviour,
                           const Outcome& whole) {
  if (!outcome.failure.empty()) return outcome.failure;
  const std::string sentence = lastSentence(outcome);
  const bool plays =
      changesContent(misbehaviour) ? endsWith(sentence, " plays") : sentence == kExamplePlays;
  static const std::set<std::string> kExcuses = {kExampleHasNoIpod, kExampleLost,
                                                 kExampleHearsNoMusic};
  if (outcome.took > kLonger * whole.took + kUntilLost) return "it took too long";
  if (!plays && kExcuses.count(sentence) == 0) return "a wrong sentence";
  if (outcome.status != (plays ? 0 : 1)) return "the exit status does not fit";
  if (sentence == kExampleLost && isWronglyGivenUp(outcome, misbehaviour)) {
    return "the iPod is not lost";
  }
  if (sentence == kExampleHearsNoMusic && !outcome.answersAtTheEnd) return "the iPod is lost";
  if (misbehaviour.happensOnce && sentence == kExampleHasNoIpod) return "it did not try again";
  return misbehaviour.isSurvivable && !plays ? "it did not recover" : "";
}

}  // namespace headunit_test
