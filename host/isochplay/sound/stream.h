#pragma once

#include <condition_variable>
#include <memory>
#include <mutex>
#include <variant>
#include <vector>

#include "coredll/descriptor.h"
#include "ipod_socket.h"
#include "output.h"
#include "packet_numbers.h"

namespace isochplay {

/// The stream from the iPod to the output, as the calls of the audio library control it. One thread
/// receives, another one plays or writes, so that a slow output delays nobody.
///
/// Samples have the rate that was set when they arrived. Those that arrive while the stream is not
/// started are dropped. The stream starts only while the interface has its full bandwidth, and a
/// later bandwidth does not start it again.
///
/// The functions may be called on any thread. They do not block.
class Stream : public std::enable_shared_from_this<Stream> {
 public:
  /// Starts the threads. Throws std::system_error.
  static std::shared_ptr<Stream> make(std::unique_ptr<Output> output);

  void selectBandwidth(bool isFull);
  void start(int rate);
  void stop();
  void setRate(int rate);
  /// Ends the stream, and waits at most `limit` until all that has arrived is played or written.
  void finish(std::chrono::milliseconds limit);

 private:
  struct Started {
    int rate;
  };
  struct Samples {
    int rate;
    Frames frames;
  };
  struct Stopped {};
  using Item = std::variant<Started, Samples, Stopped>;

  explicit Stream(std::unique_ptr<Output> newOutput);
  void connect();
  void drain();
  void take(Packet packet);
  void append(Item item);
  void stopIfStarted();
  void receiveUntilOver();
  void playUntilOver();
  void play(const std::vector<Item>& items);
  void wake();

  std::unique_ptr<Output> output;  ///< of the playing thread
  coredll::Descriptor waker;

  std::mutex mutex;  ///< guards everything below
  std::condition_variable changed;
  IpodSocket socket;
  PacketNumbers numbers;
  bool hasFullBandwidth = false;
  bool isStarted = false;
  int rate = 0;  ///< Hz, as it was set last
  std::vector<Item> queue;
  size_t queuedFrames = 0;
  bool isOver = false;
  bool isDone = false;
};

}  // namespace isochplay
