#include "iaptrace/replay_plan.h"

#include <algorithm>
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

/// Returns the records of a device. An answer that the recorder wrote before its request, at the
/// same time, is moved after it.
std::vector<const Record*> recordsOf(const trace::Trace& records, const std::string& device,
                                     const Conversation& items) {
  std::vector<const Record*> mine;
  for (const Record& record : records) {
    if (record.kind != Record::Kind::kAudio && record.device == device) mine.push_back(&record);
  }
  const auto isAt = [](const Record* record, const Item& item, Record::Kind kind) {
    return record->kind == kind && record->line == item.line && item.isMessage();
  };
  for (const size_t index : exchangesOf(items).unexpected) {
    if (index + 1 >= items.size()) continue;
    const Item& reply = items[index];
    const Item& request = items[index + 1];
    const bool isSwapped = request.isFrom(Sender::kHost) && request.at - reply.at <= kSwapped &&
                           answers(reply.message, request.message);
    for (size_t i = 1; isSwapped && i < mine.size(); ++i) {
      if (isAt(mine[i - 1], reply, Record::Kind::kRead) &&
          isAt(mine[i], request, Record::Kind::kWritten)) {
        std::swap(mine[i - 1], mine[i]);
      }
    }
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
    if (!isOpen) open(record);
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
    if (!isOpen) open(record);
    const bool isBegun = fromIpod.isContinued(record.line - 1);
    const std::vector<const Item*> ended = fromIpod.endingIn(record.line);
    Step& step = append(record, Step::Kind::kIpodSends);
    step.bytes = record.bytes;
    judgeTime(step);
    const bool isWhole = !isBegun && !fromIpod.isContinued(record.line);
    step.isAnswer = isWhole && std::all_of(ended.begin(), ended.end(), isUseless);
    for (const Item* item : ended)
      follow(step, *item);
  }

  /// Returns whether the library discards the message with its next request.
  static bool isUseless(const Item* item) {
    return item->isMessage() && !isQuestion(item->message) && !isAudioNotification(item->message);
  }

  /// Follows what a message of the iPod does to the host's wait. The library takes each one for its
  /// answer, except those about the sample rate.
  void follow(Step& step, const Item& item) {
    if (!item.isMessage() || isAudioNotification(item.message)) return;
    beginWait(step);
    isConcluded = request && concludes(item.message, *request);
  }

  /// Returns whether the host waits for nothing after this answer.
  static bool concludes(const Message& reply, const Message& request) {
    const bool hasMoreAnswers =
        request.is(Lingo::kGeneral, simulator::kIdentifyDeviceLingoes) ||
        request.is(Lingo::kExtendedInterface, simulator::kRetrieveCategorizedDatabaseRecords);
    return !hasMoreAnswers && answers(reply, request) && statusOf(reply).value_or(0) == 0;
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

}  // namespace

bool isHostAnswer(const Message& message) {
  return message.is(Lingo::kGeneral, simulator::kRetAccessoryInfo) ||
         message.is(Lingo::kDigitalAudio, simulator::kAccAck) ||
         message.is(Lingo::kDigitalAudio, simulator::kRetAccSampleRateCaps);
}

Plan planOf(const trace::Trace& records, const std::string& device) {
  const Conversation items = conversationOf(records, device);
  return Planner(items).plan(recordsOf(records, device, items));
}

}  // namespace iaptrace
