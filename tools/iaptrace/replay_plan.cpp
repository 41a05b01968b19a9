#include "iaptrace/replay_plan.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "iaptrace/exchange.h"
#include "wire/lingo.h"

namespace iaptrace {
namespace {

using simulator::Lingo;
using simulator::Time;
using trace::Record;

/// The codes of a read that failed because the host itself closed the device: an invalid handle, an
/// operation aborted.
constexpr uint32_t kInvalidHandle = 6;
constexpr uint32_t kAborted = 995;

/// A recorder can write an answer before the request: two threads of the host wrote the lines.
constexpr Time kSwapped = simulator::milliseconds(2);

bool isAudioNotification(const Message& message) {
  return message.is(Lingo::kDigitalAudio, simulator::kTrackNewAudioAttributes);
}

bool isQuestion(const Message& message) { return expectsAnswer(Sender::kIpod, message); }

/// The items of one direction that begin or end in one line of the trace.
class Lines {
 public:
  Lines(const Conversation& items, Sender sender) {
    for (const Item& item : items) {
      if (item.isFrom(sender)) mine.push_back(&item);
    }
    // By their first byte: damaged bytes can be complete after a message that follows them.
    std::stable_sort(mine.begin(), mine.end(),
                     [](const Item* a, const Item* b) { return a->line < b->line; });
  }

  /// Returns those that end in this line. Lines are asked for in their order.
  std::vector<const Item*> endingIn(size_t line) {
    std::vector<const Item*> found;
    for (; next < mine.size() && mine[next]->line <= line; ++next)
      found.push_back(mine[next]);
    return found;
  }

  /// Returns whether bytes of an item that ends later are in this line.
  bool isContinued(size_t line) const {
    return next < mine.size() && mine[next]->firstLine <= line;
  }

 private:
  std::vector<const Item*> mine;
  size_t next = 0;
};

/// Finds answers that a recorder wrote before their requests.
class SwappedLines {
 public:
  explicit SwappedLines(const Conversation& conversation)
      : items(conversation), exchanges(exchangesOf(conversation)) {}

  /// Puts the records of these answers after those of their requests.
  void putInOrder(std::vector<const Record*>& records) const {
    for (const size_t reply : exchanges.unexpected) {
      if (!isBeforeItsRequest(reply)) continue;
      const auto isFirst = [&](const Record* a, const Record* b) {
        return a->kind == Record::Kind::kRead && a->line == items[reply].line &&
               b->kind == Record::Kind::kWritten && b->line == items[reply + 1].line;
      };
      const auto found = std::adjacent_find(records.begin(), records.end(), isFirst);
      if (found != records.end()) std::iter_swap(found, std::next(found));
    }
  }

 private:
  bool isBeforeItsRequest(size_t reply) const {
    const size_t next = reply + 1;
    return next < items.size() && items[next].isFrom(Sender::kHost) && items[next].isMessage() &&
           items[next].at - items[reply].at <= kSwapped &&
           answers(items[reply].message, items[next].message) && isUnanswered(next);
  }

  bool isUnanswered(size_t request) const {
    const auto isBefore = [](const Exchange& one, size_t item) { return one.request < item; };
    const auto found =
        std::lower_bound(exchanges.all.begin(), exchanges.all.end(), request, isBefore);
    return found != exchanges.all.end() && found->request == request && !found->isAnswered();
  }

  const Conversation& items;
  const Exchanges exchanges;
};

std::vector<const Record*> recordsOf(const trace::Trace& records, const std::string& device) {
  std::vector<const Record*> mine;
  for (const Record& record : records) {
    if (record.kind != Record::Kind::kAudio && record.device == device) mine.push_back(&record);
  }
  return mine;
}

class Planner {
 public:
  explicit Planner(const Conversation& items)
      : fromHost(items, Sender::kHost), fromIpod(items, Sender::kIpod) {}

  Plan plan(const std::vector<const Record*>& records) {
    for (const Record* record : records)
      take(*record);
    return std::move(steps);
  }

 private:
  void take(const Record& record) {
    switch (record.kind) {
      case Record::Kind::kRead:
        return takeRead(record);
      case Record::Kind::kWritten:
        return takeWritten(record);
      case Record::Kind::kOpened:
        return open(record);
      case Record::Kind::kOpenFailed:
        if (!isOpen) append(record, Step::Kind::kHostCannotOpen);
        return;
      case Record::Kind::kClosed:
        return end(record, Step::Kind::kHostCloses);
      case Record::Kind::kReadFailed:
      case Record::Kind::kWriteFailed:
        if (record.code != kInvalidHandle && record.code != kAborted) {
          end(record, Step::Kind::kCablePulled);
        }
        return;
      case Record::Kind::kAudio:
        return;
    }
  }

