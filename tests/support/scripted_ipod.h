#pragma once

#include <chrono>
#include <condition_variable>
#include <deque>
#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "support/event_log.h"
#include "support/pty_pair.h"
#include "support/wire_frames.h"

/// One answer of the iPod, sent `delay` after the request.
struct IpodReply {
  IpodReply(const char* payloadText) : payload(payloadText) {}
  IpodReply(std::string payloadText) : payload(std::move(payloadText)) {}
  IpodReply(std::string payloadText, std::chrono::milliseconds replyDelay)
      : payload(std::move(payloadText)), delay(replyDelay) {}

  std::string payload;
  std::chrono::milliseconds delay{0};
};

using IpodReplies = std::vector<IpodReply>;

/// An iPod that follows a script. It has its own thread and a real pseudo terminal, which it maps
/// to "IPD1:" (USB) or "COM1:" (serial) while it lives.
///
/// A script line has the answers to the requests that begin with certain bytes:
///
///   ipod.answer("04 00 18 02", {"04 00 19 00 00 00 24"});   counts 36 artists
///
/// The longest matching beginning is used. Of lines with the same beginning those of answerOnce()
/// are used first, each once. A request without a line is refused by a General acknowledgement, so
/// that the library knows at once that no answer follows. The script begins with lines that make a
/// connection (the iPod announces 44100 Hz and version 1.13 of the Extended Interface lingo) and
/// with lines that acknowledge every command that is acknowledged.
///
/// Every request is an event of the log: its payload, "04 00 18 02". Bytes that are not a frame are
/// an event that begins with "not a frame:".
class ScriptedIpod {
 public:
  explicit ScriptedIpod(EventLog& log, WireKind kind = WireKind::kUsb);
  ~ScriptedIpod();
  ScriptedIpod(const ScriptedIpod&) = delete;
  ScriptedIpod& operator=(const ScriptedIpod&) = delete;

  void answer(const std::string& request, const IpodReplies& replies);
  void answerOnce(const std::string& request, const IpodReplies& replies);

  /// Answers nothing to such requests.
  void ignore(const std::string& request) { answer(request, {}); }

  /// Ends both kinds of wait at once; a script line without replies ends them after a second.
  void refuse(const std::string& request) { answer(request, {kRefusal}); }

  /// Answers nothing to anything.
  void fallSilent();

  /// Keeps the answers to such requests until release().
  void hold(const std::string& request);
  void release();

  /// Sends unasked: a payload in its frame, one whose checksum is wrong, bytes as they are.
  void send(const std::string& payload);
  void sendCorrupt(const std::string& payload);
  void sendRaw(const std::string& bytes);

  /// Pulls the plug.
  void hangUp();

  /// Waits until every request that the library has made so far is in the log and every answer
  /// without a delay is sent.
  void settle();

 private:
  using Clock = std::chrono::steady_clock;

  struct PendingReply {
    Clock::time_point due;
    Bytes frame;
  };

  static constexpr const char* kRefusal = "00 02 05 00";

  /// Runs a task of another thread on the iPod's thread.
  void order(const std::function<void()>& task);

  void run();
  bool carryOutOrders();
  void queue(Clock::time_point due, Bytes frame);
  void sendDueReplies();
  void waitForWork();
  int millisecondsToNextReply();
  void readRequests();
  void take(const FrameCutter::Piece& piece);
  void reply(const std::string& request);
  IpodReplies repliesTo(const std::string& request);
  bool isHeld(const std::string& request);
  void connectLikeAnIpod();
  void acknowledgeCommands();

  EventLog& log;
  const WireKind kind;
  host_test::PtyPair wire;
  host_test::DeviceMapping mapping;
  FrameCutter cutter;
  const int wakeUp;

  std::mutex mutex;  // guards all below
  std::condition_variable carriedOut;
  std::map<std::string, IpodReplies> lines;
  std::map<std::string, std::deque<IpodReplies>> singleLines;
  std::vector<std::string> heldRequests;
  std::deque<std::function<void()>> orders;
  unsigned ordersGiven = 0;
  unsigned ordersDone = 0;
  unsigned marksSent = 0;
  unsigned marksSeen = 0;
  bool stopping = false;
  bool hungUp = false;

  // Of the iPod's thread.
  std::vector<PendingReply> pending;
  std::vector<Bytes> heldReplies;

  std::thread thread;
};
