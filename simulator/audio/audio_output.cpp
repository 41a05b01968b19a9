#include "audio/audio_output.h"

#include <sys/eventfd.h>

#include <algorithm>
#include <mutex>
#include <optional>
#include <thread>
#include <utility>
#include <vector>

#include "audio/audio_socket.h"
#include "audio/packet_clock.h"
#include "link/pty_ipod.h"

namespace simulator {
namespace {

using Clock = std::chrono::steady_clock;

/// What the thread uses.
struct Sender {
  explicit Sender(const std::filesystem::path& path) : socket(path) {}

  AudioSocket socket;
  PacketClock clock{socket};
};

class ThreadedOutput final : public AudioOutput {
 public:
  ThreadedOutput() : waker(eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC)) {}

  ~ThreadedOutput() override {
    {
      const std::lock_guard lock(mutex);
      isStopping = true;
    }
    wake();
    if (thread.joinable()) thread.join();
  }

  void follow(PtyIpod& pty) override {
    pty.setEventHook([this](const SimulatedIpod& ipod, Moment now) { hear(playingOf(ipod, now)); });
  }

  void start(const std::filesystem::path& path,
             const std::function<void(const std::string&)>& complain) override {
    try {
      sender.emplace(path);
      thread = std::thread([this] { run(); });
    } catch (const std::exception& error) {
      complain(error.what());
    }
  }

 private:
  /// On the iPod's thread.
  void hear(Playing now) {
    const std::lock_guard lock(mutex);
    if (now.continues(playing)) return;
    playing = std::move(now);
    if (!isSending) return;
    changes.push_back(playing);
    wake();
  }

  void run() {
    while (serve()) {
      std::vector<pollfd> waits = {{waker.get(), POLLIN, 0}};
      sender->socket.addWaits(waits);
      poll(waits.data(), waits.size(), waitMs());
      eventfd_t ignored;
      eventfd_read(waker.get(), &ignored);
    }
  }

  /// Returns false when the thread is to end.
  bool serve() {
    sender->socket.serve();
    const bool isWanted = sender->socket.isWanted();
    std::unique_lock lock(mutex);
    if (isStopping) return false;
    const bool isNew = isWanted && !isSending;
    isSending = isWanted;
    const Playing last = playing;
    const std::vector<Playing> news = std::exchange(changes, {});
    lock.unlock();
    if (isNew) sender->clock.follow(last.from(Clock::now()));
    makePackets(isWanted && !isNew ? news : std::vector<Playing>(), isWanted);
    sender->socket.serve();
    return true;
  }

  void makePackets(const std::vector<Playing>& news, bool isWanted) {
    if (!isWanted) return sender->clock.stop();
    for (const Playing& each : news)
      sender->clock.follow(each);
    sender->clock.advance(Clock::now());
  }

  int waitMs() const {
    const std::optional<Moment> next = sender->clock.next();
    if (!next) return -1;
    const auto left = std::chrono::ceil<milliseconds>(*next - Clock::now()).count();
    return static_cast<int>(std::max<int64_t>(left, 0));
  }

  void wake() { eventfd_write(waker.get(), 1); }

  FileDescriptor waker;
  std::optional<Sender> sender;
  std::mutex mutex;  ///< guards everything below, except the thread
  Playing playing;
  std::vector<Playing> changes;  ///< not yet followed; only while something is sent
  bool isSending = false;
  bool isStopping = false;
  std::thread thread;
};

}  // namespace

std::unique_ptr<AudioOutput> makeAudioOutput() { return std::make_unique<ThreadedOutput>(); }

}  // namespace simulator
