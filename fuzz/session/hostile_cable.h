#pragma once

#include <deque>
#include <optional>

#include "virtual/virtual_device.h"
#include "virtual/virtual_ipod.h"
#include "wire/bytes.h"

/// A cable to a simulated iPod with an attacker in between, who sends bytes as if he were the iPod,
/// and intercepts commands to answer them himself.
class HostileCable final : public virtual_platform::VirtualDevice {
 public:
  enum class AnswerKind {
    kPayload,         ///< is the payload
    kNextCommand,     ///< is the data of the command after the request's, which is the reply's id
    kAcknowledgement  ///< begins with the status of an acknowledgement of the request
  };
  struct Answer {
    AnswerKind kind;
    simulator::Bytes bytes;
  };

  explicit HostileCable(virtual_platform::VirtualIpod& cable) : real(cable) {}

  /// Limits the counts of records in his answers, and in all payloads that limitCount() gets.
  void limitCounts(uint32_t most) { mostRecords = most; }
  void limitCount(simulator::Bytes& payload) const;
  /// Sends bytes to the host as they are.
  void sayRaw(const simulator::Bytes& bytes);
  /// Sends a payload to the host in a frame.
  void say(simulator::Bytes payload);
  /// Answers one of the next commands, which the iPod does not get.
  void answer(Answer answer) { answers.push_back(std::move(answer)); }
  /// Removes the attacker.
  void leave();

  bool canBeOpened() const override { return real.canBeOpened(); }
  void opened(virtual_platform::Time now) override;
  void closed(virtual_platform::Time now) override;
  virtual_platform::Readiness readReadiness(virtual_platform::Time now) override;
  virtual_platform::Readiness writeReadiness(virtual_platform::Time now) override;
  std::size_t read(virtual_platform::Time now, BYTE* buffer, std::size_t count) override;
  std::size_t write(virtual_platform::Time now, const BYTE* bytes, std::size_t count) override;
  /// Long, because a reader without an iPod does nothing but such reads.
  virtual_platform::Time endOfFileTime() const override { return std::chrono::milliseconds(100); }
  std::optional<virtual_platform::Time> nextWake() const override { return real.nextWake(); }

 private:
  simulator::Bytes payloadOf(const Answer& answer, simulator::ByteView request) const;

  virtual_platform::VirtualIpod& real;
  std::deque<Answer> answers;
  simulator::Bytes unread;
  std::optional<uint32_t> mostRecords;
};
