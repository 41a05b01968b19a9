#include "support/session_ipod.h"

#include <desk.h>
#include <dirent.h>

#include <memory>
#include <ostream>

#include "faults/fault_text.h"

namespace session {

namespace {

constexpr simulator::Time kDeadline = simulator::seconds(10);
constexpr uint32_t kUsualRate = 44100;
constexpr char kWindowMessage[] = "PostMessageW(";

unsigned entriesOf(const char* directory) {
  const std::unique_ptr<DIR, int (*)(DIR*)> open(opendir(directory), closedir);
  unsigned count = 0;
  while (readdir(open.get()) != nullptr)
    ++count;
  return count;
}

}  // namespace

SessionIpod::SessionIpod(simulator::Personality model, simulator::MusicLibrary music,
                         const std::string& deviceName, simulator::FrameKind frames)
    : device(std::move(model), std::move(music)),
      cable(device, frames, folder / "ipod"),
      devices(deviceName + "=" + (folder / "ipod").string()) {
  cable.start();
}

bool SessionIpod::waitUntil(const std::function<bool(const simulator::SimulatedIpod&)>& condition) {
  return cable.waitUntil(condition, kDeadline);
}

// The library reads in order: it has read everything before the last message that it acknowledges.
bool SessionIpod::settle() {
  const auto acknowledged = [](const simulator::SimulatedIpod& ipod) {
    return ipod.countReceived(simulator::Lingo::kDigitalAudio, simulator::kAccAck);
  };
  if (!waitUntil([](const simulator::SimulatedIpod& ipod) { return !ipod.nextWake(); })) {
    return false;
  }
  const size_t before = look(acknowledged);
  cable.act([](simulator::SimulatedIpod& ipod, simulator::Time now) {
    ipod.announceSampleRate(now, kUsualRate);
  });
  return waitUntil(
      [&](const simulator::SimulatedIpod& ipod) { return acknowledged(ipod) > before; });
}

void SessionIpod::addFault(const std::string& text) {
  cable.access([&](simulator::SimulatedIpod& ipod) { simulator::addFault(ipod.faults(), text); });
}

std::vector<std::string> SessionIpod::takeAudioCalls() {
  std::vector<std::string> calls = log.eventsWithout({kWindowMessage});
  log.clear();
  return calls;
}

simulator::Track SessionIpod::playingTrack() {
  return cable.access([](simulator::SimulatedIpod& ipod) {
    return ipod.library().tracks.at(ipod.player().currentTrack().value());
  });
}

OpenThings openThings() {
  return {deskOpenHandles(), entriesOf("/proc/self/task"), entriesOf("/proc/self/fd")};
}

bool operator==(const OpenThings& left, const OpenThings& right) {
  return left.handles == right.handles && left.threads == right.threads &&
         left.descriptors == right.descriptors;
}

std::ostream& operator<<(std::ostream& out, const OpenThings& things) {
  return out << things.handles << " handles, " << things.threads << " threads, "
             << things.descriptors << " descriptors";
}

}  // namespace session
