#include "virtual/drive.h"

#include <desk.h>
#include <ipodctl.h>

#include <algorithm>

#include "music/built_in_library.h"

namespace virtual_life {
namespace {

using exports::Effect;
using exports::Export;
using std::chrono::milliseconds;
using std::chrono::minutes;
using std::chrono::seconds;
using virtual_platform::Loss;

constexpr DWORD kSecond = 1000;
constexpr DWORD kHour = 60 * 60 * kSecond;
constexpr Loss kLosses[] = {Loss::kEndOfFile, Loss::kReadError, Loss::kWriteError, Loss::kSilence,
                            Loss::kGone};

const simulator::MusicLibrary& music() {
  static const simulator::MusicLibrary library = simulator::builtInLibrary();
  return library;
}

simulator::Personality anyModel(std::mt19937_64& random) {
  const auto& names = simulator::personalityNames();
  return simulator::personality(names[random() % names.size()]);
}

// Models that are slow to obey first acknowledge that the command is pending, and every command
// costs two waits. The step to the next group may ask for the name of every track: each arrives
// soon, if only as a refusal, or never if the iPod fell silent.
Time longestOf(const Export& exported, bool mayBeSilent) {
  const Time forAName = mayBeSilent ? seconds(1) : milliseconds(50);
  const Time forAWalk = forAName * static_cast<int>(music().tracks.size());
  const bool mayWalk = std::string(exported.name) == "IpodCommand";
  return seconds(2 * exported.waits.inAll()) + (mayWalk ? forAWalk : Time(0)) + milliseconds(500);
}

}  // namespace

Drive::Drive(std::uint64_t seed)
    : random(seed),
      ipod(anyModel(random), music(), static_cast<uint32_t>(seed)),
      cable(ipod, simulator::FrameKind::kUsb),
      world(seed) {
  world.addDevice("IPD1:", cable);
}

std::string Drive::run() {
  const std::string stuck = world.run([this] { live(); });
  return fault.empty() ? stuck : fault;
}

void Drive::live() {
  Sleep(kHour * (2 + below(10)));
  if (chance(3)) threatenCable();
  connect();
  browse();
  listen();
  if (chance(5)) stopForHours();
  while (threats > 0)
    Sleep(kSecond);
  call("IpodDisconnect");
  if (deskRunningThreads() != 0) complain("a thread is left");
  expectASession();
}

// The person driving is a separate thread, which also pulls in the middle of a call. Half of the
// pulls happen while the head unit connects and its user browses.
void Drive::threatenCable() {
  ++threats;
  const DWORD delay = chance(2) ? below(3 * kSecond) : below(30 * 60 * kSecond);
  const Loss loss = kLosses[below(5)];
  world.spawn([=] {
    Sleep(delay);
    pulled = pulled || cable.isPlugged();
    cable.unplug(world.now(), loss);
    --threats;
  });
}

// A connection can need another try, and so can a question to an iPod that was just connected.
void Drive::connect() {
  constexpr int kTries = 3;
  for (int i = 0; i < kTries && call("IpodConnect").result == 0; ++i)
    Sleep(kSecond);
  call("IpodGetName");
  call("IpodGetSerialNumber");
}

void Drive::browse() {
  for (unsigned i = below(40); i > 0; --i) {
    touchSomething();
    if (chance(4)) Sleep(below(kSecond));
  }
  IpodGetFirstItem(0, IPOD_ARTISTS, 0);
  IpodDisableTabVisualizationActive();
  call("IpodSongPlay");
}

// One drive in twenty is long.
void Drive::listen() {
  const unsigned length = chance(20) ? 4 * 60 * 60 : 60 * below(60);
  for (unsigned second = 0; second < length && fault.empty(); ++second) {
    askWhatPlays();
    if (chance(60)) touchSomething();
    Sleep(kSecond);
    if (!cable.isPlugged() && chance(30)) plugAgain();
  }
}

void Drive::askWhatPlays() {
  if (call("IpodGetCurrentPlayStatus").number() != IPOD_PLAYING) return;
  call("IpodGetCurrentTrackPosition");
  const Effect index = call("IpodGetTrackIndex");
  if (index.result == 0 || index.number() == track) return;
  track = index.number();
  call("IpodGetTrackInfo");
}

void Drive::touchSomething() {
  const auto& all = exports::allExports();
  call(all[2 + below(static_cast<unsigned>(all.size()) - 2)]);
}

void Drive::plugAgain() {
  call("IpodDisconnect");
  cable.plug(world.now());
  connect();
  call("IpodSongPlay");
}

void Drive::stopForHours() {
  Sleep(kHour * (1 + below(5)));
  askWhatPlays();
}

// The first list can need another try if the iPod is still acknowledging the connection.
void Drive::expectASession() {
  cable.plug(world.now());
  if (call("IpodConnect").result != 1) complain("no connection at the end");
  IpodGetFirstItem(0, IPOD_ARTISTS, 0);
  if (IpodGetNextItem() == nullptr) {
    Sleep(kSecond);
    IpodGetFirstItem(0, IPOD_ARTISTS, 0);
    if (IpodGetNextItem() == nullptr) complain("no list at the end");
  }
  call("IpodDisconnect");
  if (IpodIsConnect() != 0) complain("still connected at the end");
}

Effect Drive::call(const char* name) { return call(exports::exportCalled(name)); }

Effect Drive::call(const Export& exported) {
  const exports::MadeCall made =
      exports::makeCall(exported, static_cast<unsigned>(random()), [this] { return world.now(); });
  ++callCount;
  longest = std::max(longest, made.took);
  if (!made.isPromised() || made.took > longestOf(exported, pulled)) complain(describe(made));
  return made.effect;
}

void Drive::complain(const std::string& text) {
  if (fault.empty()) fault = text;
}

}  // namespace virtual_life
