#include "iaptrace/replayed_ipod.h"

#include <algorithm>
#include <utility>

#include "wire/command_names.h"
#include "wire/fields.h"
#include "wire/hex_text.h"

namespace iaptrace {
namespace {

using simulator::milliseconds;
using simulator::Time;

/// What is sent at least this long after the host's wait began is late, on a slow machine, too.
constexpr Time kSurelyLate = milliseconds(1200);
/// What is sent at most this long after the host's wait began is in time.
constexpr Time kSurelyInTime = milliseconds(900);
/// An answer after a shorter pause was on its way when the host sent its next request.
constexpr Time kOnItsWay = milliseconds(50);
/// A host that sends nothing for this long is between two requests.
constexpr Time kBetweenRequests = milliseconds(20);
/// The time in which the host reads what was sent before the cable is pulled.
constexpr Time kPullDelay = milliseconds(100);
/// The longest time until the host's other thread answers the iPod.
constexpr Time kHostAnswerWait = milliseconds(200);
/// No host pauses longer than this inside a message.
constexpr Time kLongestGap = simulator::seconds(2);

/// A longer pause is cut: beyond it nothing changes.
constexpr Time kLongestPause = std::chrono::hours(1);

/// How many requests are searched for one that the host sends, and how many steps for an answer.
constexpr int kSearchedRequests = 16;
constexpr size_t kSearchedSteps = 256;
/// How many of the last requests are answered again when the host repeats them.
constexpr size_t kRememberedRequests = 8;

constexpr size_t kShownBytes = 24;

bool isSameCommand(const Step& a, const Step& b) {
  return a.message && b.message && a.message->lingo == b.message->lingo &&
         a.message->command == b.message->command;
}

bool isSame(const Step& a, const Step& b) {
  if (a.message && b.message) return *a.message == *b.message;
  return !a.message && !b.message && a.bytes == b.bytes;
}

bool isEndOfConnection(const Step& step) {
  return step.kind == Step::Kind::kHostCloses || step.kind == Step::Kind::kCablePulled;
}

std::string counted(size_t count, const char* one, const char* several) {
  return std::to_string(count) + " " + (count == 1 ? one : several);
}

std::string lineText(size_t line) { return "line " + std::to_string(line) + ": "; }

}  // namespace

std::string describe(const Step& step) {
  switch (step.kind) {
    case Step::Kind::kHostOpens:
      return "the host opens the device";
    case Step::Kind::kHostCannotOpen:
      return "the host tries to open the device";
    case Step::Kind::kHostCloses:
      return "the host closes the device";
    case Step::Kind::kCablePulled:
      return "the cable is pulled";
    case Step::Kind::kHostSends:
    case Step::Kind::kIpodSends:
      break;
  }
  if (!step.message)
    return "bytes without a message: " + simulator::hexText(step.bytes, kShownBytes);
  return describe(*step.message);
}

std::string describe(const Message& message) {
  const std::string fields = simulator::fieldsText(message);
  return commandName(message) + (fields.empty() ? "" : " " + fields);
}

ReplayedIpod::ReplayedIpod(Plan steps, Settings how)
    : plan(std::move(steps)),
      settings(how),
      decoder(simulator::FrameKind::kUsb, kLongestGap),
      isMatched(plan.size()) {
  listenToWaste();
}

/// The decoder reports bytes without a message also when it is reset.
void ReplayedIpod::listenToWaste() {
  decoder.setWasteHook(
      [this](simulator::FrameDecoder::Waste, ByteView waste) { takeWaste(receivedAt, waste); });
}

void ReplayedIpod::forgetUnfinishedMessage() {
  decoder.setWasteHook(nullptr);
  decoder.reset();
  listenToWaste();
}

void ReplayedIpod::hostOpens(Time now) {
  if (isInside) hostCloses(now);
  isHostThere = true;
  lastActive = now;
  while (at < plan.size() && plan[at].kind == Kind::kHostCannotOpen)
    pass(now);
  advance(now);
}

void ReplayedIpod::hostFailsToOpen(Time now) {
  lastActive = now;
  wasRefused = true;
  advance(now);
}

void ReplayedIpod::hostCloses(Time now) {
  advance(now);
  receivedAt = now;
  decoder.reset();
  isHostThere = false;
  lastActive = now;
  if (isInside) leaveConnection(now);
  advance(now);
}

/// Passes what the host has left out before it closed the device.
void ReplayedIpod::leaveConnection(Time now) {
  for (; at < plan.size() && !isEndOfConnection(plan[at]); pass(now)) {
    const Step& step = plan[at];
    if (step.kind == Kind::kIpodSends) ++droppedCount;
    if (!step.message || isMatched[at]) continue;
    ++missingCount;
    if (settings.accuracy == Accuracy::kStrict) {
      return differ(step.line, describe(step), "it closed the device");
    }
  }
  if (at < plan.size()) pass(now);
}

void ReplayedIpod::receive(Time now, ByteView bytes) {
  if (bytes.empty()) return;
  lastActive = now;
  receivedAt = now;
  decoder.push(now, bytes, [&](ByteView payload) { takePayload(now, payload); });
}

void ReplayedIpod::takePayload(Time now, ByteView payload) {
  Step arrived;
  arrived.kind = Kind::kHostSends;
  arrived.message = simulator::parseMessage(payload);
  if (!arrived.message) return takeWaste(now, payload);
  takeStep(now, arrived);
}

/// Compares bytes without a message. Sync bytes before a frame are not a difference.
void ReplayedIpod::takeWaste(Time now, ByteView bytes) {
  const bool isSync = std::all_of(bytes.begin(), bytes.end(),
                                  [](uint8_t byte) { return byte == simulator::kSyncByte; });
  if (isSync || settings.accuracy == Accuracy::kTolerant) return;
  Step arrived;
  arrived.kind = Kind::kHostSends;
  arrived.bytes.assign(bytes.begin(), bytes.end());
  takeStep(now, arrived);
}

void ReplayedIpod::takeStep(Time now, const Step& arrived) {
  advance(now);
  if (current != State::kPlaying) return;
  if (arrived.isHostAnswer()) {
    takeAnswer(arrived);
  } else if (settings.accuracy == Accuracy::kStrict) {
    takeSameRequest(now, arrived);
  } else {
    takeRequest(now, arrived);
  }
  advance(now);
}

/// Finds the host's answer anywhere near: it can have been sent before or after the requests of
/// another thread.
void ReplayedIpod::takeAnswer(const Step& arrived) {
  const size_t end = std::min(plan.size(), at + kSearchedSteps);
  for (size_t i = isInside ? answersFrom : end; i < end && !isEndOfConnection(plan[i]); ++i) {
    if (isMatched[i] || !isSameCommand(plan[i], arrived)) continue;
    if (settings.accuracy == Accuracy::kStrict && !isSame(plan[i], arrived)) {
      return differ(plan[i].line, describe(plan[i]), "it sent " + describe(arrived));
    }
    isMatched[i] = true;
    ++matchedCount;
    return;
  }
  ++extraCount;
  if (settings.accuracy == Accuracy::kStrict) differFromNothing(arrived);
}

void ReplayedIpod::takeSameRequest(Time now, const Step& arrived) {
  const std::optional<size_t> next = nextRequest();
  if (!next) return differFromNothing(arrived);
  if (!isSame(plan[*next], arrived)) {
    return differ(plan[*next].line, describe(plan[*next]), "it sent " + describe(arrived));
  }
  goTo(*next, now);
}

void ReplayedIpod::takeRequest(Time now, const Step& arrived) {
  const std::optional<size_t> next = nextRequest();
  if (next && isSame(plan[*next], arrived)) return goTo(*next, now);
  if (!next && pullBecauseOf(now)) return;
  if (repeat(arrived)) return;
  if (const auto later = laterRequest(arrived, true)) return goTo(*later, now);
  if (next && isSameCommand(plan[*next], arrived)) return goTo(*next, now);
  if (const auto later = laterRequest(arrived, false)) return goTo(*later, now);
  ++extraCount;
}

std::optional<size_t> ReplayedIpod::nextRequest() const {
  for (size_t i = at; isInside && i < plan.size() && !isEndOfConnection(plan[i]); ++i) {
    const bool isCompared = settings.accuracy == Accuracy::kStrict || plan[i].message;
    if (plan[i].isRequest() && isCompared) return i;
  }
  return std::nullopt;
}

std::optional<size_t> ReplayedIpod::laterRequest(const Step& arrived, bool isEqual) const {
  int searched = 0;
  for (size_t i = at; isInside && i < plan.size() && !isEndOfConnection(plan[i]); ++i) {
    if (!plan[i].isRequest()) continue;
    if (isEqual ? isSame(plan[i], arrived) : isSameCommand(plan[i], arrived)) return i;
    if (++searched == kSearchedRequests) break;
  }
  return std::nullopt;
}

/// Passes the steps up to a request that has arrived.
void ReplayedIpod::goTo(size_t index, Time now) {
  while (at < index) {
    overtake(plan[at]);
    pass(now);
  }
  isMatched[index] = true;
  ++matchedCount;
  answered.push_back(index);
  if (answered.size() > kRememberedRequests) answered.pop_front();
  pass(now);
}

/// Passes over a step that the host has not waited for.
void ReplayedIpod::overtake(const Step& step) {
  if (step.isRequest() && step.message) ++missingCount;
  if (step.kind != Kind::kIpodSends) return;
  const bool isUseless =
      step.isAnswer && (step.isSpare || step.isLate || step.gap >= kOnItsWay || isAfterMissing());
  if (isUseless) {
    ++droppedCount;
  } else {
    send(step);
  }
}

/// Returns whether the request before the present step was passed over.
bool ReplayedIpod::isAfterMissing() const {
  for (size_t i = at; i > connectionBegin; --i) {
    if (plan[i - 1].isRequest()) return !isMatched[i - 1];
  }
  return false;
}

/// Sends the answers to one of the last requests again. Returns false when it was none of them.
bool ReplayedIpod::repeat(const Step& arrived) {
  const auto same = std::find_if(answered.rbegin(), answered.rend(),
                                 [&](size_t index) { return isSame(plan[index], arrived); });
  if (same == answered.rend()) return false;
  ++extraCount;
  for (size_t i = *same + 1; i < at && !plan[i].isRequest(); ++i) {
    if (plan[i].isAnswer) send(plan[i]);
  }
  return true;
}

/// Pulls the cable before its time if the trace has no further request before that.
bool ReplayedIpod::pullBecauseOf(Time now) {
  size_t end = at;
  while (isInside && end < plan.size() && !isEndOfConnection(plan[end]))
    ++end;
  if (!isInside || end == plan.size() || plan[end].kind != Kind::kCablePulled) return false;
  for (; at < end; pass(now))
    overtake(plan[at]);
  pull(now);
  return true;
}

/// Sends what one read of the host had in one write.
void ReplayedIpod::send(const Step& step) {
  const bool isTogether =
      sentLine == step.line && !actions.empty() && actions.back().kind == Action::Kind::kSend;
  if (!isTogether) actions.push_back({Action::Kind::kSend, {}});
  Bytes& bytes = actions.back().bytes;
  bytes.insert(bytes.end(), step.bytes.begin(), step.bytes.end());
  sentLine = step.line;
  ++sentCount;
}

void ReplayedIpod::pull(Time now) {
  actions.push_back({Action::Kind::kPull, {}});
  presence.reset();
  isHostThere = false;
  forgetUnfinishedMessage();
  pass(now);
}

std::vector<ReplayedIpod::Action> ReplayedIpod::takeActions(Time now) {
  advance(now);
  giveUpAfter(now);
  return std::exchange(actions, {});
}

void ReplayedIpod::advance(Time now) {
  while (current == State::kPlaying && step(now)) {
  }
}

/// Passes the next step if it has happened, or does it if it is due.
bool ReplayedIpod::step(Time now) {
  if (at == plan.size()) {
    if (!isHostThere) current = State::kEnded;
    return false;
  }
  switch (plan[at].kind) {
    case Kind::kHostOpens:
      offer(Action::Kind::kOffer);
      return passIf(isHostThere, now);
    case Kind::kHostCannotOpen:
      offer(Action::Kind::kRefuse);
      return passIf(std::exchange(wasRefused, false), now);
    case Kind::kHostCloses:
      return passIf(!isHostThere, now);
    case Kind::kHostSends:
      return passIf(isHostThrough(now), now);
    case Kind::kIpodSends:
    case Kind::kCablePulled:
      return act(now);
  }
  return false;
}

/// Returns whether nothing more is awaited of the host's message that is next.
bool ReplayedIpod::isHostThrough(Time now) const {
  const Step& step = plan[at];
  if (isMatched[at]) return true;
  if (step.isHostAnswer()) return now >= passedAt + kHostAnswerWait;
  return !step.message && settings.accuracy == Accuracy::kTolerant;
}

bool ReplayedIpod::act(Time now) {
  const Step& step = plan[at];
  if (dueOf(step) > now) return false;
  if (step.kind == Kind::kCablePulled) {
    pull(now);
  } else {
    send(step);
    pass(now);
  }
  return true;
}

void ReplayedIpod::offer(Action::Kind kind) {
  if (presence == kind) return;
  presence = kind;
  wasRefused = false;
  actions.push_back({kind, {}});
}

bool ReplayedIpod::passIf(bool isDone, Time now) {
  if (isDone) pass(now);
  return isDone;
}

void ReplayedIpod::pass(Time now) {
  const Step& step = plan[at];
  if (step.beginsWait) waitBegan = now;
  passedAt = now;
  lastActive = now;
  ++at;
  if (step.kind == Kind::kHostOpens || isEndOfConnection(step)) {
    isInside = step.kind == Kind::kHostOpens;
    connectionBegin = at;
    answersFrom = at;
    answered.clear();
  }
  while (answersFrom < at && (isMatched[answersFrom] || !plan[answersFrom].isHostAnswer()))
    ++answersFrom;
}

Time ReplayedIpod::dueOf(const Step& step) const {
  const Time pause = settings.speed > 0 ? shortened(step.gap) : Time(0);
  Time due = passedAt + pause;
  if (!step.isLate) due = std::min(due, std::max(waitBegan + kSurelyInTime, passedAt));
  if (step.isLate && step.isAwaited) due = std::max(due, waitBegan + kSurelyLate);
  if (step.isSpare) due = std::max(due, passedAt + kBetweenRequests);
  const bool wasSent = at > 0 && plan[at - 1].kind == Kind::kIpodSends;
  if (step.kind == Kind::kCablePulled && wasSent) due = std::max(due, passedAt + kPullDelay);
  return due;
}

Time ReplayedIpod::shortened(Time pause) const {
  const double ns = static_cast<double>(pause.count()) / settings.speed;
  return Time(static_cast<Time::rep>(std::min(ns, static_cast<double>(kLongestPause.count()))));
}

/// Returns until when the host may do nothing. Its own pauses are added to the patience.
Time ReplayedIpod::limitOfWait() const {
  const Time own = at < plan.size() && !plan[at].isOfIpod() ? plan[at].gap : Time(0);
  return lastActive + settings.patience + own;
}

std::optional<Time> ReplayedIpod::nextWake() const {
  if (current != State::kPlaying) return std::nullopt;
  if (at < plan.size() && plan[at].isOfIpod()) return dueOf(plan[at]);
  if (at < plan.size() && plan[at].isHostAnswer()) return passedAt + kHostAnswerWait;
  return limitOfWait();
}

void ReplayedIpod::giveUpAfter(Time now) {
  const bool isHostAwaited = at == plan.size() || !plan[at].isOfIpod();
  if (current != State::kPlaying || !isHostAwaited || now < limitOfWait()) return;
  if (at == plan.size()) {
    current = State::kEnded;
    return;
  }
  current = State::kGaveUp;
  reason = lineText(plan[at].line) +
           "waited in vain for this: " + (plan[at].message ? "the host sends " : "") +
           describe(plan[at]);
}

void ReplayedIpod::differ(size_t line, const std::string& expected, const std::string& got) {
  if (current != State::kPlaying) return;
  current = State::kDifferent;
  reason = lineText(line) + "the host sent " + expected + "; now " + got;
}

void ReplayedIpod::differFromNothing(const Step& arrived) {
  const size_t line = at < plan.size() ? plan[at].line : plan.empty() ? 0 : plan.back().line;
  differ(line, "nothing more until this connection ended", "it sent " + describe(arrived));
}

std::string ReplayedIpod::summary() const {
  std::string text = counted(sentCount, "message", "messages") + " of the iPod and " +
                     counted(matchedCount, "message", "messages") + " of the host as in the trace";
  if (missingCount > 0) text += ", " + std::to_string(missingCount) + " of the host missing";
  if (extraCount > 0) text += ", " + std::to_string(extraCount) + " of the host in addition";
  if (droppedCount > 0) text += ", " + std::to_string(droppedCount) + " of the iPod not awaited";
  return text;
}

}  // namespace iaptrace
