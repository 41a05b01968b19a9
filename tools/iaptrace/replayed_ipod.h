// The iPod of a trace, which does again what it did there.
#pragma once

#include <deque>
#include <optional>
#include <string>
#include <vector>

#include "iaptrace/replay_plan.h"
#include "wire/frame_decoder.h"

namespace iaptrace {

/// How exactly the host must repeat what it sent.
enum class Accuracy {
  kTolerant,  ///< messages of the same lingo and command; some may be missing, repeated or new
  kStrict,    ///< the same bytes
};

/// Plays the iPod's side of a trace. It has no descriptor, thread or clock: what the host does and
/// the time go in, and what the iPod does is the result.
///
/// Recorded bytes are sent when everything that the trace has before them has happened. The host's
/// requests are compared in their order, and its answers to the iPod separately. In tolerant mode
/// these happen, too:
///
///   - The host sends a later request: those between are missing, with their answers.
///   - The host repeats one of its last requests: it gets the same answers again.
///   - The host sends a request that the trace does not have: it gets no answer.
///
/// Bytes for which the host no longer waits are not sent: the library, too, discards late answers
/// before it sends a request. A pause before bytes of the iPod is divided by the speed. It stays
/// longer than the library's time-out if it was longer, and shorter if it was shorter.
class ReplayedIpod {
 public:
  struct Settings {
    Accuracy accuracy = Accuracy::kTolerant;
    double speed = 1;  ///< 0: without pauses on which nothing depends
    simulator::Time patience = simulator::seconds(10);
  };

  /// What is to be done with the device, in this order.
  struct Action {
    enum class Kind {
      kOffer,   ///< from now on the host can open the device
      kRefuse,  ///< from now on the host's attempts to open it fail
      kSend,
      kPull,  ///< the host's reads fail, and there is no device
    };
    Kind kind;
    Bytes bytes;
  };

  enum class State {
    kPlaying,
    kEnded,      ///< everything was played
    kGaveUp,     ///< the host did not go on; failure() says what was awaited
    kDifferent,  ///< strict only: failure() has the first difference
  };

  ReplayedIpod(Plan steps, Settings how);

  void hostOpens(simulator::Time now);
  void hostFailsToOpen(simulator::Time now);
  void hostCloses(simulator::Time now);
  void receive(simulator::Time now, ByteView bytes);

  /// Returns whether the trace has a further request of the host in this connection.
  bool expectsRequest() const { return nextRequest().has_value(); }

  std::vector<Action> takeActions(simulator::Time now);
  /// Returns when takeActions() is due again without an event.
  std::optional<simulator::Time> nextWake() const;

  State state() const { return current; }
  const std::string& failure() const { return reason; }
  /// Returns the numbers of messages in one line.
  std::string summary() const;

 private:
  using Time = simulator::Time;
  using Kind = Step::Kind;

  void listenToWaste();
  void forgetUnfinishedMessage();
  void takePayload(Time now, ByteView payload);
  void takeWaste(Time now, ByteView bytes);
  void takeStep(Time now, const Step& arrived);
  void takeAnswer(const Step& arrived);
  void takeSameRequest(Time now, const Step& arrived);
  void takeRequest(Time now, const Step& arrived);
  std::optional<size_t> nextRequest() const;
  std::optional<size_t> laterRequest(const Step& arrived, bool isEqual) const;
  void goTo(size_t index, Time now);
  void overtake(const Step& step);
  bool isAfterMissing() const;
  bool repeat(const Step& arrived);
  bool pullBecauseOf(Time now);
  void leaveConnection(Time now);

  void advance(Time now);
  bool step(Time now);
  bool isHostThrough(Time now) const;
  bool act(Time now);
  void send(const Step& step);
  void pull(Time now);
  void offer(Action::Kind kind);
  bool passIf(bool isDone, Time now);
  void pass(Time now);

  Time dueOf(const Step& step) const;
  Time shortened(Time pause) const;
  Time limitOfWait() const;
  void giveUpAfter(Time now);
  void differ(size_t line, const std::string& expected, const std::string& got);
  void differFromNothing(const Step& arrived);

  const Plan plan;
  const Settings settings;
  simulator::FrameDecoder decoder;
  size_t at = 0;                ///< the step that is next
  std::vector<bool> isMatched;  ///< for each step
  size_t connectionBegin = 0;   ///< where the steps of this connection begin
  size_t answersFrom = 0;       ///< before this one no host's answer is missing
  bool isInside = false;        ///< `at` is in a connection
  bool isHostThere = false;
  bool wasRefused = false;  ///< an attempt to open that failed is not used up yet
  std::optional<Action::Kind> presence;
  Time receivedAt{0};           ///< when the host's last bytes arrived
  Time passedAt{0};             ///< when the last step was passed
  Time waitBegan{0};            ///< when the host's wait began
  Time lastActive{0};           ///< when the host did something last, or a step was passed
  std::deque<size_t> answered;  ///< the last requests that were matched
  std::vector<Action> actions;

  State current = State::kPlaying;
  std::string reason;
  size_t sentLine = 0;  ///< of the last bytes that were sent
  size_t sentCount = 0;
  size_t droppedCount = 0;
  size_t matchedCount = 0;
  size_t missingCount = 0;
  size_t extraCount = 0;
};

/// Returns what happens in a step, with a message decoded.
std::string describe(const Step& step);
std::string describe(const Message& message);

}  // namespace iaptrace
