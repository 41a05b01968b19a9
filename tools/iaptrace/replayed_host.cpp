#include "iaptrace/replayed_host.h"

#include <algorithm>
#include <utility>

#include "iaptrace/replay_plan.h"
#include "iaptrace/replayed_ipod.h"
#include "wire/command_names.h"

namespace iaptrace {
namespace {

using simulator::Time;
using trace::Record;

constexpr Time kLongestPauseOfHost = std::chrono::hours(1);
constexpr Time kLongestGapOfIpod = simulator::seconds(2);
/// The time for an answer to what was not answered in the trace.
constexpr Time kUnansweredWait = simulator::milliseconds(200);
/// How many of the last requests an answer can belong to.
constexpr ptrdiff_t kOpenRequests = 16;
constexpr size_t kMostLines = 1000;

bool isEvent(const Item& item, Record::Kind kind) {
  return item.kind == Item::Kind::kEvent && item.event->kind == kind;
}

bool endsConnection(const Item& item) {
  return isEvent(item, Record::Kind::kClosed) || isEvent(item, Record::Kind::kReadFailed) ||
         isEvent(item, Record::Kind::kWriteFailed);
}

std::string lineOf(const Item& item) { return "line " + std::to_string(item.line) + ": "; }

/// Returns what matters of an answer: its name, and the status of an acknowledgement.
std::string kindOf(const Message& message) {
  const std::string name = commandName(message);
  const auto status = statusOf(message);
  return status ? name + " with status " + std::to_string(*status) : name;
}

/// Appends a kind; several records in a row are one answer.
void appendKind(std::vector<std::string>& kinds, const Message& message) {
  std::string kind = kindOf(message);
  if (kinds.empty() || kinds.back() != kind) kinds.push_back(std::move(kind));
}

std::string joined(const std::vector<std::string>& kinds) {
  std::string text;
  for (const std::string& kind : kinds)
    text += (text.empty() ? "" : ", then ") + kind;
  return text.empty() ? "no answer" : text;
}

}  // namespace

ReplayedHost::ReplayedHost(Conversation conversation, Settings how)
    : items(std::move(conversation)),
      settings(how),
      roles(items.size()),
      decoder(simulator::FrameKind::kUsb, kLongestGapOfIpod) {
  for (const Exchange& exchange : exchangesOf(items).all) {
    const bool isHosts = items[exchange.request].isFrom(Sender::kHost);
    if (isHosts) roles[exchange.request].replies = exchange.replies;
    for (const size_t reply : exchange.replies) {
      if (!isHosts) roles[reply].question = exchange.request;
    }
  }
}

std::vector<ReplayedHost::Action> ReplayedHost::takeActions(Time now) {
  while (!isOver() && step(now)) {
  }
  return std::exchange(actions, {});
}

/// Ends after the last item, when its answer has arrived or its time is over.
bool ReplayedHost::end(Time now) {
  over = !isInside || now >= answerDue();
  return false;
}

bool ReplayedHost::step(Time now) {
  if (at == items.size()) return end(now);
  const Item& item = items[at];
  const bool isHosts = item.isFrom(Sender::kHost);
  const bool isOpening = isEvent(item, Record::Kind::kOpened);
  if (!isHosts && !isOpening && !endsConnection(item)) {
    ++at;
    return true;
  }
  if (now < dueOf()) return false;
  if (isOpening || (isHosts && !isInside)) {
    actions.push_back({Action::Kind::kOpen, {}});
    isInside = true;
    lastRequest.reset();
    requests.clear();
    decoder.reset();
  }
  if (isHosts) send(now);
  if (endsConnection(item) && isInside) {
    actions.push_back({Action::Kind::kClose, {}});
    isInside = false;
  }
  pass(now);
  return true;
}

/// Returns when the host's next step is due. Each wait for the iPod has an end.
Time ReplayedHost::dueOf() const {
  if (at == items.size()) return answerDue();
  const auto pause = std::chrono::duration_cast<Time>(items[at].at - passedItem);
  const double ns = settings.speed > 0 ? static_cast<double>(pause.count()) / settings.speed : 0;
  const double most = static_cast<double>(kLongestPauseOfHost.count());
  const Time due = passedAt + Time(static_cast<Time::rep>(std::min(ns, most)));
  const auto& question = roles[at].question;
  if (!question) return std::max(due, answerDue());
  const bool wasAsked = roles[*question].askedCount > 0;
  return wasAsked ? due : std::max(due, passedAt + pause + settings.patience);
}

/// Returns until when the answer to the last request is awaited.
Time ReplayedHost::answerDue() const {
  if (!isInside || !lastRequest || isSettled(*lastRequest)) return passedAt;
  const Role& role = roles[*lastRequest];
  if (role.replies.empty()) return *role.sentAt + kUnansweredWait;
  const trace::Time needed = items[role.replies.back()].at - items[*lastRequest].at;
  return *role.sentAt + Time(needed) + settings.patience;
}

bool ReplayedHost::isSettled(size_t request) const {
  const Role& role = roles[request];
  return !role.sentAt || !wasAwaited(request) ||
         (!role.replies.empty() && role.answers.size() >= role.replies.size());
}

/// Returns whether the host of the trace gave the iPod time for an answer.
bool ReplayedHost::wasAwaited(size_t request) const {
  if (!roles[request].replies.empty()) return true;
  for (size_t i = request + 1; i < items.size(); ++i) {
    const bool isHosts = items[i].isFrom(Sender::kHost) && !roles[i].question;
    if (isHosts || endsConnection(items[i])) {
      return Time(items[i].at - items[request].at) >= kUnansweredWait;
    }
  }
  return false;
}

/// Sends the message. An answer to a question that was not asked is left out.
void ReplayedHost::send(Time now) {
  const Item& item = items[at];
  Role& role = roles[at];
  if (role.question && roles[*role.question].askedCount == 0) return;
  Bytes bytes = item.bytes;
  if (item.hasSync) bytes.insert(bytes.begin(), simulator::kSyncByte);
  actions.push_back({Action::Kind::kSend, std::move(bytes)});
  ++sent;
  role.sentAt = now;
  if (!item.isMessage() || isHostAnswer(item.message)) return;
  requests.push_back(at);
  if (expectsAnswer(Sender::kHost, item.message)) lastRequest = at;
}

void ReplayedHost::pass(Time now) {
  passedAt = now;
  passedItem = items[at].at;
  ++at;
}

void ReplayedHost::receive(Time now, ByteView bytes) {
  decoder.push(now, bytes, [&](ByteView payload) { takePayload(payload); });
}

void ReplayedHost::takePayload(ByteView payload) {
  const auto message = simulator::parseMessage(payload);
  if (!message) return;
  if (expectsAnswer(Sender::kIpod, *message)) {
    takeQuestion(*message);
  } else {
    takeAnswer(*message);
  }
}

/// Gives the answer to the last request that it can belong to, first to one that lacks answers.
bool ReplayedHost::takeAnswer(const Message& message) {
  const auto end =
      requests.rbegin() + std::min<ptrdiff_t>(kOpenRequests, requests.rend() - requests.rbegin());
  const auto fits = [&](size_t request) { return answers(message, items[request].message); };
  auto found = std::find_if(requests.rbegin(), end, [&](size_t request) {
    return fits(request) && roles[request].answers.size() < roles[request].replies.size();
  });
  if (found == end) found = std::find_if(requests.rbegin(), end, fits);
  if (found == end) return false;
  roles[*found].answers.push_back(message);
  return true;
}

/// Finds the question in the trace: the first one like this that was not asked yet.
void ReplayedHost::takeQuestion(const Message& message) {
  const size_t first = requests.empty() ? 0 : requests.front();
  for (size_t i = first; i < items.size() && !endsConnection(items[i]); ++i) {
    const Item& item = items[i];
    const bool isLike = item.isMessage() && item.isFrom(Sender::kIpod) &&
                        item.message.lingo == message.lingo &&
                        item.message.command == message.command &&
                        (item.message.data.empty() || message.data.empty() ||
                         item.message.data.front() == message.data.front() ||
                         !message.is(simulator::Lingo::kGeneral, simulator::kGetAccessoryInfo));
    if (!isLike || roles[i].askedCount > 0) continue;
    ++roles[i].askedCount;
    return;
  }
  if (unknownQuestions.size() < kMostLines) unknownQuestions.push_back(describe(message));
}

void ReplayedHost::lose(Time now) {
  if (isInside) leaveConnection(now);
}

void ReplayedHost::leaveConnection(Time now) {
  while (at < items.size() && !endsConnection(items[at]) &&
         !isEvent(items[at], Record::Kind::kOpened))
    ++at;
  if (at < items.size() && endsConnection(items[at])) pass(now);
  actions.push_back({Action::Kind::kClose, {}});
  isInside = false;
}

std::optional<Time> ReplayedHost::nextWake() const {
  return isOver() ? std::nullopt : std::optional(dueOf());
}

std::vector<std::string> ReplayedHost::differences() const {
  std::vector<std::string> lines;
  for (size_t i = 0; i < items.size() && lines.size() < kMostLines; ++i) {
    std::string line = compare(i);
    if (!line.empty()) lines.push_back(std::move(line));
  }
  for (const std::string& question : unknownQuestions)
    lines.push_back("this iPod sent in addition: " + question);
  return lines;
}

/// Returns how an item differs from what happened now; empty if it does not.
std::string ReplayedHost::compare(size_t index) const {
  const Item& item = items[index];
  if (!item.isMessage()) return "";
  const Role& role = roles[index];
  if (item.isFrom(Sender::kIpod)) {
    const bool isMissing = expectsAnswer(Sender::kIpod, item.message) && role.askedCount == 0;
    return isMissing ? lineOf(item) + "this iPod did not send: " + describe(item.message) : "";
  }
  const bool isRequest = !isHostAnswer(item.message);
  if (!role.sentAt) return isRequest ? lineOf(item) + "not sent: " + describe(item.message) : "";
  std::vector<std::string> then;
  std::vector<std::string> now;
  for (const size_t reply : role.replies)
    appendKind(then, items[reply].message);
  for (const Message& answer : role.answers)
    appendKind(now, answer);
  if (!isRequest || then == now || !wasAwaited(index)) return "";
  return lineOf(item) + describe(item.message) + ": then " + joined(then) + "; now " + joined(now);
}

}  // namespace iaptrace
