#include "ipodctl/serve/ipod_watch.h"

#include <chrono>

#include "ipodctl/serve/event_log.h"
#include "ipodctl/serve/event_stream.h"
#include "ipodctl/serve/ipod_control.h"

namespace tool {
namespace {

constexpr std::chrono::milliseconds kPause{500};

/// An iPod whose socket does not answer, because ipodsim has ended.
constexpr char kGone[] = R"({"ok":false,"error":{"code":"no-answer","message":"Start ipodsim."}})";

}  // namespace

IpodWatch::IpodWatch(const IpodControl& control, const EventStreams& eventStreams, EventLog& log)
    : ipod(control), streams(eventStreams), events(log) {
  if (ipod.isThere()) thread = std::thread([this] { run(); });
}

IpodWatch::~IpodWatch() {
  {
    const std::lock_guard lock(mutex);
    isOver = true;
  }
  changed.notify_all();
  if (thread.joinable()) thread.join();
}

void IpodWatch::run() {
  std::unique_lock lock(mutex);
  while (!isOver) {
    lock.unlock();
    look();
    lock.lock();
    changed.wait_for(lock, kPause, [this] { return isOver; });
  }
}

/// A new reader gets the status, too, when it has not changed.
void IpodWatch::look() {
  const size_t before = readers;
  readers = streams.readersOf(Topic::kIpod);
  if (readers == 0) return;
  std::string status = ipod.status();
  if (status.empty()) status = kGone;
  if (status == published && readers <= before) return;
  published = status;
  events.publish(Topic::kIpod, std::move(status));
}

}  // namespace tool
