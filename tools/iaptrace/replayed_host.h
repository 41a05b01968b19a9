// The host of a trace, which sends again what it sent there.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "iaptrace/conversation.h"
#include "iaptrace/exchange.h"
#include "simulated_time.h"
#include "wire/frame_decoder.h"

namespace iaptrace {

/// Plays the host's side of a trace to an iPod, and compares how the iPod answers. It has no
/// descriptor, thread or clock.
///
/// A request is sent when the one before is answered as often as in the trace, or when its time is
/// over. The host's answers are sent when the iPod asks. Answers are compared in kind: their
/// commands and, of acknowledgements, the status. Their other content may differ.
class ReplayedHost {
 public:
  struct Settings {
    double speed = 1;  ///< 0: without the host's pauses
    /// The time for an answer, in addition to that in the trace.
    simulator::Time patience = simulator::seconds(2);
  };

  struct Action {
    enum class Kind { kOpen, kClose, kSend };
    Kind kind;
    Bytes bytes;
  };

  ReplayedHost(Conversation conversation, Settings how);

  void receive(simulator::Time now, ByteView bytes);
  /// The iPod has gone: the rest of this connection is left out.
  void lose(simulator::Time now);

  std::vector<Action> takeActions(simulator::Time now);
  std::optional<simulator::Time> nextWake() const;
  bool isOver() const { return over; }

  /// Returns a line for each request that was answered in another way, and for each question that
  /// only one of both iPods asked.
  std::vector<std::string> differences() const;
  size_t sentCount() const { return sent; }

 private:
  using Time = simulator::Time;

  /// What is known of a message.
  struct Role {
    std::vector<size_t> replies;     ///< of a host's request: in the trace
    std::optional<size_t> question;  ///< of a host's answer: which it answers
    std::optional<Time> sentAt;
    std::vector<Message> answers;  ///< of a host's request: now
    size_t askedCount = 0;         ///< of an iPod's question: how often it was asked now
  };

  bool step(Time now);
  bool end(Time now);
  Time dueOf() const;
  Time answerDue() const;
  bool isSettled(size_t request) const;
  bool wasAwaited(size_t request) const;
  void send(Time now);
  void pass(Time now);
  void takePayload(ByteView payload);
  bool takeAnswer(const Message& message);
  void takeQuestion(const Message& message);
  void leaveConnection(Time now);
  std::string compare(size_t index) const;

  const Conversation items;
  const Settings settings;
  std::vector<Role> roles;  ///< of each item
  simulator::FrameDecoder decoder;
  size_t at = 0;
  bool over = false;
  bool isInside = false;  ///< a connection
  std::optional<size_t> lastRequest;
  std::vector<size_t> requests;  ///< that were sent in this connection
  Time passedAt{0};
  trace::Time passedItem{0};  ///< when the last item of the host was in the trace
  std::vector<Action> actions;
  std::vector<std::string> unknownQuestions;
  size_t sent = 0;
};

}  // namespace iaptrace
