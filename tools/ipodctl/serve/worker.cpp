#include "ipodctl/serve/worker.h"

#include <ipodctl.h>

#include <filesystem>
#include <fstream>
#include <utility>

#include "ipodctl/serve/ipod_text.h"
#include "ipodctl/serve/refusal.h"

namespace tool {
namespace {

using std::chrono::milliseconds;

/// A hang-up is to be shown within a second.
constexpr milliseconds kBetweenQuestions(700);

constexpr milliseconds kAfterDoubt(150);

constexpr char kLogoFile[] = "logo_zel.bmp";

constexpr char kNotReady[] = "No iPod is ready. Plug one in, then ask again.";

std::optional<std::string> textFrom(int(IPODCTL_CALL* read)(unsigned short*, int)) {
  IpodText text;
  read(text.buffer(), IpodText::kSize);
  if (!text.isWritten()) return std::nullopt;
  return text.utf8();
}

}  // namespace

Worker::Worker(StateBoard& shown, NameStore& names, std::string logoFolder)
    : board(shown),
      store(names),
      folder(std::move(logoFolder)),
      conversation([this](milliseconds time) { pause(time); }),
      keeper(shown, [this](milliseconds time) { pause(time); }),
      lists(names, conversation),
      transport(shown, lists) {
  queue.refuse(kNotReady);
}

Worker::~Worker() {
  {
    const std::lock_guard<std::mutex> lock(mutex);
    isEnding = true;
  }
  changed.notify_all();
  queue.close();
  if (thread.joinable()) thread.join();
}

void Worker::start() {
  thread = std::thread([this] { run(); });
}

/// Waits, or ends at once when the head unit ends.
void Worker::pause(milliseconds time) {
  std::unique_lock<std::mutex> lock(mutex);
  changed.wait_for(lock, time, [this] { return isEnding; });
}

void Worker::run() {
  showLogo();
  while (!queue.isClosed()) {
    if (keeper.isConnected()) {
      serveOnce();
    } else {
      connect();
    }
  }
  keeper.end();
}

/// Waits for the next attempt and makes it. Jobs that need no iPod are carried out meanwhile.
void Worker::connect() {
  if (Clock::now() < keeper.nextAttempt()) {
    queue.workUntil(keeper.nextAttempt());
    return;
  }
  board.setWaitingFor("the connection");
  if (keeper.attempt()) begin();
  board.setWaitingFor("");
}

void Worker::begin() {
  store.clear();
  lists.forget();
  transport.begin();
  board.beginGeneration();
  learnIpod();
  transport.askModes();
  nextQuestion = Clock::now();
  keeper.showReady();
  queue.accept();
}

void Worker::learnIpod() {
  const std::optional<std::string> name = textFrom(IpodGetName);
  const std::optional<std::string> serial = textFrom(IpodGetSerialNumber);
  // The snapshot is about the lists of one iPod.
  if (serial && *serial != lastSerial) {
    IpodSetSameIpod(0);
    lists.lostNames().clear();
  }
  if (serial) lastSerial = *serial;
  board.setIpod(name, serial);
}

/// One question about what plays, when it is due, and one part of a job.
void Worker::serveOnce() {
  Clock::time_point begin = Clock::now();
  try {
    askWhatPlays();
    queue.waitUntil(nextQuestion);
    begin = Clock::now();
    queue.workUntil(begin);
  } catch (const OddAnswer&) {
    lists.forget();
    judge(Conversation::isSilence(Clock::now() - begin));
  }
  board.setWaitingFor("");
}

void Worker::askWhatPlays() {
  if (Clock::now() < nextQuestion) return;
  nextQuestion = Clock::now() + kBetweenQuestions;
  board.setWaitingFor("what plays");
  if (!transport.ask()) nextQuestion = Clock::now() + kAfterDoubt;
  board.setWaitingFor("");
}

/// After an odd answer: either the iPod has gone, or it is asked again after a second.
void Worker::judge(bool wasSilent) {
  board.setWaitingFor("an answer");
  const bool isThere = conversation.isIpodThere(wasSilent, [this] { keeper.showOdd(); });
  if (isThere) {
    lists.lostNames().acquit();
    keeper.showReady();
    nextQuestion = Clock::now();
  } else if (!queue.isClosed()) {
    loseIpod();
  }
}

void Worker::loseIpod() {
  queue.refuse(kNotReady);
  lists.lostNames().noteLoss();
  keeper.lose();
}

void Worker::reconnect() {
  queue.refuse(kNotReady);
  keeper.restart();
}

/// The library reads the logo when it connects.
void Worker::setLogo(const std::string& bitmap) {
  const std::filesystem::path file = std::filesystem::path(folder) / kLogoFile;
  if (bitmap.empty()) {
    std::filesystem::remove(file);
  } else {
    std::ofstream out(file, std::ios::binary | std::ios::trunc);
    out << bitmap;
    if (!out.flush()) {
      throw Refused{Refusal::kBadRequest, "logo-not-written",
                    "The logo cannot be written to " + file.string() +
                        "; make room, or let ipodctl serve write there."};
    }
  }
  showLogo();
  reconnect();
}

void Worker::showLogo() {
  const bool isThere = std::filesystem::exists(std::filesystem::path(folder) / kLogoFile);
  board.setLogo(isThere ? std::optional<std::string>(kLogoFile) : std::nullopt);
}

}  // namespace tool