  /// Returns whether the bytes belong to a connection. A trace can begin within one. What was read
  /// while the host closed the device is recorded after that.
  bool isInConnection(const Record& record) {
    if (steps.empty()) open(record);
    return isOpen;
  }

  Step& append(const Record& record, Step::Kind kind) {
    Step step;
    step.kind = kind;
    step.line = record.line;
    step.gap = steps.empty() ? Time(0) : std::max(Time(record.at) - latest, Time(0));
    latest = std::max(latest, Time(record.at));
    steps.push_back(std::move(step));
    return steps.back();
  }

  void open(const Record& record) {
    if (isOpen) append(record, Step::Kind::kHostCloses);
    beginWait(append(record, Step::Kind::kHostOpens));
    isOpen = true;
    request.reset();
    isConcluded = false;
  }

  /// A host closes what has failed, and its reads fail when it closes: the first one matters.
  void end(const Record& record, Step::Kind kind) {
    if (!isOpen) return;
    Step& step = append(record, kind);
    if (kind == Step::Kind::kCablePulled) judgeTime(step);
    isOpen = false;
  }

  void takeWritten(const Record& record) {
    if (!isInConnection(record)) return;
    for (const Item* item : fromHost.endingIn(record.line)) {
      Step& step = append(record, Step::Kind::kHostSends);
      step.bytes = item->bytes;
      if (item->isMessage()) step.message = item->message;
      if (!step.isRequest()) continue;
      beginWait(step);
      request = step.message;
      isConcluded = false;
    }
  }

  void takeRead(const Record& record) {
    if (!isInConnection(record)) return;
    const bool isBegun = fromIpod.isContinued(record.line - 1);
    const std::vector<const Item*> ended = fromIpod.endingIn(record.line);
    const bool isWhole = !isBegun && !fromIpod.isContinued(record.line);
    if (isWhole && std::all_of(ended.begin(), ended.end(), isPlainMessage)) {
      for (const Item* item : ended)
        addIpodSends(record, item->bytes, {item});
    } else {
      addIpodSends(record, record.bytes, ended);
    }
  }

  void addIpodSends(const Record& record, const Bytes& bytes,
                    const std::vector<const Item*>& ended) {
    Step& step = append(record, Step::Kind::kIpodSends);
    step.bytes = bytes;
    judgeTime(step);
    step.isAnswer =
        ended.size() == 1 && isPlainMessage(ended.front()) && isUseless(ended.front()->message);
    for (const Item* item : ended)
      follow(step, *item);
  }

  /// Returns whether the item's bytes are all that is on the wire for it.
  static bool isPlainMessage(const Item* item) {
    return item->isMessage() && !item->hasSync && item->firstLine == item->line;
  }

  /// Returns whether the library discards the message with its next request. It answers questions,
  /// and when the iPod enters the extended mode by itself.
  static bool isUseless(const Message& message) {
    return !isQuestion(message) && !isAudioNotification(message) &&
           !message.is(Lingo::kGeneral, simulator::kReturnRemoteUiMode);
  }

  /// Follows what a message of the iPod does to the host's wait. The library takes each one for its
  /// answer, except those about the sample rate.
  void follow(Step& step, const Item& item) {
    if (!item.isMessage() || isAudioNotification(item.message)) return;
    beginWait(step);
    isConcluded = request && (isConcluded || concludes(item.message, *request));
  }

  /// Returns whether the host waits for nothing after this message. It waits for several answers to
  /// the requests of the list, and for one of any kind to others.
  static bool concludes(const Message& reply, const Message& request) {
    if (isAcknowledged(request)) return answers(reply, request) && statusOf(reply) == 0;
    return !request.is(Lingo::kGeneral, simulator::kIdentifyDeviceLingoes) &&
           !request.is(Lingo::kExtendedInterface, simulator::kRetrieveCategorizedDatabaseRecords);
  }

