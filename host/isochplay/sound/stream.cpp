#include "stream.h"

#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <chrono>
#include <thread>
#include <utility>

#include "common/signals_blocked.h"
#include "complaint.h"

namespace isochplay {
namespace {

/// What arrives in this time is played or written together.
constexpr std::chrono::milliseconds kBatch{20};
/// About a minute. What a slower output has not taken until then is lost.
constexpr size_t kMostQueuedFrames = size_t{48000} * 60;

}  // namespace

std::shared_ptr<Stream> Stream::make(std::unique_ptr<Output> output) {
  std::shared_ptr<Stream> stream(new Stream(std::move(output)));
  const SignalsBlocked blocked;
  std::thread([stream] { stream->receiveUntilOver(); }).detach();
  std::thread([stream] { stream->playUntilOver(); }).detach();
  return stream;
}

Stream::Stream(std::unique_ptr<Output> newOutput)
    : output(std::move(newOutput)), waker(eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC)) {}

void Stream::selectBandwidth(bool isFull) {
  const std::lock_guard lock(mutex);
  drain();
  hasFullBandwidth = isFull;
  if (isFull) return connect();
  socket.selectBandwidth(false);
  stopIfStarted();
}

/// Connects unless it is connected, and selects the bandwidth.
void Stream::connect() {
  if (socket.isOpen()) return socket.selectBandwidth(true);
  numbers.startOver();
  const std::string why = socket.connect();
  if (!why.empty()) complainOnce(why);
  socket.selectBandwidth(true);
  wake();
}

void Stream::start(int newRate) {
  const std::lock_guard lock(mutex);
  drain();
  if (!hasFullBandwidth || !isUsableRate(newRate)) return;
  isStarted = true;
  rate = newRate;
  append(Started{newRate});
}

void Stream::stop() {
  const std::lock_guard lock(mutex);
  drain();
  stopIfStarted();
}

void Stream::stopIfStarted() {
  if (std::exchange(isStarted, false)) append(Stopped{});
}

void Stream::setRate(int newRate) {
  const std::lock_guard lock(mutex);
  drain();
  rate = newRate;
}

void Stream::finish(std::chrono::milliseconds limit) {
  std::unique_lock lock(mutex);
  drain();
  stopIfStarted();
  isOver = true;
  changed.notify_all();
  wake();
  changed.wait_for(lock, limit, [this] { return isDone; });
}

/// Takes what has arrived, while the rate is still the one with which it arrived.
void Stream::drain() {
  while (std::optional<Packet> packet = socket.receive())
    take(std::move(*packet));
}

void Stream::take(Packet packet) {
  const std::string fault = numbers.check(packet.number);
  if (!fault.empty()) complainOnce(fault);
  if (!isStarted || !isUsableRate(rate)) return;
  if (queuedFrames + packet.frames.size() > kMostQueuedFrames) {
    return complainOnce("the output is too slow, and samples are lost; use a faster disk");
  }
  queuedFrames += packet.frames.size();
  append(Samples{rate, std::move(packet.frames)});
}

void Stream::append(Item item) {
  queue.push_back(std::move(item));
  if (queue.size() == 1) changed.notify_all();
}

void Stream::receiveUntilOver() {
  std::unique_lock lock(mutex);
  while (!isOver) {
    drain();
    pollfd waits[] = {{waker.get(), POLLIN, 0}, {socket.descriptor(), POLLIN, 0}};
    lock.unlock();
    poll(waits, std::size(waits), -1);
    eventfd_t ignored;
    eventfd_read(waker.get(), &ignored);
    lock.lock();
  }
}

void Stream::playUntilOver() {
  std::unique_lock lock(mutex);
  while (!isOver || !queue.empty()) {
    changed.wait(lock, [this] { return isOver || !queue.empty(); });
    changed.wait_for(lock, kBatch, [this] { return isOver; });
    const std::vector<Item> items = std::exchange(queue, {});
    queuedFrames = 0;
    lock.unlock();
    play(items);
    lock.lock();
  }
  lock.unlock();
  output.reset();
  lock.lock();
  isDone = true;
  changed.notify_all();
}

void Stream::play(const std::vector<Item>& items) {
  Samples joined = {0, {}};
  const auto playJoined = [&] {
    if (!joined.frames.empty()) output->play(joined.rate, joined.frames);
    joined.frames.clear();
  };
  for (const Item& item : items) {
    const auto* const samples = std::get_if<Samples>(&item);
    if (samples == nullptr || samples->rate != joined.rate) playJoined();
    if (samples != nullptr) {
      joined.rate = samples->rate;
      joined.frames.insert(joined.frames.end(), samples->frames.begin(), samples->frames.end());
    }
    if (const auto* const started = std::get_if<Started>(&item)) output->start(started->rate);
    if (std::holds_alternative<Stopped>(item)) output->stop();
  }
  playJoined();
  output->pause();
}

void Stream::wake() { eventfd_write(waker.get(), 1); }

}  // namespace isochplay
