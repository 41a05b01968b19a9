#pragma once

#include <atomic>
#include <condition_variable>
#include <mutex>
#include <string>
#include <thread>

#include "ipodctl/serve/browser.h"
#include "ipodctl/serve/connection_keeper.h"
#include "ipodctl/serve/conversation.h"
#include "ipodctl/serve/job_queue.h"
#include "ipodctl/serve/name_store.h"
#include "ipodctl/serve/player.h"
#include "ipodctl/serve/state_board.h"

namespace tool {

/// The thread that owns the library, and everything that only this thread uses.
///
/// The library's calls block for up to seconds, so no other thread makes one. The thread connects,
/// asks what plays about once a second, and carries out the jobs of the clients in between.
class Worker {
 public:
  using Clock = std::chrono::steady_clock;

  Worker(StateBoard& shown, NameStore& names, std::string logoFolder);
  /// Ends the connection.
  ~Worker();
  Worker(const Worker&) = delete;
  Worker& operator=(const Worker&) = delete;

  /// Starts the thread.
  void start();

  JobQueue& jobs() { return queue; }

  /// Only for jobs: asks what plays next, because it has changed.
  void askSoon() { nextQuestion = Clock::now(); }
  Browser& browser() { return lists; }
  Player& player() { return transport; }
  void reconnect();
  void setLogo(const std::string& bitmap);

  /// The iPod obeyed and the screen is out of date. May be called on any thread.
  void refresh() { transport.refresh(); }

 private:
  void run();
  void connect();
  void begin();
  void serveOnce();
  void askWhatPlays();
  void judge(bool wasSilent);
  void loseIpod();
  void learnIpod();
  void showLogo();
  void pause(std::chrono::milliseconds time);

  StateBoard& board;
  NameStore& store;
  const std::string folder;
  JobQueue queue;
  Conversation conversation;
  ConnectionKeeper keeper;
  Browser lists;
  Player transport;
  std::string lastSerial;
  Clock::time_point nextQuestion;

  std::mutex mutex;
  std::condition_variable changed;
  bool isEnding = false;
  std::thread thread;
};

}  // namespace tool