  /// Returns whether the library waits until this request is acknowledged with status 0.
  static bool isAcknowledged(const Message& request) {
    using namespace simulator;
    constexpr uint16_t kCommands[] = {kResetDbSelection,
                                      kSelectDbRecord,
                                      kSetPlayStatusChangeNotification,
                                      kPlayCurrentSelection,
                                      kPlayControl,
                                      kSetShuffle,
                                      kSetRepeat,
                                      kSetDisplayImage,
                                      kSetCurrentPlayingTrack,
                                      kSelectSortDbRecord};
    return request.lingo == static_cast<uint8_t>(Lingo::kExtendedInterface) &&
           std::find(std::begin(kCommands), std::end(kCommands), request.command) !=
               std::end(kCommands);
  }

  void beginWait(Step& step) {
    step.beginsWait = true;
    waitBegan = latest;
  }

  void judgeTime(Step& step) const {
    step.isLate = latest - waitBegan >= kHostWait;
    step.isAwaited = !isConcluded;
  }

  Lines fromHost;
  Lines fromIpod;
  Plan steps;
  bool isOpen = false;
  Time latest{0};
  Time waitBegan{0};
  std::optional<Message> request;  ///< the host's last one
  bool isConcluded = false;        ///< it was answered, and the host waits for nothing
};

/// Finds out what the library did with the answers that followed when it had already taken one.
/// Two of its threads decided that in microseconds, so that the next time it could be otherwise.
class SpareAnswers {
 public:
  explicit SpareAnswers(Plan& plan) : steps(plan) {}

  void settle() {
    bool isIdentifying = false;
    for (size_t i = 0; i < steps.size(); ++i) {
      isIdentifying = staysIdentifying(steps[i], isIdentifying);
      const bool isCandidate = steps[i].isAnswer && !steps[i].isAwaited && !isIdentifying;
      const size_t next = isCandidate ? requestAfter(i) : steps.size();
      if (next == steps.size()) continue;
      if (isAnsweredAfter(next)) {
        steps[i].isSpare = true;
      } else if (isFollowedAtOnce(next)) {
        moveAfter(i, next);
      }
    }
  }

 private:
  /// Returns whether the host identifies itself after the step. Each version that it receives then
  /// makes one thread of it send the next request, so that nothing is undecided.
  static bool staysIdentifying(const Step& step, bool before) {
    if (!step.isRequest() || !step.message) return before;
    if (step.message->is(Lingo::kGeneral, simulator::kIdentifyDeviceLingoes)) return true;
    return before && step.message->is(Lingo::kGeneral, simulator::kRequestLingoProtocolVersion);
  }

  /// Returns the next request; the number of steps if the connection ends before it.
  size_t requestAfter(size_t index) const {
    for (size_t i = index + 1; i < steps.size(); ++i) {
      if (steps[i].isRequest()) return i;
      if (!steps[i].isOfIpod() && !steps[i].isHostAnswer()) break;
    }
    return steps.size();
  }

  /// Returns whether the iPod sends anything between the request and the next one.
  bool isAnsweredAfter(size_t request) const {
    const size_t end = std::min(requestAfter(request), steps.size());
    return std::any_of(steps.begin() + static_cast<ptrdiff_t>(request),
                       steps.begin() + static_cast<ptrdiff_t>(end), [](const Step& step) {
                         return step.kind == Step::Kind::kIpodSends && step.beginsWait;
                       });
  }

  /// Returns whether the host had no time to wait for the answer: it has taken another one for it.
  bool isFollowedAtOnce(size_t request) const {
    const size_t following = requestAfter(request);
    return following < steps.size() && steps[following].gap < kHostWait && steps[request].message &&
           expectsAnswer(Sender::kHost, *steps[request].message);
  }

  void moveAfter(size_t index, size_t request) {
    const auto first = steps.begin() + static_cast<ptrdiff_t>(index);
    std::rotate(first, first + 1, steps.begin() + static_cast<ptrdiff_t>(request) + 1);
    steps[request].gap = Time(0);
    steps[request].isAwaited = true;
  }

  Plan& steps;
};

}  // namespace

bool isHostAnswer(const Message& message) {
  return message.is(Lingo::kGeneral, simulator::kRetAccessoryInfo) ||
         message.is(Lingo::kDigitalAudio, simulator::kAccAck) ||
         message.is(Lingo::kDigitalAudio, simulator::kRetAccSampleRateCaps);
}

Plan planOf(const trace::Trace& records, const std::string& device) {
  const Conversation items = conversationOf(records, device);
  std::vector<const Record*> ordered = recordsOf(records, device);
  SwappedLines(items).putInOrder(ordered);
  Plan plan = Planner(items).plan(ordered);
  SpareAnswers(plan).settle();
  return plan;
}

}  // namespace iaptrace
