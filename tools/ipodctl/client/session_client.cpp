#include "ipodctl/client/session_client.h"

#include <atomic>
#include <chrono>
#include <fstream>
#include <iostream>
#include <thread>

#include "ipodctl/commands/exit_status.h"
#include "ipodctl/serve/event_log.h"
#include "ipodctl/serve/head_unit.h"
#include "wire/printable.h"

namespace tool {
namespace {

using nlohmann::json;
using Clock = std::chrono::steady_clock;

constexpr std::chrono::milliseconds kLookAgain(100);
constexpr std::chrono::seconds kMostForConnection(12);
constexpr std::chrono::seconds kMostForPlayback(3);
constexpr std::chrono::seconds kMostForRequest(30);
/// One disturbed message can make an attempt fail.
constexpr int kAttempts = 2;

int exitStatusOf(Refusal refusal) {
  if (refusal == Refusal::kNoIpod) return kNoIpod;
  return refusal == Refusal::kNoAnswer ? kNoAnswer : kFailed;
}

json resultOf(const Outcome& outcome) {
  if (!outcome.refusal) return outcome.result;
  throw CommandFailure{exitStatusOf(*outcome.refusal), outcome.code, outcome.message};
}

/// Writes the console lines to where the user wants them.
class ConsoleLog {
 public:
  ConsoleLog(EventLog& log, const SessionOptions& options)
      : reader(log.read({Topic::kConsole})), verbose(options.verbose) {
    if (!options.log.empty()) file.open(options.log, std::ios::app);
    if (!options.log.empty() && !file) {
      throw CommandFailure{kFailed, "no-log",
                           "The log " + options.log + " cannot be written; name another file."};
    }
    writer = std::thread([this] { write(); });
  }
  ~ConsoleLog() {
    isEnding = true;
    writer.join();
  }
  ConsoleLog(const ConsoleLog&) = delete;
  ConsoleLog& operator=(const ConsoleLog&) = delete;

 private:
  void write() {
    for (;;) {
      const bool isLast = isEnding;
      while (const std::optional<Event> event = reader->next(kLookAgain))
        writeLine(json::parse(event->data).value("line", ""));
      if (isLast || reader->isClosed()) return;
    }
  }

  void writeLine(const std::string& line) {
    const std::string text = simulator::printable(line);
    if (file.is_open()) file << text << std::endl;
    if (verbose) std::cerr << text << std::endl;
  }

  std::unique_ptr<EventLog::Reader> reader;
  bool verbose;
  std::ofstream file;
  std::atomic<bool> isEnding{false};
  std::thread writer;
};

class SessionClient : public PlayerClient {
 public:
  explicit SessionClient(const SessionOptions& options)
      : console(events, options), headUnit(makeHeadUnit(events, {"."})) {
    awaitConnection();
  }

  const char* name() const override { return "session"; }

  /// What plays is asked after the connection.
  json state() override {
    const Clock::time_point end = Clock::now() + kMostForPlayback;
    json document = headUnit->state();
    while (document["playback"]["status"].is_null() && Clock::now() < end) {
      std::this_thread::sleep_for(kLookAgain);
      document = headUnit->state();
    }
    return document;
  }

  json list(const std::string& path, uint64_t generation, int offset, int count) override {
    return resultOf(headUnit->list({path, generation, offset, count}, wanted()));
  }

  void change(const std::string& path, const json& body) override {
    if (path != "/v1/play") {
      throw CommandFailure{kNoServe, "no-serve", "Start ipodctl serve, then retry."};
    }
    const bool isAll = body.at("index") == "all";
    const int index = isAll ? -1 : body.at("index").get<int>();
    resultOf(headUnit->play({body.at("path"), body.at("generation"), index}, wanted()));
  }

  void watch(const std::function<bool(const json&)>& take) override {
    while (take(headUnit->state()))
      std::this_thread::sleep_for(kLookAgain);
  }

 private:
  static Wanted wanted() {
    const Clock::time_point end = Clock::now() + kMostForRequest;
    return [end] { return Clock::now() < end; };
  }

  void awaitConnection() {
    const Clock::time_point end = Clock::now() + kMostForConnection;
    while (Clock::now() < end) {
      const json connection = headUnit->state()["connection"];
      if (connection["stage"] == "ready") return;
      if (connection["stage"] == "absent" && connection["attempt"] >= kAttempts) break;
      std::this_thread::sleep_for(kLookAgain);
    }
    throw CommandFailure{kNoIpod, "no-ipod",
                         "No iPod could be connected. Check the cable, or run ipodctl doctor."};
  }

  EventLog events;
  ConsoleLog console;
  std::unique_ptr<HeadUnit> headUnit;
};

}  // namespace

std::unique_ptr<PlayerClient> makeSessionClient(const SessionOptions& options) {
  return std::make_unique<SessionClient>(options);
}

}  // namespace tool
