// What is worth knowing about a trace without being a fault.

#include <algorithm>

#include "iaptrace/check_rules.h"
#include "wire/payload.h"

namespace iaptrace::checking {
namespace {

constexpr char kNoLogo[] = "the logo was not shown: ";

struct ScreenLimits {
  uint16_t width = 0;
  uint16_t height = 0;
  uint8_t format = 0;
};

std::string reasonOf(const ScreenLimits& limits) {
  constexpr uint8_t kLogoFormat = 2;
  if (limits.width == 0 || limits.height == 0) return "the iPod shows no images";
  if (limits.format != kLogoFormat) {
    return "the iPod's screen has the pixel format " + std::to_string(limits.format) +
           ", the host's logo has the format 2";
  }
  return "the host sent none; it is larger than the iPod's screen of " +
         std::to_string(limits.width) + "x" + std::to_string(limits.height) + " pixels";
}

bool isPacket(const Session& session, const Exchange& exchange) {
  return isExtended(session.items[exchange.request].message, simulator::kSetDisplayImage);
}

bool isFirstPacket(const Session& session, const Exchange& exchange) {
  simulator::PayloadReader reader(session.items[exchange.request].message.data);
  return isPacket(session, exchange) && reader.u16() == 0 && reader.ok();
}

bool isLimitsQuestion(const Session& session, const Exchange& exchange) {
  return isExtended(session.items[exchange.request].message,
                    simulator::kGetColorDisplayImageLimits);
}

/// Why the question for the limits, after which no packet followed, led to no logo.
std::string reasonOf(const Session& session, const Exchange& question) {
  const std::optional<uint8_t> result = resultOf(session, question);
  if (result && question.replies.back() > session.nextRequest(question.request)) {
    return "the iPod answered the question for the size of its screen too late";
  }
  if (!result) return "the iPod did not answer the question for the size of its screen";
  if (*result != 0) {
    return "the iPod refused the question for the size of its screen with status " +
           std::to_string(*result);
  }
  simulator::PayloadReader reader(session.items[question.replies.back()].message.data);
  ScreenLimits limits;
  limits.width = reader.u16();
  limits.height = reader.u16();
  limits.format = reader.u8();
  return reasonOf(limits);
}

struct LogoUpload {
  const Exchange* question = nullptr;
  const Exchange* packet = nullptr;
  const Exchange* refused = nullptr;
  std::vector<size_t> unanswered;  ///< the lines of packets
};

LogoUpload uploadOf(const Session& session) {
  LogoUpload upload;
  for (const Exchange& exchange : session.exchanges.all) {
    if (isLimitsQuestion(session, exchange)) upload.question = &exchange;
    if (!isPacket(session, exchange)) continue;
    upload.packet = &exchange;
    if (resultOf(session, exchange).value_or(0) != 0) upload.refused = &exchange;
    const Item& packet = session.items[exchange.request];
    if (!exchange.isAnswered()) upload.unanswered.push_back(packet.firstLine);
  }
  return upload;
}

void noteUpload(const Session& session, Diagnosis& diagnosis) {
  const LogoUpload upload = uploadOf(session);
  if (upload.refused != nullptr) {
    const Item& reply = session.items[upload.refused->replies.back()];
    diagnosis.addNote(std::string(kNoLogo) + "the iPod refused its packets", {reply.line});
  } else if (!upload.unanswered.empty()) {
    diagnosis.addNote("the logo may not be shown: the iPod did not acknowledge each of its packets",
                      upload.unanswered);
  } else if (upload.question != nullptr && upload.packet == nullptr) {
    diagnosis.addNote(kNoLogo + reasonOf(session, *upload.question),
                      {session.items[upload.question->request].firstLine});
  } else if (upload.question == nullptr && upload.packet == nullptr) {
    diagnosis.addNote(std::string(kNoLogo) +
                          "the host did not ask for the size of the iPod's screen; it found no "
                          "logo file that it can use",
                      {session.items[session.attempts.back().announcement].firstLine});
  }
}

/// Some models acknowledge an image, but show none within 15 s after another one.
void noteFrequentUploads(const Case& trace, Diagnosis& diagnosis) {
  constexpr trace::Time kInterval = std::chrono::seconds(15);
  std::optional<trace::Time> previous;
  for (const Session& session : trace.sessions) {
    for (const Exchange& exchange : session.exchanges.all) {
      if (!isFirstPacket(session, exchange)) continue;
      const Item& item = session.items[exchange.request];
      if (previous && item.at >= *previous && item.at - *previous < kInterval) {
        diagnosis.addNote("the logo was sent again within 15 s; some models then do not show it",
                          {item.firstLine});
      }
      previous = item.at;
    }
  }
}

/// How long the iPod needed for the first answer.
trace::Time latencyOf(const Session& session, const Exchange& exchange) {
  const Item& request = session.items[exchange.request];
  if (request.sender != Sender::kHost || !exchange.isAnswered()) return trace::Time(0);
  return session.items[exchange.replies.front()].at - request.at;
}

/// Returns the latency that is worth a note. Starting to play and changing the mode take their
/// time, which matters only when the library does not wait so long.
trace::Time slowLatencyFor(const Message& request) {
  const bool isSlowByNature = isExtended(request, simulator::kPlayCurrentSelection) ||
                              isGeneral(request, simulator::kEnterRemoteUiMode);
  return std::chrono::milliseconds(isSlowByNature ? 1000 : 500);
}

}  // namespace

void noteLogo(const Case& trace, Diagnosis& diagnosis) {
  for (const Session& session : trace.sessions) {
    const bool isConnected =
        session.connected && !session.attempts.empty() && session.attempts.back().announcesAudio();
    if (isConnected) noteUpload(session, diagnosis);
  }
  noteFrequentUploads(trace, diagnosis);
}

void noteSlowAnswers(const Case& trace, Diagnosis& diagnosis) {
  std::vector<size_t> lines;
  trace::Time slowest{0};
  for (const Session& session : trace.sessions) {
    for (const Exchange& exchange : session.exchanges.all) {
      const trace::Time latency = latencyOf(session, exchange);
      if (latency < slowLatencyFor(session.items[exchange.request].message)) continue;
      slowest = std::max(slowest, latency);
      lines.push_back(session.items[exchange.request].firstLine);
    }
  }
  if (lines.empty()) return;
  const auto ms = std::chrono::duration_cast<std::chrono::milliseconds>(slowest).count();
  diagnosis.addNote("the iPod is slow: an answer took " + std::to_string(ms) +
                        " ms, and the library waits 1000 ms",
                    lines);
}

void noteNothing(const Case& trace, Diagnosis& diagnosis) {
  if (trace.isEmpty) diagnosis.addNote("nothing was recorded", {});
  if (trace.gaps.empty()) return;
  diagnosis.addNote("the recorder lost lines; faults there are not found", trace.gaps);
}

}  // namespace iaptrace::checking
