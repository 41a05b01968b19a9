// The sample rate that the iPod announces: acknowledged, and followed by the audio library.

#include <algorithm>
#include <cctype>
#include <charconv>

#include "iaptrace/check_rules.h"
#include "wire/payload.h"

namespace iaptrace::checking {
namespace {

bool announcesARate(const Session& session, size_t index) {
  return session.isIpodMessage(index) &&
         isAudio(session.items[index].message, simulator::kTrackNewAudioAttributes);
}

/// Whether the host acknowledged with status 0.
bool isAccepted(const Session& session, const Exchange& exchange) {
  return resultOf(session, exchange) == uint8_t{0};
}

/// A call of the audio library.
struct AudioCall {
  bool starts = false;
  bool stops = false;
  bool selects = false;
  uint32_t rate = 0;
};

uint32_t firstNumber(const std::string& text) {
  const auto isDigit = [](char one) { return std::isdigit(static_cast<unsigned char>(one)) != 0; };
  const auto digit = std::find_if(text.begin(), text.end(), isDigit);
  uint32_t number = 0;
  const char* const end = text.data() + text.size();
  std::from_chars(end - (text.end() - digit), end, number);
  return number;
}

AudioCall audioCallOf(const Item& item) {
  AudioCall call;
  if (item.kind != Item::Kind::kEvent || item.event->kind != trace::Record::Kind::kAudio) {
    return call;
  }
  const std::string& text = item.event->call;
  call.starts = text.rfind("StartIpodAudioPlay", 0) == 0;
  call.stops = text.rfind("StopIpodAudioPlay", 0) == 0;
  call.selects = text.rfind("SelectFrequency", 0) == 0;
  call.rate = firstNumber(text);
  return call;
}

/// Returns when the host received its last byte, if something ended the link.
trace::Time endOfLink(const Session& session) {
  if (session.failure) return session.items[*session.failure].at;
  const std::optional<size_t> frame = fatalFrame(session);
  return frame ? session.items[*frame].at : session.ended;
}

/// Compares the rate that the iPod announced last with the one that the audio library plays.
class RateFollower {
 public:
  explicit RateFollower(const Session& toFollow) : session(toFollow), end(endOfLink(toFollow)) {}

  std::vector<size_t> lines() {
    for (size_t i = 0; i < session.items.size(); ++i) {
      if (announcesARate(session, i)) {
        announce(session.items[i]);
      } else {
        take(session.items[i], audioCallOf(session.items[i]));
      }
    }
    judge(end);
    return std::move(found);
  }

 private:
  void announce(const Item& item) {
    simulator::PayloadReader reader(item.message.data);
    const uint32_t rate = reader.u32();
    if (!reader.ok()) return;
    judge(item.at);
    announced = rate;
    announcement = item.line;
    differsSince = item.at;
  }

  void take(const Item& item, const AudioCall& call) {
    if (!call.starts && !call.stops && !call.selects) return;
    judge(item.at);
    if (!call.selects) isPlaying = call.starts;
    if (!call.stops) {
      played = call.rate;
      playedLine = item.line;
    }
    differsSince = std::max(differsSince, item.at);
  }

  /// Ends the time in which both rates were as they are.
  void judge(trace::Time now) {
    const bool differs = isPlaying && announced != 0 && played != 0 && announced != played;
    if (!differs || std::min(now, end) - differsSince < kGaveUp) return;
    found.push_back(announcement);
    found.push_back(playedLine);
  }

  const Session& session;
  trace::Time end;
  bool isPlaying = false;
  uint32_t announced = 0;
  uint32_t played = 0;
  size_t announcement = 0;
  size_t playedLine = 0;
  trace::Time differsSince{0};
  std::vector<size_t> found;
};

bool hasAudio(const Session& session) {
  for (size_t i = 0; i < session.items.size(); ++i) {
    if (announcesARate(session, i)) return true;
  }
  return false;
}

bool overlap(const Session& one, const Session& other) {
  return one.items.front().at < other.ended && other.items.front().at < one.ended;
}

/// Whether another iPod sends audio at the same time. A trace does not say for which of them a call
/// of the audio library is.
bool sharesTheAudioLibrary(const Case& trace, const Session& session) {
  if (trace.audioDevices.size() < 2) return false;
  return std::any_of(trace.sessions.begin(), trace.sessions.end(), [&](const Session& other) {
    return other.device != session.device && overlap(session, other) && hasAudio(other);
  });
}

}  // namespace

void findUnacknowledgedRate(const Case& trace, Diagnosis& diagnosis) {
  for (const Session& session : trace.sessions) {
    if (!failedAttempts(session).empty()) continue;
    const bool isLost = session.failure || fatalFrame(session);
    for (const Exchange& exchange : session.exchanges.all) {
      const Item& item = session.items[exchange.request];
      if (!announcesARate(session, exchange.request) || isAccepted(session, exchange)) continue;
      const bool isEnded = isLost || session.ended - item.at < kGaveUp;
      if (!exchange.isAnswered() && isEnded) continue;
      diagnosis.add("rate-not-acknowledged", {item.line});
    }
  }
}

void findUnfollowedRate(const Case& trace, Diagnosis& diagnosis) {
  for (const Session& session : trace.sessions) {
    const std::vector<size_t> lines = RateFollower(session).lines();
    if (lines.empty() || sharesTheAudioLibrary(trace, session)) continue;
    diagnosis.add("rate-not-followed", lines);
  }
}

}  // namespace iaptrace::checking
