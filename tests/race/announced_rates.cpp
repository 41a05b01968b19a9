#include "race/announced_rates.h"

namespace race {

namespace {

constexpr StoppableThread::Pause kBetweenTwo = std::chrono::milliseconds(3);
constexpr StoppableThread::Pause kAfterTheLast = std::chrono::seconds(1);

}  // namespace

std::unique_ptr<StoppableThread> announceRates(session::SessionIpod& ipod, int most) {
  return std::make_unique<StoppableThread>([&ipod, left = most]() mutable {
    if (left == 0) return kAfterTheLast;
    const uint32_t rate = --left % 2 == 0 ? 48000 : 32000;
    ipod.pty().act([rate](simulator::SimulatedIpod& device, simulator::Time now) {
      device.announceSampleRate(now, rate);
    });
    return kBetweenTwo;
  });
}

}  // namespace race
