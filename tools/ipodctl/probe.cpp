#include "ipodctl/probe.h"

#include <sys/signalfd.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <cstdio>
#include <iostream>
#include <stdexcept>
#include <vector>

#include "ipodctl/probed_line.h"
#include "wire/frame_decoder.h"
#include "wire/lingo.h"
#include "wire/message.h"

namespace tool {
namespace {

using Clock = std::chrono::steady_clock;
using simulator::Bytes;
using simulator::FrameKind;
using std::chrono::milliseconds;

/// Eight combinations of this end within 40 seconds.
constexpr milliseconds kPatience(4500);
constexpr milliseconds kAskAgain(1500);

/// The speeds of serial iPods, the usual one first.
constexpr unsigned kSpeeds[] = {57600, 19200, 38400, 115200};

struct Combination {
  FrameKind kind;
  unsigned baud;  ///< 0: the line has no speed
};

const char* nameOf(FrameKind kind) {
  return kind == FrameKind::kSerial ? "frames with FF (serial)" : "frames without FF (stream)";
}

std::vector<Combination> combinationsOf(bool hasSpeed) {
  std::vector<Combination> all;
  for (const unsigned baud : kSpeeds) {
    for (const FrameKind kind : {FrameKind::kSerial, FrameKind::kUsb})
      all.push_back({kind, hasSpeed ? baud : 0});
    if (!hasSpeed) break;
  }
  return all;
}

/// Returns what a simple iPod answers at once, and what wakes one that waits for an announcement.
Bytes questions(FrameKind kind) {
  using simulator::Message;
  constexpr auto kGeneral = static_cast<uint8_t>(simulator::Lingo::kGeneral);
  const Message version = {kGeneral, simulator::kRequestLingoProtocolVersion, {kGeneral}};
  // The General, Simple Remote, Extended Interface and Digital Audio lingoes, without options.
  const Message announcement = {kGeneral,
                                simulator::kIdentifyDeviceLingoes,
                                {0x00, 0x00, 0x04, 0x15, 0, 0, 0, 0, 0, 0, 0, 0}};
  Bytes bytes;
  for (const Message& message : {version, announcement}) {
    const Bytes frame = simulator::encodeFrame(kind, simulator::messagePayload(message));
    bytes.insert(bytes.end(), frame.begin(), frame.end());
  }
  return bytes;
}

/// Readable when somebody wants the program to end. The signals stay blocked while it exists, so
/// that the line's settings are restored first.
class EndingSignals {
 public:
  EndingSignals() {
    sigemptyset(&ending);
    sigaddset(&ending, SIGINT);
    sigaddset(&ending, SIGTERM);
    sigaddset(&ending, SIGHUP);
    sigprocmask(SIG_BLOCK, &ending, &before);
    arrived = simulator::FileDescriptor(signalfd(-1, &ending, SFD_CLOEXEC | SFD_NONBLOCK));
  }
  EndingSignals(const EndingSignals&) = delete;
  EndingSignals& operator=(const EndingSignals&) = delete;
  ~EndingSignals() {
    // One that has arrived has done its work.
    signalfd_siginfo information = {};
    while (::read(arrived.get(), &information, sizeof information) > 0) {
    }
    sigprocmask(SIG_SETMASK, &before, nullptr);
  }

  int get() const { return arrived.get(); }
  bool hasArrived() const {
    sigset_t waiting;
    sigpending(&waiting);
    return sigismember(&waiting, SIGINT) == 1 || sigismember(&waiting, SIGTERM) == 1 ||
           sigismember(&waiting, SIGHUP) == 1;
  }

