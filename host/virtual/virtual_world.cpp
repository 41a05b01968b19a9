#include "virtual_world.h"

#include <desk.h>
#include <isochplay_desk.h>

#include <algorithm>
#include <cctype>
#include <utility>

#include "call.h"

namespace virtual_platform {
namespace {

std::uint64_t worlds = 0;

std::string upper(std::string name) {
  std::transform(name.begin(), name.end(), name.begin(),
                 [](unsigned char letter) { return static_cast<char>(std::toupper(letter)); });
  return name;
}

/// These record messages and audio calls that have no other receiver. They are called with the sink
/// locked, so they must not switch threads.
void noteMessage(void* world, HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
  if (!static_cast<VirtualWorld*>(world)->keepsTrace()) return;
  static_cast<VirtualWorld*>(world)->note(
      text("PostMessageW(0x%llx, 0x%x, %llu, %lld)",
           static_cast<unsigned long long>(reinterpret_cast<std::uintptr_t>(window)), message,
           static_cast<unsigned long long>(wParam), static_cast<long long>(lParam)));
}

void noteAudio(void* world, const IsochplayCall* call) {
  if (!static_cast<VirtualWorld*>(world)->keepsTrace()) return;
  static_cast<VirtualWorld*>(world)->note(call->text);
}

}  // namespace

VirtualWorld::VirtualWorld(std::uint64_t seed) : worldId(++worlds), scheduler(seed) {}

VirtualWorld::~VirtualWorld() = default;

void VirtualWorld::addDevice(const std::string& name, VirtualDevice& device) {
  devices[upper(name)] = &device;
}

void VirtualWorld::spawn(std::function<void()> host) {
  scheduler.spawn(Owner::kHost, std::move(host));
}

std::string VirtualWorld::run(std::function<void()> host) {
  spawn(std::move(host));
  deskSetMessageSink(noteMessage, this);
  isochplaySetSink(noteAudio, this);
  running = this;
  std::string failure = scheduler.run();
  running = nullptr;
  for (const auto& ending : endings)
    ending();
  deskSetMessageSink(nullptr, nullptr);
  isochplaySetSink(nullptr, nullptr);
  return failure;
}

VirtualDevice* VirtualWorld::findDevice(const std::string& name) const {
  const auto found = devices.find(upper(name));
  return found == devices.end() ? nullptr : found->second;
}

void VirtualWorld::setOpen(const VirtualDevice& device, bool isOpenNow) {
  if (isOpenNow) {
    openDevices.insert(&device);
  } else {
    openDevices.erase(&device);
  }
}

void VirtualWorld::note(const std::string& call) {
  look();
  if (isTraced) write(call);
}

/// Adds a line without a look.
void VirtualWorld::write(const std::string& call) {
  const auto microseconds = std::chrono::duration_cast<std::chrono::microseconds>(now()).count();
  calls.push_back(std::to_string(microseconds) + " " + scheduler.threadName() + ": " + call);
}

}  // namespace virtual_platform