 private:
  sigset_t ending = {};
  sigset_t before = {};
  simulator::FileDescriptor arrived;
};

/// A line that sends back what it receives is not an iPod.
bool isAnswer(simulator::ByteView payload) {
  const auto message = simulator::parseMessage(payload);
  return message &&
         !message->is(simulator::Lingo::kGeneral, simulator::kRequestLingoProtocolVersion) &&
         !message->is(simulator::Lingo::kGeneral, simulator::kIdentifyDeviceLingoes);
}

struct Outcome {
  bool answered = false;  ///< with a frame
  size_t bytes = 0;
};

/// Asks with one combination until a frame arrives.
Outcome tryCombination(ProbedLine& line, const Combination& tried, const EndingSignals& signals) {
  if (tried.baud != 0) line.setSpeed(tried.baud);
  // This decoder takes frames with and without FF.
  simulator::FrameDecoder decoder(FrameKind::kUsb, kPatience);
  Outcome outcome;
  const auto begin = Clock::now();
  auto askAt = begin;
  for (auto now = begin; now < begin + kPatience && !outcome.answered && !signals.hasArrived();
       now = Clock::now()) {
    if (now >= askAt) {
      line.write(questions(tried.kind));
      askAt += kAskAgain;
    }
    const Bytes bytes = line.read(milliseconds(100), signals.get());
    outcome.bytes += bytes.size();
    decoder.push(now - begin, bytes,
                 [&](simulator::ByteView payload) { outcome.answered |= isAnswer(payload); });
    // A line that has hung up is readable at once, again and again.
    if (bytes.empty()) usleep(1000);
  }
  return outcome;
}

std::string textOf(const Combination& tried) {
  const std::string speed = tried.baud != 0 ? " at " + std::to_string(tried.baud) + " baud" : "";
  return nameOf(tried.kind) + speed;
}

void adviseOn(const std::string& path, const Combination& found) {
  const bool isSerial = found.kind == FrameKind::kSerial;
  constexpr unsigned kUsualSpeed = 57600;
  const unsigned baud = found.baud != 0 ? found.baud : kUsualSpeed;
  const std::string end = isSerial ? "serial:" + path + "@" + std::to_string(baud) : path;
  std::cout << "  An iPod answers " << textOf(found) << ". Map the device so:\n"
            << "    IPODCTL_DEVICES=\"IPD1:=" << end << "\"\n";
  if (!isSerial && found.baud != 0) {
    std::cout << "  and set the line's speed before: stty -F " << path << " " << baud << "\n";
  }
}

/// Returns the terminal of an end: its path without "serial:" and the speed.
std::string terminalOf(const std::string& end) {
  const std::string serial = "serial:";
  if (end.rfind(serial, 0) != 0) return end;
  const std::string path = end.substr(serial.size());
  return path.substr(0, path.rfind('@'));
}

void probeLine(const std::string& path, const EndingSignals& signals) {
  ProbedLine line(path);
  for (const Combination& tried : combinationsOf(line.hasSpeed())) {
    std::cout << "  " << textOf(tried) << ": " << std::flush;
    const Outcome outcome = tryCombination(line, tried, signals);
    if (signals.hasArrived()) {
      std::cout << "ended\n";
      return;
    }
    if (outcome.answered) {
      std::cout << "an answer\n";
      return adviseOn(path, tried);
    }
    std::cout << (outcome.bytes == 0 ? "nothing"
                                     : std::to_string(outcome.bytes) + " bytes without a frame")
              << std::endl;
  }
  std::cout << "  No iPod answers. Check that it is plugged in and awake, and the cable.\n";
}

}  // namespace

void probe(const std::string& end) {
  const EndingSignals signals;
  std::cout << "\nOther frames and speeds, at most 40 seconds:\n";
  if (end.rfind("tcp:", 0) == 0) {
    std::cout << "  " << end << " has no speed; its other end decides about the frames.\n";
    return;
  }
  if (end.empty()) {
    std::cout << "  IPD1: is not mapped. Name the line: ipodctl doctor --device PATH --probe.\n";
    return;
  }
  try {
    probeLine(terminalOf(end), signals);
  } catch (const std::runtime_error& error) {
    std::cout << "  " << error.what() << ".\n";
  }
}

}  // namespace tool
